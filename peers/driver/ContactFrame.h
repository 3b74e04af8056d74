#pragma once

#include <cstdint>
#include <vector>

namespace kelvo {

/// The fingers on a display at one moment, as its sensor gives them: no calibration, no picture, no turn.
struct ContactFrame {
    struct Contact {
        /// The same from landing to lifting.
        std::int32_t id = 0;
        /// The place on the glass, from 0 to 1, y down.
        double x = 0.0;
        double y = 0.0;
    };

    /// Microseconds of the monotonic clock.
    std::uint64_t time = 0;
    /// The glass in millimetres; 0 where that is not known.
    double width = 0.0;
    double height = 0.0;
    /// Whatever touches; a contact that is no longer among them has been lifted.
    std::vector<Contact> contacts;
};

} // namespace kelvo
