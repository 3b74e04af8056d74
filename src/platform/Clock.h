#pragma once

#include "platform/PropertyList.h"

#include <cstdint>

namespace platform {

/// The time, and the waiting for it to pass.
class Clock {
public:
    Clock() = default;
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;
    virtual ~Clock();

    static Clock& current();

    /// The current date. It may be set back or forth.
    [[nodiscard]] virtual NSDate date() = 0;
    /// Ticks of 1/60 second since some start, which wrap around.
    [[nodiscard]] virtual std::uint32_t tickCount() = 0;
    /// Blocks the process, its main loop included, for whole seconds.
    virtual void sleep(unsigned seconds) = 0;
};

} // namespace platform
