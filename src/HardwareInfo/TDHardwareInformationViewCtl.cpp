#include "HardwareInfo/TDHardwareInformationViewCtl.h"

#include "TDCurrentDevice.h"
#include "TDMessages.h"
#include "TDNames.h"
#include "TDUtilities.h"
#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/PropertyList.h"
#include "platform/RunLoop.h"

#include <string>

using platform::NSAlertSheet;
using platform::NSControl;
using platform::NSLog;
using platform::NSMatrix;

namespace {

/// The rows are set back just after the sheet has closed, not while it is ending.
constexpr double kReloadDelaySeconds = 0.01;

/// The rotation in the settings file at `path`; 0 where there is none, or no file.
std::int32_t rotateModeAtPath(const std::string& path) {
    return platform::NSMutableDictionary::dictionaryWithContentsOfFile(path).objectForKey(keys::rotateMode).intValue();
}

std::int32_t storedRotateMode() { return rotateModeAtPath(getSettingsFilePath(gModelType)); }

/// The text of a format that is given no arguments: "%%" is one "%", everything else stands for itself.
std::string textOfFormat(const std::string& format) {
    std::string text;
    for (std::size_t i = 0; i < format.size(); ++i) {
        text += format[i];
        if (format.compare(i, 2, "%%") == 0) ++i;
    }
    return text;
}

/// A text of the alert, which shows its key where it has no entry.
std::string alertText(std::string_view key) { return localizedString(key, key); }

} // namespace

TDHardwareInformationViewCtl::TDHardwareInformationViewCtl() : TDPagedTabController("TDHardwareInformationViewCtl") {}

std::vector<platform::NSOutlet> TDHardwareInformationViewCtl::outlets() {
    return {{"hardwareInfoTabView_", &hardwareInfoTabView_}, {"rotateMode_", &rotateMode_}};
}

std::vector<platform::NSNibAction> TDHardwareInformationViewCtl::actions() {
    return {{"changeRotateState:", [this](NSControl& sender) { changeRotateState(sender); }}};
}

void TDHardwareInformationViewCtl::resetTabView() { hardwareInfoTabView_.selectTabViewItemAtIndex(0); }

void TDHardwareInformationViewCtl::updateUIState() {
    const std::string path = getSettingsFilePath(gModelType);
    const bool exists = platform::NSFileManager::defaultManager().fileExistsAtPath(path);
    NSLog("updateUIState %@", path);
    if (exists) rotateMode_.selectCellAtRowColumn(rotateModeAtPath(path), 0);
}

void TDHardwareInformationViewCtl::reloadRotateMode() { rotateMode_.selectCellAtRowColumn(storedRotateMode(), 0); }

void TDHardwareInformationViewCtl::changeRotateState(NSControl& sender) {
    const auto& matrix = dynamic_cast<const NSMatrix&>(sender);
    if (matrix.selectedRow() == storedRotateMode()) return;
    // The title is that of another alert of the product; its text suits this one.
    const NSAlertSheet sheet{.title = alertText("Alert.HotKey.Title"),
                             .message = textOfFormat(alertText("Alert.Rotate")),
                             .defaultButton = alertText("Alert.Button.YES"),
                             .alternateButton = alertText("Alert.Button.NO")};
    platform::NSApplication::sharedApplication().beginInformationalAlertSheet(
        sheet, *this, [this, sheet, &matrix](std::int32_t returnCode) {
            sheetDidEndReturnCodeContextInfo(sheet, returnCode, matrix);
        });
}

void TDHardwareInformationViewCtl::sheetDidEndReturnCodeContextInfo(const NSAlertSheet& /*sheet*/,
                                                                    std::int32_t returnCode,
                                                                    const NSMatrix& contextInfo) {
    if (returnCode == platform::kNSAlertDefaultReturn) {
        resetDeviceParameter(payloads::rotateMode(contextInfo.selectedRow()), kMessageIDForRotateMode);
    } else if (returnCode == platform::kNSAlertAlternateReturn) {
        platform::NSTimer::scheduledTimerWithTimeInterval(kReloadDelaySeconds, *this, [this] { reloadRotateMode(); });
    }
}

void TDHardwareInformationViewCtl::sheetDidDismissReturnCodeContextInfo(const NSAlertSheet& /*sheet*/,
                                                                        std::int32_t returnCode,
                                                                        const NSMatrix& /*contextInfo*/) {
    NSLog("sheetDidDismiss = %d", returnCode);
}
