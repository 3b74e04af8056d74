#pragma once

#include "touch/Gestures.h"
#include "touch/Player.h"
#include "touch/Units.h"

#include <optional>
#include <span>

namespace touch {

/// The way of one finger since it came to stay somewhere.
struct FingerWay {
    Point from;
    Point to;
    [[nodiscard]] Point way() const { return to - from; }
};

/// A shape that is clear from how far fingers went, and the direction of those that have one.
struct FoundShape {
    Shape shape = Shape::ScrollWithTwo;
    Direction direction = Direction::None;
};

/// What two, three or four fingers are doing; none while that is not clear, and of other numbers of fingers. Two that
/// move together are always ScrollWithTwo here; whether that is a flick is a matter of time.
[[nodiscard]] std::optional<FoundShape> findShape(std::span<const FingerWay> fingers);

/// What fingers have done together: their mean way, how much farther they are apart and how far they have turned.
[[nodiscard]] Motion motionOf(std::span<const FingerWay> fingers);

/// Where fingers are in the mean.
[[nodiscard]] Point middleOfOrigins(std::span<const FingerWay> fingers);

/// The direction of most of a way; none where both are alike.
[[nodiscard]] Direction directionOf(Point way);

} // namespace touch
