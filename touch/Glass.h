#pragma once

#include "touch/Units.h"

#include <cstdint>
#include <optional>

namespace touch {

/// One axis of a panel as the kernel describes it.
struct Axis {
    std::int32_t minimum = 0;
    std::int32_t maximum = 0;
    /// Units to a millimetre; 0 where the panel does not say.
    std::int32_t resolution = 0;
};

/// How a panel's units become millimetres.
class Glass {
public:
    /// The size comes from the panel's own resolution, unless no panel can be so large or small, else from `knownSize`
    /// (the output's or the list of devices', in millimetres), else the longer side counts as kUnknownLength. An axis
    /// without extent counts as one unit long.
    Glass(Axis x, Axis y, std::optional<Size> knownSize = std::nullopt);

    [[nodiscard]] Size size() const { return size_; }
    /// Somebody said it.
    [[nodiscard]] bool isSizeKnown() const { return isSizeKnown_; }
    /// A place outside the panel's range is moved to its edge.
    [[nodiscard]] Point placeOf(std::int32_t x, std::int32_t y) const;

private:
    Axis x_;
    Axis y_;
    Size size_;
    bool isSizeKnown_ = false;
};

} // namespace touch
