#pragma once

#include "platform/Clock.h"
#include "platform/SystemVersion.h"

#include <ctime>

namespace kelvo {

/// The moment that the system's clocks and files give in seconds since 1970.
[[nodiscard]] platform::NSDate dateOf(const timespec& time);

/// The clocks of this machine, and what it passes for.
class SystemClock final : public platform::Clock, public platform::SystemVersion {
public:
    [[nodiscard]] platform::NSDate date() override;
    /// Counts from the start of the machine, whoever sets its date.
    [[nodiscard]] std::uint32_t tickCount() override;
    /// Signals that the process handles do not shorten it.
    void sleep(unsigned seconds) override;
    /// The environment variable KELVO_SYSTEM_VERSION, a hexadecimal number with or without 0x up to 0x7fffffff, for the
    /// system's version; 0x1090 when it is not set or anything else.
    [[nodiscard]] std::int32_t gestalt(std::uint32_t selector) override;
};

} // namespace kelvo
