#include "touch/Mapping.h"

#include <algorithm>
#include <cmath>

namespace touch {

namespace {

constexpr std::int64_t kFullTurn = 4;

/// 0 to 3.
constexpr std::int64_t withinFullTurn(std::int64_t turns) { return ((turns % kFullTurn) + kFullTurn) % kFullTurn; }

constexpr Size sidesSwapped(Size size) { return {size.height, size.width}; }

/// A calibration that makes more of the panel's y than of its x the picture's x has turned it by a quarter.
bool swapsSides(const Matrix& matrix) { return std::abs(matrix[1]) > std::abs(matrix[0]); }

bool isUsable(const Matrix& matrix) {
    if (!std::all_of(matrix.begin(), matrix.end(), [](double each) { return std::isfinite(each); })) return false;
    return std::abs(matrix[0] * matrix[4] - matrix[1] * matrix[3]) > 1e-6;
}

/// A side of the picture as a share of the panel's: whole where it is unset, no number or not smaller.
double shareOf(double pixels, double native) { return pixels > 0.0 && pixels < native ? pixels / native : 1.0; }

Size pictureShare(const Settings& settings, const Desktop& desktop) {
    if (!settings.manualPicture || !desktop.nativePixels) return {1.0, 1.0};
    return {shareOf(settings.manualPicture->width, desktop.nativePixels->width),
            shareOf(settings.manualPicture->height, desktop.nativePixels->height)};
}

Point inUnits(Point place, Size size) { return {place.x / size.width, place.y / size.height}; }
Point inMillimetres(Point place, Size size) { return {place.x * size.width, place.y * size.height}; }

/// A picture that fills the panel has nothing beside it: what a calibration puts past its edge was meant for the edge.
bool isWithin(double place, double share) { return share >= 1.0 || (place >= 0.0 && place <= 1.0); }

double withinPicture(double place, double share) { return (place - 0.5) / share + 0.5; }

} // namespace

Point turned(Point place, std::int64_t quarterTurns) {
    switch (withinFullTurn(quarterTurns)) {
    case 1:
        return {place.y, 1.0 - place.x};
    case 2:
        return {1.0 - place.x, 1.0 - place.y};
    case 3:
        return {1.0 - place.y, place.x};
    default:
        return place;
    }
}

Mapping::Mapping(Size glass, const Matrix& matrix, const Settings& settings, const Desktop& desktop)
    : glass_(glass),
      matrix_(isUsable(matrix) ? matrix : kIdentity),
      upright_(swapsSides(matrix_) ? sidesSwapped(glass) : glass),
      picture_(pictureShare(settings, desktop)),
      turn_(withinFullTurn(settings.rotateMode != 0 ? settings.rotateMode : desktop.turns)),
      touchTurn_(desktop.turnsTouches ? turn_ - desktop.turns : turn_) {}

Size Mapping::handSize() const { return turn_ % 2 == 0 ? upright_ : sidesSwapped(upright_); }

Point Mapping::handOf(Point glass) const {
    const Point share = inUnits(glass, glass_);
    const Point calibrated{matrix_[0] * share.x + matrix_[1] * share.y + matrix_[2],
                           matrix_[3] * share.x + matrix_[4] * share.y + matrix_[5]};
    return inMillimetres(turned(calibrated, turn_), handSize());
}

bool Mapping::isOnPicture(Point hand) const {
    const Point place = pictureOf(hand);
    return isWithin(place.x, picture_.width) && isWithin(place.y, picture_.height);
}

/// Before the turn, not clamped.
Point Mapping::pictureOf(Point hand) const {
    const Point calibrated = turned(inUnits(hand, handSize()), -turn_);
    return {withinPicture(calibrated.x, picture_.width), withinPicture(calibrated.y, picture_.height)};
}

Point Mapping::touchOf(Point hand) const {
    const Point place = pictureOf(hand);
    return turned({std::clamp(place.x, 0.0, 1.0), std::clamp(place.y, 0.0, 1.0)}, touchTurn_);
}

Point Mapping::pointerOf(Point hand) const {
    const Point place = pictureOf(hand);
    return turned({std::clamp(place.x, 0.0, 1.0), std::clamp(place.y, 0.0, 1.0)}, turn_);
}

} // namespace touch
