#pragma once

namespace kelvo {

/// The service that hands out touch displays, on the system bus. `Displays` lists them, with what the kernel calls
/// each; `Open` gives the open files of a display and of its four virtual devices. `Added` says that a display can be
/// had, `Removed` that it has gone; `Revoked`, to its holder alone, that it was taken away.
inline constexpr const char* kDevicesName = "com.kelvo.TouchDisplay.Devices";
inline constexpr const char* kDevicesPath = "/com/kelvo/TouchDisplay/Devices";
inline constexpr const char* kDisplaysMethod = "Displays";
inline constexpr const char* kDisplaysSignature = "a(us)";
inline constexpr const char* kOpenMethod = "Open";
inline constexpr const char* kOpenedSignature = "hah";
inline constexpr const char* kAddedSignal = "Added";
inline constexpr const char* kRemovedSignal = "Removed";
inline constexpr const char* kRevokedSignal = "Revoked";

/// The errors of `Open`.
inline constexpr const char* kNoSuchDisplayError = "com.kelvo.TouchDisplay.Devices.Error.NoSuchDisplay";
inline constexpr const char* kNotActiveError = "com.kelvo.TouchDisplay.Devices.Error.NotActive";
inline constexpr const char* kNotAuthorisedError = "com.kelvo.TouchDisplay.Devices.Error.NotAuthorized";
inline constexpr const char* kBusyError = "com.kelvo.TouchDisplay.Devices.Error.Busy";
inline constexpr const char* kFailedError = "com.kelvo.TouchDisplay.Devices.Error.Failed";

/// What polkit is asked for.
inline constexpr const char* kOpenAction = "com.kelvo.TouchDisplay.open-display";

} // namespace kelvo
