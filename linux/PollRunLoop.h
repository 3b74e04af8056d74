#pragma once

#include "platform/RunLoop.h"

#include <chrono>
#include <functional>
#include <memory>

namespace kelvo {

/// The main loop of a program without a toolkit: descriptors by ppoll, timers by the steady clock. It belongs to one
/// thread. Timers come due in the order of their time, those of one time in the order in which they were scheduled.
class PollRunLoop : public platform::CFRunLoop {
public:
    PollRunLoop();

    /// Runs until stop() is called from within something that the loop delivers; not at all if it was called before.
    void run();
    /// Lets run() return once what is being delivered has been handled; a nested runUntil() still ends by itself.
    void stop();

    std::shared_ptr<platform::NSTimer> scheduleTimer(double seconds, std::function<void()> action) override;
    [[nodiscard]] std::unique_ptr<platform::CFFileDescriptor> watch(int descriptor,
                                                                    std::function<void()> ready) override;
    void runUntil(const std::function<bool()>& done, double seconds) override;

private:
    using Clock = std::chrono::steady_clock;
    struct Registry;
    class Timer;
    class Watch;

    static Clock::time_point timeAfter(double seconds);
    void runOnce(Clock::time_point latest);
    void fireTimersDueBy(Clock::time_point now);

    std::shared_ptr<Registry> registry_;
    unsigned long turn_ = 0;
    bool stopped_ = false;
};

} // namespace kelvo
