#include "touch/Mapping.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace touch {

namespace {

constexpr std::int64_t kFullTurn = 4;

/// 0 to 3.
constexpr std::int64_t withinFullTurn(std::int64_t turns) { return ((turns % kFullTurn) + kFullTurn) % kFullTurn; }

/// Maps a position from 0 to 1 by this many clockwise quarter turns.
constexpr Matrix turnBy(std::int64_t quarterTurns) {
    constexpr std::array<Matrix, kFullTurn> kTurns{{
        kIdentity,
        {0.0, 1.0, 0.0, -1.0, 0.0, 1.0},
        {-1.0, 0.0, 1.0, 0.0, -1.0, 1.0},
        {0.0, -1.0, 1.0, 1.0, 0.0, 0.0},
    }};
    return kTurns[static_cast<std::size_t>(withinFullTurn(quarterTurns))];
}

/// Applies `first`, then `next`.
constexpr Matrix chained(const Matrix& first, const Matrix& next) {
    const Point origin = mapped(next, {first[2], first[5]});
    return {next[0] * first[0] + next[1] * first[3], next[0] * first[1] + next[1] * first[4], origin.x,
            next[3] * first[0] + next[4] * first[3], next[3] * first[1] + next[4] * first[4], origin.y};
}

constexpr Matrix toMillimetres(Size size) { return {size.width, 0.0, 0.0, 0.0, size.height, 0.0}; }
constexpr Matrix toShares(Size size) { return {1.0 / size.width, 0.0, 0.0, 0.0, 1.0 / size.height, 0.0}; }

/// Converts fractions of the panel to fractions of the picture in its centre.
constexpr Matrix toPicture(Size picture) {
    return {1.0 / picture.width, 0.0, 0.5 - 0.5 / picture.width, 0.0, 1.0 / picture.height, 0.5 - 0.5 / picture.height};
}

constexpr Matrix toPlace(const Region& place) {
    return {place.size.width, 0.0, place.origin.x, 0.0, place.size.height, place.origin.y};
}

constexpr Size sidesSwapped(Size size) { return {size.height, size.width}; }

/// If the x axis of the picture depends more on the panel's y than on its x, the calibration includes a quarter turn.
bool swapsSides(const Matrix& matrix) { return std::abs(matrix[1]) > std::abs(matrix[0]); }

/// The panel as the user sees it, after calibration and this many quarter turns.
Size sizeOfHand(Size glass, const Matrix& calibration, std::int64_t turns) {
    return swapsSides(calibration) == (turns % 2 == 0) ? sidesSwapped(glass) : glass;
}

bool isUsable(const Matrix& matrix) {
    if (!std::all_of(matrix.begin(), matrix.end(), [](double each) { return std::isfinite(each); })) return false;
    return std::abs(matrix[0] * matrix[4] - matrix[1] * matrix[3]) > 1e-6;
}

/// A side of the picture as a fraction of the panel; the whole side if it is unset, not a number or not smaller.
double shareOf(double pixels, double native) { return pixels > 0.0 && pixels < native ? pixels / native : 1.0; }

Size pictureShare(const Settings& settings, const Desktop& desktop) {
    if (!settings.manualPicture || !desktop.nativePixels) return {1.0, 1.0};
    return {shareOf(settings.manualPicture->width, desktop.nativePixels->width),
            shareOf(settings.manualPicture->height, desktop.nativePixels->height)};
}

/// There is nothing beside a picture that fills the panel: a position past its edge was meant for the edge.
bool isWithin(double place, double share) { return share >= 1.0 || (reaches(place, 0.0) && reaches(1.0, place)); }

Point heldToPicture(Point place) { return {std::clamp(place.x, 0.0, 1.0), std::clamp(place.y, 0.0, 1.0)}; }

} // namespace

Point turned(Point place, std::int64_t quarterTurns) { return mapped(turnBy(quarterTurns), place); }

Mapping::Mapping(Size glass, const Settings& settings, const Desktop& desktop)
    : picture_(pictureShare(settings, desktop)) {
    const Matrix& calibration = isUsable(settings.calibration) ? settings.calibration : kIdentity;
    const std::int64_t turns = withinFullTurn(settings.rotateMode != 0 ? settings.rotateMode : desktop.turns);
    handSize_ = sizeOfHand(glass, calibration, turns);
    handFromGlass_ = chained(chained(toShares(glass), calibration), chained(turnBy(turns), toMillimetres(handSize_)));
    pictureFromHand_ = chained(chained(toShares(handSize_), turnBy(-turns)), toPicture(picture_));
    touchFromPicture_ = turnBy(desktop.turnsTouches ? turns - withinFullTurn(desktop.turns) : turns);
    pointerFromPicture_ = chained(turnBy(turns), toPlace(desktop.place));
}

Point Mapping::handOf(Point glass) const { return mapped(handFromGlass_, glass); }

Point Mapping::screenOf(Point hand) const { return mapped(pointerFromPicture_, mapped(pictureFromHand_, hand)); }

bool Mapping::isOnPicture(Point hand) const {
    const Point place = mapped(pictureFromHand_, hand);
    return isWithin(place.x, picture_.width) && isWithin(place.y, picture_.height);
}

Point Mapping::touchOf(Point hand) const {
    return mapped(touchFromPicture_, heldToPicture(mapped(pictureFromHand_, hand)));
}

Point Mapping::pointerOf(Point hand) const {
    return mapped(pointerFromPicture_, heldToPicture(mapped(pictureFromHand_, hand)));
}

} // namespace touch
