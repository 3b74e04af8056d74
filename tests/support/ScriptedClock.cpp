#include "support/ScriptedClock.h"

namespace support {

platform::NSDate ScriptedClock::date() { return {startDate.timeIntervalSinceReferenceDate + runLoop_.now()}; }

std::uint32_t ScriptedClock::tickCount() {
    constexpr double kTicksPerSecond = 60.0;
    return startTick + static_cast<std::uint32_t>(runLoop_.now() * kTicksPerSecond);
}

void ScriptedClock::sleep(unsigned seconds) {
    sleeps.push_back(seconds);
    runLoop_.standStill(seconds);
    if (duringSleep) duringSleep();
}

} // namespace support
