#pragma once

#include "touch/Settings.h"
#include "touch/Units.h"

namespace touch {

/// What a plane map makes of a place.
[[nodiscard]] constexpr Point mapped(const Matrix& by, Point place) {
    return {by[0] * place.x + by[1] * place.y + by[2], by[3] * place.x + by[4] * place.y + by[5]};
}

/// Where on the screen a place on the glass is: calibration first, then the picture, both in the panel's own
/// orientation, then the quarter turns. Fingers are understood as the user sees them, in millimetres of glass that the
/// calibration and the turn have been applied to ("hand" below); what is given out is a share of the output, from 0 to
/// 1 with y downward ("screen"), and for the pointer of the whole desktop.
class Mapping {
public:
    Mapping(Size glass, const Settings& settings, const Desktop& desktop);

    /// The glass as the user sees it, in millimetres.
    [[nodiscard]] Size handSize() const { return handSize_; }
    [[nodiscard]] Point handOf(Point glass) const;

    /// The place on the screen, wherever that is, also beside the picture.
    [[nodiscard]] Point screenOf(Point hand) const;
    /// Whether a contact that lands there touches the picture at all.
    [[nodiscard]] bool isOnPicture(Point hand) const;
    /// For the virtual touch screen: what a desktop turns by itself is not turned here. Clamped to the picture.
    [[nodiscard]] Point touchOf(Point hand) const;
    /// For the absolute pointer, which no desktop turns and which spans all of the desktop. Clamped to the picture.
    [[nodiscard]] Point pointerOf(Point hand) const;

private:
    /// The share of the panel that the picture takes up, in the middle.
    Size picture_;
    Size handSize_;
    Matrix handFromGlass_{};
    /// From 0 to 1 on the picture, before the turn.
    Matrix pictureFromHand_{};
    Matrix touchFromPicture_{};
    Matrix pointerFromPicture_{};
};

/// A place from 0 to 1 after so many quarter turns clockwise; any number of them, also negative.
[[nodiscard]] Point turned(Point place, std::int64_t quarterTurns);

} // namespace touch
