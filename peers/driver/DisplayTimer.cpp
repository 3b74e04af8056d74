#include "peers/driver/DisplayTimer.h"

#include "platform/Log.h"

#include <chrono>

namespace kelvo {

touch::Time displayTime() {
    return std::chrono::duration_cast<touch::Time>(std::chrono::steady_clock::now().time_since_epoch());
}

void logFault(touch::Fault fault) { platform::NSLog("this must not happen: %@", nameOf(fault)); }

DisplayTimer::~DisplayTimer() {
    if (timer_) timer_->invalidate();
}

void DisplayTimer::awaitDeadlineOf(touch::TouchDisplay& display) {
    if (timer_) timer_->invalidate();
    timer_.reset();
    const auto deadline = display.deadline();
    if (!deadline) return;
    const double seconds = std::chrono::duration<double>(*deadline - displayTime()).count();
    timer_ = platform::NSTimer::scheduledTimerWithTimeInterval(seconds, *this, [this, &display] {
        display.timeout(displayTime());
        awaitDeadlineOf(display);
    });
}

} // namespace kelvo
