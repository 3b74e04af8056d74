#include "peers/driver/DisplayTimer.h"

#include "platform/Log.h"
#include "platform/RunLoop.h"

#include <chrono>

namespace kelvo {

touch::Time displayTime() {
    return std::chrono::duration_cast<touch::Time>(std::chrono::steady_clock::now().time_since_epoch());
}

void logFault(touch::Fault fault) { platform::NSLog("this must not happen: %@", nameOf(fault)); }

DisplayTimer::DisplayTimer(touch::TouchDisplay& display)
    : display_(display), alarm_(platform::CFRunLoop::getCurrent(), [this] { ring(); }) {}

void DisplayTimer::awaitDeadline() {
    display_.reachedDesktop(displayTime());
    const auto deadline = display_.deadline();
    if (deadline == awaited_) return;
    awaited_ = deadline;
    if (deadline) {
        alarm_.setTo(*deadline);
    } else {
        alarm_.clear();
    }
}

void DisplayTimer::ring() {
    awaited_.reset();
    display_.timeout(displayTime());
    awaitDeadline();
}

} // namespace kelvo
