#include "linux/Alarm.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <system_error>
#include <utility>

namespace kelvo {

namespace {

/// Uses the clock of std::chrono::steady_clock.
Descriptor newTimer() {
    Descriptor timer(::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC));
    if (!timer) throw std::system_error(errno, std::generic_category(), "timerfd_create");
    return timer;
}

} // namespace

Alarm::Alarm(platform::CFRunLoop& loop, std::function<void()> ring)
    : ring_(std::move(ring)), timer_(newTimer()), watch_(loop.watch(timer_.number(), [this] { read(); })) {}

/// To the kernel, a time of 0 means no alarm.
void Alarm::setTo(std::chrono::microseconds time) {
    set(std::max<std::chrono::nanoseconds>(time, std::chrono::nanoseconds(1)));
}

void Alarm::clear() { set(std::chrono::nanoseconds(0)); }

void Alarm::set(std::chrono::nanoseconds time) const {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    itimerspec setting{};
    setting.it_value = {static_cast<std::time_t>(seconds.count()), static_cast<long>((time - seconds).count())};
    (void)::timerfd_settime(timer_.number(), TFD_TIMER_ABSTIME, &setting, nullptr);
}

/// It may have been set again since the loop saw it expire.
void Alarm::read() {
    std::uint64_t times = 0;
    if (::read(timer_.number(), &times, sizeof times) == sizeof times) ring_();
}

} // namespace kelvo
