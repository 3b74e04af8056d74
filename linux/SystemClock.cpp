#include "linux/SystemClock.h"

#include <charconv>
#include <chrono>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string_view>
#include <system_error>
#include <thread>

namespace kelvo {

namespace {

/// The start of 2001 in seconds since the start of 1970.
constexpr double kReferenceDate = 978'307'200.0;
constexpr std::int32_t kUsualVersion = 0x1090;
using Ticks = std::chrono::duration<std::uint64_t, std::ratio<1, 60>>;

/// Parses all of `text` as a hexadecimal number; none if it is invalid or too large.
std::optional<std::int32_t> hexadecimalNumber(std::string_view text) {
    if (text.starts_with("0x") || text.starts_with("0X")) text.remove_prefix(2);
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, 16);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    if (!isWhole || number > std::numeric_limits<std::int32_t>::max()) return std::nullopt;
    return static_cast<std::int32_t>(number);
}

} // namespace

platform::NSDate dateOf(const timespec& time) {
    constexpr double kNanosecond = 1e-9;
    return {static_cast<double>(time.tv_sec) - kReferenceDate + static_cast<double>(time.tv_nsec) * kNanosecond};
}

platform::NSDate SystemClock::date() {
    timespec now{};
    (void)::clock_gettime(CLOCK_REALTIME, &now);
    return dateOf(now);
}

std::uint32_t SystemClock::tickCount() {
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(std::chrono::duration_cast<Ticks>(sinceStart).count());
}

void SystemClock::sleep(unsigned seconds) { std::this_thread::sleep_for(std::chrono::seconds(seconds)); }

std::int32_t SystemClock::gestalt(std::uint32_t selector) {
    if (selector != platform::gestaltSystemVersion) return 0;
    const char* version = std::getenv("KELVO_SYSTEM_VERSION");
    return hexadecimalNumber(version ? version : "").value_or(kUsualVersion);
}

} // namespace kelvo
