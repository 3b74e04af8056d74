#pragma once

#include <chrono>
#include <cmath>

namespace touch {

/// A moment, counted from any fixed one, or how long something takes. The kernel stamps its events in microseconds.
using Time = std::chrono::microseconds;

/// A place or a way on the glass, in millimetres; x grows to the right and y downward.
struct Point {
    double x = 0.0;
    double y = 0.0;

    constexpr Point operator+(Point other) const { return {x + other.x, y + other.y}; }
    constexpr Point operator-(Point other) const { return {x - other.x, y - other.y}; }
    constexpr Point operator*(double factor) const { return {x * factor, y * factor}; }
    bool operator==(const Point&) const = default;
};

[[nodiscard]] inline double lengthOf(Point way) { return std::sqrt(way.x * way.x + way.y * way.y); }
[[nodiscard]] inline double distance(Point from, Point to) { return lengthOf(to - from); }
/// How far `way` goes in the direction of `unit`, which has the length 1.
[[nodiscard]] constexpr double along(Point way, Point unit) { return way.x * unit.x + way.y * unit.y; }
/// Whether a length reaches a limit. Where both are alike it does, whatever rounding made of them, so that mirrored
/// fingers always mean the mirrored thing.
[[nodiscard]] constexpr bool reaches(double length, double limit) {
    constexpr double kRounding = 1e-9;
    return length >= limit - kRounding;
}
/// `way`, turned a quarter clockwise as one sees it.
[[nodiscard]] constexpr Point turnedAQuarter(Point way) { return {-way.y, way.x}; }

/// The sides of the glass or of a picture, in the unit that its name says.
struct Size {
    double width = 0.0;
    double height = 0.0;
    bool operator==(const Size&) const = default;
};

/// Lengths that settings give are in points of a 96th of an inch.
constexpr double kMillimetresPerPoint = 25.4 / 96.0;

} // namespace touch
