#pragma once

#include "touch/Frame.h"
#include "touch/Glass.h"
#include "touch/KernelEvent.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace touch {

/// The kernel's slots of one panel. An event says what has changed; a frame says how things stand.
class SlotTable {
public:
    /// The panel has so many slots; those beyond what is followed are left out.
    SlotTable(const Glass& glass, std::size_t slots) : glass_(glass), slots_(slots) {}

    /// True when the event ended a report, which `frame` then shows.
    bool take(const KernelEvent& event);
    [[nodiscard]] Frame frame() const;

private:
    struct Slot {
        /// -1 while nothing touches there.
        std::int32_t id = -1;
        std::int32_t x = 0;
        std::int32_t y = 0;
        bool isPalm = false;
    };
    static constexpr std::size_t kMostSlots = 64;

    void takeAxis(std::uint16_t code, std::int32_t value);

    Glass glass_;
    std::size_t slots_;
    std::array<Slot, kMostSlots> table_{};
    std::size_t current_ = 0;
    Time time_{0};
    /// The kernel lost events; what comes until the report's end is not whole.
    bool hasDropped_ = false;
};

} // namespace touch
