#pragma once

#include "platform/RunLoop.h"

#include <functional>
#include <memory>
#include <vector>

namespace support {

/// A run loop whose clock moves only when a test says so, or while something waits in `runUntil`.
class ScriptedRunLoop : public platform::CFRunLoop {
public:
    /// Seconds since the test began.
    [[nodiscard]] double now() const { return now_; }
    /// Moves the clock and fires what becomes due, in order of time, then of scheduling.
    void advance(double seconds);
    /// Moves the clock and fires nothing, as when the process is blocked; what became due meanwhile fires once the loop
    /// runs again.
    void standStill(double seconds) { now_ += seconds; }
    /// The timers that have neither fired nor been invalidated.
    [[nodiscard]] std::size_t pendingTimers() const;

    std::shared_ptr<platform::NSTimer> scheduleTimer(double seconds, std::function<void()> action) override;
    /// Nothing in a scripted world has a descriptor.
    [[nodiscard]] std::unique_ptr<platform::CFFileDescriptor> watch(int descriptor,
                                                                    std::function<void()> ready) override;
    void runUntil(const std::function<bool()>& done, double seconds) override;

private:
    class Timer;

    /// Fires the first timer that is due by `end`; false when there is none.
    bool fireNext(double end);

    double now_ = 0.0;
    std::vector<std::shared_ptr<Timer>> timers_;
};

} // namespace support
