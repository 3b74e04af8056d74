#include "peers/driver/TouchSettings.h"

#include "TDGestureCatalogue.h"
#include "TDNames.h"
#include "TDUtilities.h"
#include "peers/driver/SystemGestures.h"
#include "platform/Files.h"
#include "platform/SystemVersion.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

using platform::NSMutableArray;
using platform::NSMutableDictionary;
using platform::Value;

/// In the entry of a calibrated display: panel to picture, six reals, row by row.
constexpr std::string_view kMatrix = "Matrix";
/// The monitor that was touched during the calibration.
constexpr std::string_view kOutput = "Output";

/// Far beyond the bounds of any setting, and far below the limit of the time type.
touch::Time timeOf(double seconds) {
    constexpr double kMostSeconds = 1e6;
    return std::chrono::duration_cast<touch::Time>(
        std::chrono::duration<double>(std::clamp(seconds, -kMostSeconds, kMostSeconds)));
}

touch::FingerMode fingerModeIn(const NSMutableDictionary& settings) {
    return settings.objectForKey(keys::fingerMode).isEqual("pointer") ? touch::FingerMode::Pointer
                                                                      : touch::FingerMode::Touch;
}

/// A missing time counts as the shortest, as the slider of the pane shows it.
std::optional<touch::Time> longPressIn(const NSMutableDictionary& settings) {
    const auto rightClick = settings.objectForKey(keys::rightClick).dictionary();
    if (!rightClick.objectForKey(keys::rightClickIsEnable).boolValue()) return std::nullopt;
    return timeOf(numberIn(rightClick.objectForKey(keys::rightClickTimeIntelval)).value_or(0.0));
}

std::optional<touch::Size> manualPictureIn(const NSMutableDictionary& settings) {
    const Value isAutomatic = settings.objectForKey(keys::autoCalibration);
    const bool isChosen = isAutomatic.text() || isAutomatic.hasNumber();
    if (!isChosen || isAutomatic.boolValue()) return std::nullopt;
    const auto manual = settings.objectForKey(keys::manualCalibration).dictionary();
    return touch::Size{numberIn(manual.objectForKey(keys::OSDWidth)).value_or(0.0),
                       numberIn(manual.objectForKey(keys::OSDHeight)).value_or(0.0)};
}

touch::GestureRecord recordOf(const NSMutableDictionary& stored) {
    touch::GestureRecord record;
    record.name = stored.objectForKey(keys::name).string().value_or("");
    const NSMutableArray actions = stored.objectForKey(keys::descriptor).array();
    for (const Value& action : actions.objects()) {
        record.descriptor.push_back(action.string().value_or(""));
    }
    record.selectedIndex = stored.objectForKey(keys::selectedIndex).longLongValue();
    record.isEnabled = stored.objectForKey(keys::isEnable).boolValue();
    return record;
}

std::vector<touch::GestureRecord> gesturesIn(const NSMutableDictionary& settings, std::int32_t systemVersion) {
    const NSMutableArray stored = settings.objectForKey(keys::gestureArray).array();
    const NSMutableArray list = stored ? stored : gestureCatalogueForVersion(systemVersion);
    std::vector<touch::GestureRecord> records;
    for (const Value& element : list.objects()) {
        if (element.dictionary()) records.push_back(recordOf(element.dictionary()));
    }
    return records;
}

touch::SystemSwitches switchesIn(const SettingsContext& context) {
    const auto isOn = [](const NSMutableDictionary& file, std::string_view key) {
        return file.objectForKey(key).boolValue();
    };
    return {.appExpose = isOn(context.dockPreferences, systemKeys::appExpose),
            .showDesktop = isOn(context.dockPreferences, systemKeys::showDesktop),
            .missionControl = isOn(context.dockPreferences, systemKeys::missionControl),
            .launchpad = isOn(context.dockPreferences, systemKeys::launchpad),
            .swipeNavigateWithScrolls = isOn(context.globalPreferences, systemKeys::swipeNavigateWithScrolls),
            .pagesNeedNoSwitch = isSnowLeopard(context.systemVersion)};
}

/// None unless all six are present and numbers.
touch::Matrix calibrationIn(const NSMutableDictionary& calibration) {
    const NSMutableArray stored = calibration.objectForKey(kMatrix).array();
    touch::Matrix matrix{};
    if (stored.count() != matrix.size()) return touch::kIdentity;
    for (std::size_t i = 0; i < matrix.size(); ++i) {
        const auto number = numberIn(stored.objectAtIndex(i));
        if (!number) return touch::kIdentity;
        matrix[i] = *number;
    }
    return matrix;
}

} // namespace

std::optional<double> numberIn(const Value& value) {
    if (!value.hasNumber() || std::isnan(value.doubleValue())) return std::nullopt;
    return value.doubleValue();
}

SettingsContext currentSettingsContext() {
    return {NSMutableDictionary::dictionaryWithContentsOfFile(getDockPreferenceFilePath()),
            NSMutableDictionary::dictionaryWithContentsOfFile(getGlobalPreferenceFilePath()),
            platform::Gestalt(platform::gestaltSystemVersion),
            NSMutableDictionary::dictionaryWithContentsOfFile(getAdvanceCalibrationFilePath())};
}

SettingsContext settingsContextOfDriver() {
    SettingsContext context = currentSettingsContext();
    platform::NSFileManager& files = platform::NSFileManager::defaultManager();
    if (!files.fileExistsAtPath(getDockPreferenceFilePath())) context.dockPreferences = newDockPreferences();
    if (!files.fileExistsAtPath(getGlobalPreferenceFilePath())) context.globalPreferences = newGlobalPreferences();
    return context;
}

std::vector<std::optional<platform::NSDate>> settingsContextDates() {
    std::vector<std::optional<platform::NSDate>> dates;
    for (const std::string& path :
         {getDockPreferenceFilePath(), getGlobalPreferenceFilePath(), getAdvanceCalibrationFilePath()}) {
        dates.push_back(platform::NSFileManager::defaultManager().modificationDateAtPath(path));
    }
    return dates;
}

touch::Settings touchSettingsOf(const std::string& name, const NSMutableDictionary& settings,
                                const SettingsContext& context) {
    touch::Settings result;
    result.fingerMode = fingerModeIn(settings);
    result.longPress = longPressIn(settings);
    if (const auto rate = numberIn(settings.objectForKey(keys::doubleClickRate)))
        result.doubleClickRate = timeOf(*rate);
    if (const auto range = numberIn(settings.objectForKey(keys::doubleClickRange))) result.doubleClickRange = *range;
    result.gestures = gesturesIn(settings, context.systemVersion);
    result.switches = switchesIn(context);
    const auto calibration = context.calibrations.objectForKey(name).dictionary();
    result.calibration = calibrationIn(calibration);
    result.monitor = calibration.objectForKey(kOutput).string().value_or("");
    result.manualPicture = manualPictureIn(settings);
    result.rotateMode = settings.objectForKey(keys::rotateMode).longLongValue();
    return result;
}

std::optional<touch::Size> nativePixelsOf(const NSMutableDictionary& settings) {
    const auto width = numberIn(settings.objectForKey(keys::nativeWidth));
    const auto height = numberIn(settings.objectForKey(keys::nativeHeight));
    if (!width || !height || *width <= 0.0 || *height <= 0.0) return std::nullopt;
    return touch::Size{*width, *height};
}

} // namespace kelvo
