#pragma once

#include "cocoa/Retained.h"
#include "platform/RunLoop.h"

#import <Foundation/Foundation.h>

#include <functional>
#include <memory>

namespace kelvo {

/// The main thread's NSRunLoop. What is delivered comes in its default mode and while an alert is up, but not while the
/// user holds a slider or a menu. What an action or a watch throws is logged.
///
/// Descriptors are watched and waits run for the message ports alone, which are the one thing that is not the
/// platform's own here: a system with ports of its own needs neither, and neither has a documented interface.
class CocoaRunLoop final : public platform::CFRunLoop {
public:
    CocoaRunLoop();
    CocoaRunLoop(const CocoaRunLoop&) = delete;
    CocoaRunLoop& operator=(const CocoaRunLoop&) = delete;
    ~CocoaRunLoop() override;

    std::shared_ptr<platform::NSTimer> scheduleTimer(double seconds, std::function<void()> action) override;
    [[nodiscard]] std::unique_ptr<platform::CFFileDescriptor> watch(int descriptor,
                                                                    std::function<void()> ready) override;
    /// User input stays in the application's queue meanwhile.
    void runUntil(const std::function<bool()>& done, double seconds) override;

private:
    Retained<::NSTimer> waker_;
};

} // namespace kelvo
