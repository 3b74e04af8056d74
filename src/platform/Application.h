#pragma once

#include <string>

namespace platform {

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
