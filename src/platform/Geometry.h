#pragma once

namespace platform {

/// A place in points; the origin is at the bottom left and y grows upward.
struct NSPoint {
    double x = 0.0;
    double y = 0.0;
    bool operator==(const NSPoint&) const = default;
};

/// A rectangle in points, from its bottom left corner.
struct NSRect {
    double x = 0.0;
    double y = 0.0;
    double width = 0.0;
    double height = 0.0;
    bool operator==(const NSRect&) const = default;
};

} // namespace platform
