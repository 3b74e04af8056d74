#include "TDCalibrationViewCtl.h"

#include "TDCurrentDevice.h"
#include "TDMessages.h"
#include "TDNames.h"
#include "TDUtilities.h"
#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/PropertyList.h"

#include <cstdint>
#include <optional>
#include <string>

using platform::NSControl;
using platform::NSLog;
using platform::NSMutableDictionary;
using platform::NSTextField;

namespace {

/// The rows of `CalibrationMode`.
constexpr int kAutomaticRow = 0;
constexpr int kManualRow = 1;

/// The largest on-screen display, in pixels.
constexpr std::int32_t kLargestWidth = 4096;
constexpr std::int32_t kLargestHeight = 2160;

/// The current device's settings; none where no file exists. A file that cannot be read has no values.
std::optional<NSMutableDictionary> storedSettings() {
    const std::string path = getSettingsFilePath(gModelType);
    if (!platform::NSFileManager::defaultManager().fileExistsAtPath(path)) return std::nullopt;
    return NSMutableDictionary::dictionaryWithContentsOfFile(path);
}

NSMutableDictionary resolutionIn(const NSMutableDictionary& settings) {
    return settings.objectForKey(keys::manualCalibration).dictionary();
}

/// A missing value gives the field no text.
void showNumber(NSTextField& field, const platform::Value& number) {
    field.setStringValue(number.stringValue().value_or(""));
}

void completeIfEmpty(NSTextField& field, const platform::Value& number) {
    if (field.stringValue().empty()) showNumber(field, number);
}

float numberIn(const NSTextField& field) { return platform::Value(field.stringValue()).floatValue(); }

/// Only a number out of its bounds is rewritten, and then as a whole one; any other text stays as it was typed.
void clampNumber(NSTextField& field, std::int32_t largest) {
    if (numberIn(field) < 0.0F) field.setStringValue("0");
    if (numberIn(field) > static_cast<float>(largest)) field.setStringValue(std::to_string(largest));
}

} // namespace

TDCalibrationViewCtl::TDCalibrationViewCtl() : TDTabController("TDCalibrationViewCtl") {
    // The form begins in automatic mode, with nothing to apply until settings have been loaded.
    setFieldsEnabled(false);
    applyBtn.setEnabled(false);
}

std::vector<platform::NSOutlet> TDCalibrationViewCtl::outlets() {
    return {{"CalibrationMode", &CalibrationMode},
            {"ResolutionWidth", &ResolutionWidth},
            {"ResolutionHeight", &ResolutionHeight},
            {"applyBtn", &applyBtn}};
}

std::vector<platform::NSNibAction> TDCalibrationViewCtl::actions() {
    return {{"changeCalibrationMode:", [this](NSControl& sender) { changeCalibrationMode(sender); }},
            {"setOSDResolution:", [this](NSControl& sender) { setOSDResolution(sender); }}};
}

void TDCalibrationViewCtl::updateUIState() {
    const auto settings = storedSettings();
    if (!settings) return;
    const bool isAutomatic = settings->objectForKey(keys::autoCalibration).boolValue();
    CalibrationMode.selectCellAtRowColumn(isAutomatic ? kAutomaticRow : kManualRow, 0);
    setFieldsEnabled(!isAutomatic);
    applyBtn.setEnabled(true);
    showResolution(resolutionIn(*settings));
}

void TDCalibrationViewCtl::changeCalibrationMode(NSControl& sender) {
    if (dynamic_cast<platform::NSMatrix&>(sender).selectedRow() != kAutomaticRow) {
        setFieldsEnabled(true);
        return;
    }
    if (const auto settings = storedSettings()) showResolution(resolutionIn(*settings));
    setFieldsEnabled(false);
}

void TDCalibrationViewCtl::setOSDResolution(NSControl& /*sender*/) {
    NSLog("ResolutionWidth :%@", ResolutionWidth.stringValue());
    NSLog("ResolutionHeight :%@", ResolutionHeight.stringValue());
    if (const auto settings = storedSettings()) {
        const NSMutableDictionary resolution = resolutionIn(*settings);
        completeIfEmpty(ResolutionWidth, resolution.objectForKey(keys::OSDWidth));
        completeIfEmpty(ResolutionHeight, resolution.objectForKey(keys::OSDHeight));
    }
    NSLog("resetCalibration");
    resetCalibration();
}

void TDCalibrationViewCtl::resetCalibration() {
    const int row = CalibrationMode.selectedRow();
    NSLog("%f,%f", numberIn(ResolutionWidth), numberIn(ResolutionHeight));
    clampNumber(ResolutionWidth, kLargestWidth);
    clampNumber(ResolutionHeight, kLargestHeight);
    resetDeviceParameter(row == kAutomaticRow
                             ? payloads::automaticCalibration()
                             : payloads::manualCalibration(numberIn(ResolutionWidth), numberIn(ResolutionHeight)),
                         kMessageIDForCalibration);
}

void TDCalibrationViewCtl::setFieldsEnabled(bool enabled) {
    ResolutionWidth.setEnabled(enabled);
    ResolutionHeight.setEnabled(enabled);
}

void TDCalibrationViewCtl::showResolution(const NSMutableDictionary& resolution) {
    showNumber(ResolutionWidth, resolution.objectForKey(keys::OSDWidth));
    showNumber(ResolutionHeight, resolution.objectForKey(keys::OSDHeight));
}
