#pragma once

#include "platform/Clock.h"
#include "support/ScriptedRunLoop.h"

#include <functional>
#include <vector>

namespace support {

/// A clock that goes with a scripted run loop. Sleeping takes the loop's time, in which nothing fires.
class ScriptedClock : public platform::Clock {
public:
    explicit ScriptedClock(ScriptedRunLoop& runLoop) : runLoop_(runLoop) {}

    /// The date when the test began. From the start of 2001, differences of dates are exact.
    platform::NSDate startDate;
    /// The ticks when the test began.
    std::uint32_t startTick = 0;
    /// The seconds of each sleep, in order.
    std::vector<unsigned> sleeps;
    /// What is looked at, or happens, at the end of each sleep.
    std::function<void()> duringSleep;

    [[nodiscard]] platform::NSDate date() override;
    [[nodiscard]] std::uint32_t tickCount() override;
    void sleep(unsigned seconds) override;

private:
    ScriptedRunLoop& runLoop_;
};

} // namespace support
