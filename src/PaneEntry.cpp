#include "HardwareInfo/TDHardwareInformationViewCtl.h"
#include "Information/TDVersionViewCtl.h"
#include "KelvoTouchDisplayPref.h"
#include "Properties/TDSettingViewCtl.h"
#include "TDCalibrationViewCtl.h"
#include "platform/Log.h"
#include "platform/NSPreferencePane.h"
#include "platform/Platform.h"

#include <exception>

/// Makes the principal class of the bundle; see NSPreferencePaneEntry.
extern "C" bool NSPreferencePaneCreate(std::uint32_t abiVersion, platform::Platform& platform,
                                       std::unique_ptr<platform::NSPreferencePane>& pane) {
    if (abiVersion != platform::kNSPreferencePaneABIVersion) return false;
    try {
        platform::usePlatform(&platform);
        pane = std::make_unique<KelvoTouchDisplayPref>(KelvoTouchDisplayPref::Tabs{
            .calibration = std::make_unique<TDCalibrationViewCtl>(),
            .hardwareInformation = std::make_unique<TDHardwareInformationViewCtl>(),
            .setting = std::make_unique<TDSettingViewCtl>(),
            .version = std::make_unique<TDVersionViewCtl>(),
        });
        return true;
    } catch (const std::exception& error) {
        platform::NSLog("%@", error.what());
        return false;
    }
}
