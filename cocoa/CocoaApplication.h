#pragma once

#include "cocoa/Retained.h"
#include "platform/Application.h"

#import <AppKit/AppKit.h>

#include <functional>

namespace kelvo {

/// The application that the pane was loaded into.
class CocoaApplication final : public platform::NSApplication {
public:
    /// The window that shows the pane, which the sheets belong to; nil as long as there is none.
    void setWindow(NSWindow* window) { window_ = Retained<NSWindow>::sharing(window); }

    void activateIgnoringOtherApps() override;
    void beginInformationalAlertSheet(const platform::NSAlertSheet& sheet, const platform::NSObject& delegate,
                                      std::function<void(std::int32_t returnCode)> didEnd) override;
    void endSheetInKeyWindow() override;

private:
    Retained<NSWindow> window_;
};

} // namespace kelvo
