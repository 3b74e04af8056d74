#include "touch/Glass.h"

#include "touch/Thresholds.h"

#include <algorithm>

namespace touch {

namespace {

double extentOf(Axis axis) {
    return std::max(1.0, static_cast<double>(axis.maximum) - static_cast<double>(axis.minimum));
}

/// From 0 to 1; values outside the range are clamped.
double shareOf(std::int32_t value, Axis axis) {
    const double share = (static_cast<double>(value) - static_cast<double>(axis.minimum)) / extentOf(axis);
    return std::clamp(share, 0.0, 1.0);
}

bool canBePanel(Size size) {
    const double length = std::max(size.width, size.height);
    return length >= thresholds::kShortestPanel && length <= thresholds::kLongestPanel;
}

/// As reported by the panel, otherwise as given.
std::optional<Size> saidSize(Axis x, Axis y, std::optional<Size> knownSize) {
    if (x.resolution > 0 && y.resolution > 0) {
        const Size size{extentOf(x) / x.resolution, extentOf(y) / y.resolution};
        if (canBePanel(size)) return size;
    }
    if (knownSize && knownSize->width > 0.0 && knownSize->height > 0.0) return knownSize;
    return std::nullopt;
}

Size guessedSize(Axis x, Axis y) {
    const double unit = thresholds::kUnknownLength / std::max(extentOf(x), extentOf(y));
    return {extentOf(x) * unit, extentOf(y) * unit};
}

} // namespace

Glass::Glass(Axis x, Axis y, std::optional<Size> knownSize) : x_(x), y_(y) {
    const auto said = saidSize(x, y, knownSize);
    isSizeKnown_ = said.has_value();
    size_ = said ? *said : guessedSize(x, y);
}

Point Glass::placeOf(std::int32_t x, std::int32_t y) const {
    return {shareOf(x, x_) * size_.width, shareOf(y, y_) * size_.height};
}

} // namespace touch
