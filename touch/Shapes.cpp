#include "touch/Shapes.h"

#include "touch/Thresholds.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace touch {

namespace {

Point middleOfPlaces(std::span<const FingerWay> fingers) {
    Point sum;
    for (const FingerWay& finger : fingers) sum = sum + finger.to;
    return fingers.empty() ? sum : sum * (1.0 / static_cast<double>(fingers.size()));
}

Point meanWay(std::span<const FingerWay> fingers) { return middleOfPlaces(fingers) - middleOfOrigins(fingers); }

double meanDistanceTo(Point middle, std::span<const FingerWay> fingers, Point FingerWay::*place) {
    double sum = 0.0;
    for (const FingerWay& finger : fingers) sum += distance(middle, finger.*place);
    return fingers.empty() ? sum : sum / static_cast<double>(fingers.size());
}

/// The mean distance by which fingers moved apart; negative if they moved together.
double spreadOf(std::span<const FingerWay> fingers) {
    return meanDistanceTo(middleOfPlaces(fingers), fingers, &FingerWay::to) -
           meanDistanceTo(middleOfOrigins(fingers), fingers, &FingerWay::from);
}

/// Between -pi and pi.
double withinHalfTurn(double angle) { return std::remainder(angle, 2.0 * std::numbers::pi); }

double angleOf(Point way) { return std::atan2(way.y, way.x); }

/// The mean angle by which all have rotated about their centre.
double turnOf(std::span<const FingerWay> fingers) {
    const Point before = middleOfOrigins(fingers);
    const Point after = middleOfPlaces(fingers);
    double sum = 0.0;
    for (const FingerWay& finger : fingers) {
        sum += withinHalfTurn(angleOf(finger.to - after) - angleOf(finger.from - before));
    }
    return fingers.empty() ? sum : sum / static_cast<double>(fingers.size());
}

/// The movement of two fingers, split into its components: together, towards each other, and about each other.
struct Parts {
    double together = 0.0;
    double apart = 0.0;
    double about = 0.0;
};

Parts partsOf(const FingerWay& first, const FingerWay& second) {
    const Point between = second.from - first.from;
    const double gap = lengthOf(between);
    const Point relative = (second.way() - first.way()) * 0.5;
    const Point together = (second.way() + first.way()) * 0.5;
    if (gap <= 0.0) return {.together = lengthOf(together), .apart = lengthOf(relative), .about = 0.0};
    const Point unit = between * (1.0 / gap);
    return {.together = lengthOf(together),
            .apart = std::abs(along(relative, unit)),
            .about = std::abs(along(relative, turnedAQuarter(unit)))};
}

/// One finger rests while the other moves around it or away from it.
std::optional<FoundShape> findPivot(const FingerWay& first, const FingerWay& second, const Parts& parts) {
    const double still = std::min(lengthOf(first.way()), lengthOf(second.way()));
    const double moving = std::max(lengthOf(first.way()), lengthOf(second.way()));
    if (!reaches(thresholds::kStill, still) || !reaches(moving, thresholds::kPivotTravel)) return std::nullopt;
    if (!reaches(parts.about, parts.apart)) return FoundShape{Shape::PinchWithTwo};
    if (!reaches(parts.apart, parts.about)) return FoundShape{Shape::RotateWithTwo};
    return std::nullopt;
}

bool isClear(double part, double others) {
    return reaches(part, thresholds::kTwoFingerTravel) && reaches(part, thresholds::kTwoFingerClearness * others);
}

/// If so, they do not move together, even if one of them moves much farther.
bool goAgainstEachOther(const FingerWay& first, const FingerWay& second) {
    const double farther = std::max(lengthOf(first.way()), lengthOf(second.way()));
    return reaches(farther, thresholds::kPivotTravel) && !reaches(along(first.way(), second.way()), 0.0);
}

std::optional<FoundShape> findShapeOfTwo(const FingerWay& first, const FingerWay& second) {
    Parts parts = partsOf(first, second);
    if (goAgainstEachOther(first, second)) parts.together = 0.0;
    if (isClear(parts.together, std::max(parts.apart, parts.about))) {
        return FoundShape{Shape::ScrollWithTwo, directionOf((first.way() + second.way()) * 0.5)};
    }
    if (isClear(parts.apart, std::max(parts.together, parts.about))) return FoundShape{Shape::PinchWithTwo};
    if (isClear(parts.about, std::max(parts.together, parts.apart))) return FoundShape{Shape::RotateWithTwo};
    return findPivot(first, second, parts);
}

std::optional<Shape> swipeOf(std::size_t fingers, Direction direction) {
    const bool isThree = fingers == 3;
    switch (direction) {
    case Direction::Left:
    case Direction::Right:
        return isThree ? Shape::SidewaysWithThree : Shape::SidewaysWithFour;
    case Direction::Up:
        return isThree ? Shape::UpWithThree : Shape::UpWithFour;
    case Direction::Down:
        return isThree ? Shape::DownWithThree : Shape::DownWithFour;
    case Direction::None:
        return std::nullopt;
    }
    return std::nullopt;
}

Point unitOf(Direction direction) {
    switch (direction) {
    case Direction::Left:
        return {-1.0, 0.0};
    case Direction::Right:
        return {1.0, 0.0};
    case Direction::Up:
        return {0.0, -1.0};
    case Direction::Down:
        return {0.0, 1.0};
    case Direction::None:
        return {};
    }
    return {};
}

std::optional<FoundShape> findSwipe(std::span<const FingerWay> fingers) {
    const Point way = meanWay(fingers);
    const Direction direction = directionOf(way);
    const Point unit = unitOf(direction);
    const double length = along(way, unit);
    if (!reaches(length, thresholds::kSwipeTravel)) return std::nullopt;
    const bool allTakePart = std::all_of(fingers.begin(), fingers.end(), [&](const FingerWay& finger) {
        return reaches(along(finger.way(), unit), thresholds::kSwipeShare * length);
    });
    const auto shape = swipeOf(fingers.size(), direction);
    if (!allTakePart || !shape) return std::nullopt;
    return FoundShape{*shape, direction};
}

/// In a swipe, all fingers move along: if one stays or moves against the others, it is a pinch or a spread.
bool staysOrGoesAgainst(const FingerWay& finger, Point way) {
    return reaches(thresholds::kStill * lengthOf(way), along(finger.way(), way));
}

std::optional<FoundShape> findShapeOfFour(std::span<const FingerWay> fingers) {
    const double spread = spreadOf(fingers);
    const Point way = meanWay(fingers);
    const bool isClear = reaches(std::abs(spread), thresholds::kFourPinchClearness * lengthOf(way)) ||
                         std::any_of(fingers.begin(), fingers.end(),
                                     [&](const FingerWay& finger) { return staysOrGoesAgainst(finger, way); });
    if (isClear && reaches(std::abs(spread), thresholds::kFourPinchTravel)) {
        return FoundShape{spread < 0.0 ? Shape::FourTogether : Shape::FourApart};
    }
    return findSwipe(fingers);
}

} // namespace

