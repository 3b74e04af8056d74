#pragma once

#include "touch/Units.h"

#include <cstdint>

namespace touch {

/// An event as the kernel has it.
struct KernelEvent {
    Time time{0};
    std::uint16_t type = 0;
    std::uint16_t code = 0;
    std::int32_t value = 0;
};

} // namespace touch
