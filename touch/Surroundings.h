#pragma once

#include "touch/Units.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace touch {

/// A rectangle, as shares of another one's sides.
struct Region {
    Point origin{0.0, 0.0};
    Size size{1.0, 1.0};
    bool operator==(const Region&) const = default;
};

/// What a desktop shows a part of itself on.
struct Monitor {
    /// As the desktop calls it, after its socket: "HDMI-A-1".
    std::string name;
    /// The sides of the panel in its own orientation, in millimetres; none where nobody knows them.
    std::optional<Size> millimetres;
    /// Its preferred mode.
    std::optional<Size> nativePixels;
    /// Quarter turns clockwise by which the desktop turned it.
    std::int64_t turns = 0;
    /// The part of the whole desktop that it shows.
    Region place;
    bool operator==(const Monitor&) const = default;
};

/// What a driver sees of the desktop that it gives to. What the desktop does not say is none.
struct Surroundings {
    std::vector<Monitor> monitors;
    /// The desktop turns touches as it turned the monitor that they belong to.
    bool turnsTouches = false;
    std::optional<Time> doubleClickInterval;
    /// In points.
    std::optional<double> doubleClickDistance;
    /// Content follows the fingers on every touchpad.
    bool scrollsNaturally = false;
    /// The names of touchpads on which it does in any case.
    std::vector<std::string> naturalTouchpads;
    bool operator==(const Surroundings&) const = default;
};

/// Looks on as the desktop changes, and says so to whoever made it. Nothing wakes up without a change.
class DesktopWatch {
public:
    DesktopWatch() = default;
    DesktopWatch(const DesktopWatch&) = delete;
    DesktopWatch& operator=(const DesktopWatch&) = delete;
    virtual ~DesktopWatch() = default;

    [[nodiscard]] virtual const Surroundings& surroundings() const = 0;
};

/// The monitor that a touch display belongs to: the one that it was bound to by name; else the only one that is as
/// large as its glass; else the only one there is. Null where that is none. `glass` is none where nobody knows it.
[[nodiscard]] const Monitor* monitorOf(const std::vector<Monitor>& monitors, const std::string& boundName,
                                       std::optional<Size> glass);

} // namespace touch
