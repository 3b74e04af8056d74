#include "peers/driver/Watchdog.h"

#include <systemd/sd-daemon.h>

#include <cstdint>
#include <string>

namespace kelvo {

namespace {

constexpr double kMicrosecondsInSecond = 1e6;

} // namespace

Watchdog::Watchdog(platform::CFRunLoop& loop) : loop_(loop) {
    if (sd_watchdog_enabled(0, &interval_) <= 0) interval_ = 0;
}

Watchdog::~Watchdog() {
    if (timer_) timer_->invalidate();
}

void Watchdog::setNeeded(bool isNeeded) {
    if (interval_ == 0 || isNeeded == (timer_ != nullptr)) return;
    // 0 disables the watchdog of the service manager.
    (void)sd_notify(0, ("WATCHDOG_USEC=" + std::to_string(isNeeded ? interval_ : 0)).c_str());
    if (isNeeded) {
        tell();
    } else {
        timer_->invalidate();
        timer_.reset();
    }
}

void Watchdog::tell() {
    (void)sd_notify(0, "WATCHDOG=1");
    const double half = static_cast<double>(interval_) / kMicrosecondsInSecond / 2.0;
    timer_ = loop_.scheduleTimer(half, [this] { tell(); });
}

} // namespace kelvo
