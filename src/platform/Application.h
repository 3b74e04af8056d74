#pragma once

#include "platform/NSObject.h"

#include <cstdint>
#include <functional>
#include <string>

namespace platform {

/// The texts of an alert.
struct NSAlertSheet {
    std::string title;
    std::string message;
    /// Confirms; its return code is `kNSAlertDefaultReturn`.
    std::string defaultButton;
    /// Declines; its return code is `kNSAlertAlternateReturn`.
    std::string alternateButton;
};

inline constexpr std::int32_t kNSAlertDefaultReturn = 1;
inline constexpr std::int32_t kNSAlertAlternateReturn = 0;

/// The host application that shows the pane.
class NSApplication {
public:
    NSApplication() = default;
    NSApplication(const NSApplication&) = delete;
    NSApplication& operator=(const NSApplication&) = delete;
    virtual ~NSApplication();

    static NSApplication& sharedApplication();

    /// Makes the host the active application, in front of whatever is.
    virtual void activateIgnoringOtherApps() = 0;
    /// Shows an alert on the key window and returns at once. `didEnd` is called when it has been closed, with a return
    /// code that is neither of the two buttons' when the program ended it, unless `delegate` is gone by then.
    virtual void beginInformationalAlertSheet(const NSAlertSheet& sheet, const NSObject& delegate,
                                              std::function<void(std::int32_t returnCode)> didEnd) = 0;
    /// Ends the sheet that is the key window; nothing when the key window is no sheet.
    virtual void endSheetInKeyWindow() = 0;
};

/// The desktop that applications are started on.
class NSWorkspace {
public:
    NSWorkspace() = default;
    NSWorkspace(const NSWorkspace&) = delete;
    NSWorkspace& operator=(const NSWorkspace&) = delete;
    virtual ~NSWorkspace();

    static NSWorkspace& sharedWorkspace();

    /// Starts the application bundle at `fullPath`, or brings it forward when it already runs. False when it could not
    /// be started.
    virtual bool launchApplication(const std::string& fullPath) = 0;
};

} // namespace platform
