#pragma once

#include <cstdint>
#include <string_view>

/// The identifier of the pane's bundle, by which its strings and forms are found.
inline constexpr std::string_view kPaneBundleIdentifier = "com.kelvo.TouchDisplay.PreferencePane";

/// The named message ports of the product, by their owner.
inline constexpr char kPreferencePortName[] = "PreferenceMessagePort";
inline constexpr char kTouchDisplayDriverPortName[] = "TouchDisplayDriverMessagePort";
inline constexpr char kStatusBarPortName[] = "StatusBarMessagePort";

/// What a message is about. Every payload is a dictionary, whose keys stand beside the id.
enum MessageID : std::int32_t {
    /// To the driver: "DoubleClickRate" real, the interval in seconds; "DeviceName".
    kMessageIDForDoubleClickRate = 0,
    /// To the driver: "DoubleClickRange" real from the text field, else integer; "DeviceName".
    kMessageIDForDoubleClickRange = 1,
    /// To the driver: "GestureArray" array of gesture records, the whole list; "DeviceName".
    kMessageIDForGestureArray = 2,
    /// To the driver: "RotateMode" integer; "DeviceName".
    kMessageIDForRotateMode = 3,
    /// To the pane: "DriverEnable" boolean.
    COMMAND_DRIVER_DISABLE = 4,
    /// To the driver: "RightClick" {"RightClickIsEnable" boolean, "RightClickTimeIntelval" real}; "DeviceName".
    kMessageIDForRightClick = 5,
    /// To the driver: "AutoCalibration" boolean and, where that is false, "ManualCalibration" {"OSDWidth" real,
    /// "OSDHeight" real}; "DeviceName".
    kMessageIDForCalibration = 6,
    /// To the pane: "IsConnected" boolean.
    kMessageIDForDeviceIsConnected = 7,
    /// To the pane: "SelectedMenuItem" integer, the tab's index.
    kMessageIDForSelectedMenuItem = 8,
    /// To the status-bar utility: "IsShowStatuMenu" false.
    kMessageIDForStatusMenu = 10,
};

/// The keys of messages and of the files that the product's processes share, misspellings included: the peers look
/// them up by these names.
namespace keys {
inline constexpr std::string_view autoCalibration = "AutoCalibration";
inline constexpr std::string_view currentDeviceType = "CurrentDeviceType";
inline constexpr std::string_view descriptor = "Descriptor";
inline constexpr std::string_view deviceName = "DeviceName";
inline constexpr std::string_view doubleClickRange = "DoubleClickRange";
inline constexpr std::string_view doubleClickRate = "DoubleClickRate";
inline constexpr std::string_view driverEnable = "DriverEnable";
inline constexpr std::string_view driverVersion = "DriverVersion";
inline constexpr std::string_view fingerMode = "FingerMode";
inline constexpr std::string_view gestureArray = "GestureArray";
inline constexpr std::string_view isConnected = "IsConnected";
inline constexpr std::string_view isEnable = "IsEnable";
inline constexpr std::string_view isShowStatuMenu = "IsShowStatuMenu";
inline constexpr std::string_view manualCalibration = "ManualCalibration";
inline constexpr std::string_view moreGesture = "MoreGesture";
inline constexpr std::string_view name = "Name";
inline constexpr std::string_view nativeHeight = "NativeHeight";
inline constexpr std::string_view nativeWidth = "NativeWidth";
inline constexpr std::string_view OSDHeight = "OSDHeight";
inline constexpr std::string_view OSDWidth = "OSDWidth";
inline constexpr std::string_view rightClick = "RightClick";
inline constexpr std::string_view rightClickIsEnable = "RightClickIsEnable";
inline constexpr std::string_view rightClickTimeIntelval = "RightClickTimeIntelval";
inline constexpr std::string_view rotateMode = "RotateMode";
inline constexpr std::string_view selectDeviceName = "SelectDeviceName";
inline constexpr std::string_view selectedMenuItem = "SelectedMenuItem";
inline constexpr std::string_view selectedIndex = "SelectedIndex";
inline constexpr std::string_view verboseLog = "VerboseLog";
} // namespace keys

/// The switches of the system's own gestures, in the dock's preferences and, the last one, in the global preferences.
namespace systemKeys {
inline constexpr std::string_view appExpose = "showAppExposeGestureEnabled";
inline constexpr std::string_view launchpad = "showLaunchpadGestureEnabled";
inline constexpr std::string_view missionControl = "showMissionControlGestureEnabled";
inline constexpr std::string_view showDesktop = "showDesktopGestureEnabled";
inline constexpr std::string_view swipeNavigateWithScrolls = "AppleEnableSwipeNavigateWithScrolls";
} // namespace systemKeys

/// The identifiers of the gestures that have rules of their own, and of the actions that collide.
namespace gestures {
inline constexpr std::string_view appExpose = "AppExpos\u00e9";
inline constexpr std::string_view fullScreenApps = "FullScreenApps";
inline constexpr std::string_view launchpad = "Launchpad";
inline constexpr std::string_view missionControl = "MissionControl";
inline constexpr std::string_view showDesktop = "ShowDesktop";
inline constexpr std::string_view swipeBetweenPages = "SwipeBetweenPages";

inline constexpr std::string_view swipeLeftOrRightWithThreeFingers = "SwipeLeftOrRightWithThreeFingers";
inline constexpr std::string_view swipeWithThreeFingers = "SwipeWithThreeFingers";
inline constexpr std::string_view swipeWithTwoOrThreeFingers = "SwipeWithTwoOrThreeFingers";
} // namespace gestures
