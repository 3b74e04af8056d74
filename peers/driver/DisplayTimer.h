#pragma once

#include "linux/Alarm.h"
#include "touch/TouchDisplay.h"

#include <optional>

namespace kelvo {

/// The time that displays are told: that of the steady clock, by which the kernel stamps what panels report.
[[nodiscard]] touch::Time displayTime();

/// What a display says of itself that cannot be goes into the log.
void logFault(touch::Fault fault);

/// Tells a display of its deadlines as they come due. Nothing wakes up where none is awaited, and nothing is allocated.
class DisplayTimer {
public:
    /// The display outlives the timer.
    explicit DisplayTimer(touch::TouchDisplay& display);

    /// Called after each entry into the display: what it gave is out, and its deadline may be another.
    void awaitDeadline();

private:
    void ring();

    touch::TouchDisplay& display_;
    Alarm alarm_;
    /// What the alarm is set to.
    std::optional<touch::Time> awaited_;
};

} // namespace kelvo