std::optional<FoundShape> findShape(std::span<const FingerWay> fingers) {
    switch (fingers.size()) {
    case 2:
        return findShapeOfTwo(fingers[0], fingers[1]);
    case 3:
        return findSwipe(fingers);
    case 4:
        return findShapeOfFour(fingers);
    default:
        return std::nullopt;
    }
}

Motion motionOf(std::span<const FingerWay> fingers) {
    const double before = meanDistanceTo(middleOfOrigins(fingers), fingers, &FingerWay::from);
    const double after = meanDistanceTo(middleOfPlaces(fingers), fingers, &FingerWay::to);
    return {.way = meanWay(fingers), .scale = before > 0.0 ? after / before : 1.0, .angle = turnOf(fingers)};
}

Point middleOfOrigins(std::span<const FingerWay> fingers) {
    Point sum;
    for (const FingerWay& finger : fingers) sum = sum + finger.from;
    return fingers.empty() ? sum : sum * (1.0 / static_cast<double>(fingers.size()));
}

Direction directionOf(Point way) {
    const double sideways = std::abs(way.x);
    const double upright = std::abs(way.y);
    if (reaches(sideways, thresholds::kSwipeClearness * upright) && sideways > 0.0) {
        return way.x < 0.0 ? Direction::Left : Direction::Right;
    }
    if (reaches(upright, thresholds::kSwipeClearness * sideways) && upright > 0.0) {
        return way.y < 0.0 ? Direction::Up : Direction::Down;
    }
    return Direction::None;
}

} // namespace touch
