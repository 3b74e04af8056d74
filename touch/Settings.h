#pragma once

#include "touch/Actions.h"
#include "touch/Gestures.h"
#include "touch/Surroundings.h"
#include "touch/Thresholds.h"
#include "touch/Units.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace touch {

/// What one finger is to applications: a touch, or the pointer with its left button down.
enum class FingerMode : std::uint8_t { Touch, Pointer };

/// Calibration: glass to picture, both from 0 to 1, row by row.
using Matrix = std::array<double, 6>;
constexpr Matrix kIdentity{1.0, 0.0, 0.0, 0.0, 1.0, 0.0};

/// What the user has chosen for a display. Values are taken as they come and held to their bounds where they are used.
struct Settings {
    FingerMode fingerMode = FingerMode::Touch;
    /// How long a press becomes a right click; none where that is off.
    std::optional<Time> longPress;
    Time doubleClickRate = std::chrono::milliseconds(500);
    /// The diameter, in points, of the circle round the first landing in which the second counts.
    double doubleClickRange = 32.0;
    std::vector<GestureRecord> gestures;
    SystemSwitches switches;
    /// One that is degenerate counts as none.
    Matrix calibration = kIdentity;
    /// The size in pixels of the picture that is centred on the panel; none where the picture fills it.
    std::optional<Size> manualPicture;
    /// Quarter turns clockwise; 0 leaves the turn to the desktop.
    std::int64_t rotateMode = 0;
    /// The monitor that calibration bound the display to; empty where it bound it to none.
    std::string monitor;
};

/// What is known of the desktop that is given to, and of the output that the display is.
struct Desktop {
    /// Touches that were given out can be taken back without anybody taking them for a tap.
    bool takesTouchesBack = true;
    Time doubleClickInterval = thresholds::kDesktopDoubleClick;
    /// In points.
    double doubleClickDistance = thresholds::kDesktopDoubleClickInPoints;
    /// Content follows the fingers on touchpads.
    bool scrollsNaturally = false;
    /// Quarter turns clockwise of the display's output.
    std::int64_t turns = 0;
    /// The desktop turns touches as it turned the output.
    bool turnsTouches = false;
    /// The part of the whole desktop that the output shows.
    Region place;
    /// The output's own resolution, where it is known.
    std::optional<Size> nativePixels;
    ActionTable actions;
};

} // namespace touch
