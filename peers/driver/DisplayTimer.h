#pragma once

#include "platform/NSObject.h"
#include "platform/RunLoop.h"
#include "touch/TouchDisplay.h"

#include <memory>

namespace kelvo {

/// The time that displays are told: that of the steady clock, by which the kernel stamps what panels report.
[[nodiscard]] touch::Time displayTime();

/// What a display says of itself that cannot be goes into the log.
void logFault(touch::Fault fault);

/// Tells a display of its deadlines as they come due. Nothing wakes up where none is awaited.
class DisplayTimer final : public platform::NSObject {
public:
    DisplayTimer() = default;
    DisplayTimer(const DisplayTimer&) = delete;
    DisplayTimer& operator=(const DisplayTimer&) = delete;
    ~DisplayTimer() override;

    /// Called after all that may have changed the deadline. The display outlives the timer.
    void awaitDeadlineOf(touch::TouchDisplay& display);

private:
    std::shared_ptr<platform::NSTimer> timer_;
};

} // namespace kelvo
