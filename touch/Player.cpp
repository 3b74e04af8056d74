#include "touch/Player.h"

#include "touch/Thresholds.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace touch {

namespace {

/// Whether the fingers of a shape are arranged in a circle, where they pinch, spread or rotate.
bool isCircular(Shape shape) {
    return shape == Shape::PinchWithTwo || shape == Shape::RotateWithTwo || shape == Shape::FourTogether ||
           shape == Shape::FourApart;
}

double leastScale() { return thresholds::kPadLeastRadius / thresholds::kPadPinchRadius; }
double mostScale() { return thresholds::kPadMostRadius / thresholds::kPadPinchRadius; }

/// Clamped to what fits on the touchpad.
Motion heldToPad(const Motion& motion) {
    constexpr double kMargin = 100.0;
    const double roomX = thresholds::kPad.width / 2.0 - kMargin;
    const double roomY = thresholds::kPad.height / 2.0 - kMargin;
    return {{std::clamp(motion.way.x, -roomX, roomX), std::clamp(motion.way.y, -roomY, roomY)},
            std::clamp(motion.scale, leastScale(), mostScale()),
            motion.angle};
}

} // namespace

void Player::begin(Shape shape, std::int32_t fingers, Time now) {
    state_ = State::Following;
    shape_ = shape;
    fingers_ = fingers;
    target_ = shown_ = Motion{};
    shownAt_ = now;
    for (std::int32_t i = 0; i < fingers_; ++i) {
        frames_.add({.kind = Output::Kind::PadDown, .number = i, .at = placeOf(i, shown_)});
    }
    frames_.end(now);
}

void Player::follow(const Motion& motion, Time now) {
    if (state_ != State::Following) return;
    const Motion next = heldToPad(motion);
    if (farthestStep(target_, next) < thresholds::kPadNoise) return;
    const bool wasCaughtUp = target_ == shown_;
    target_ = next;
    // Movement is followed immediately; only the part that is too far for one step waits for the next.
    if (wasCaughtUp && now > shownAt_) stepTowards(target_, now);
}

void Player::end(Time now) {
    if (state_ != State::Following) return;
    state_ = State::Ending;
    if (target_ == shown_) lift(now);
}

void Player::finish(Time now) {
    if (state_ != State::Idle) lift(now);
}

std::optional<Time> Player::deadline() const {
    if (state_ == State::Idle || target_ == shown_) return std::nullopt;
    return shownAt_ + thresholds::kPadFrame;
}

bool Player::run(Time now) {
    const auto due = deadline();
    if (!due || now < *due) return false;
    stepTowards(target_, now);
    if (state_ != State::Ending || target_ != shown_) return false;
    lift(now);
    return true;
}

void Player::stepTowards(const Motion& motion, Time now) {
    const double step = farthestStep(shown_, motion);
    if (reaches(thresholds::kPadStep, step)) {
        show(motion, now);
        return;
    }
    const double share = thresholds::kPadStep / step;
    show({shown_.way + (motion.way - shown_.way) * share, shown_.scale + (motion.scale - shown_.scale) * share,
          shown_.angle + (motion.angle - shown_.angle) * share},
         now);
}

void Player::show(const Motion& motion, Time now) {
    shownAt_ = now;
    if (motion == shown_) return;
    shown_ = motion;
    for (std::int32_t i = 0; i < fingers_; ++i) {
        frames_.add({.kind = Output::Kind::PadMove, .number = i, .at = placeOf(i, shown_)});
    }
    frames_.end(now);
}

void Player::lift(Time now) {
    for (std::int32_t i = 0; i < fingers_; ++i) frames_.add({.kind = Output::Kind::PadUp, .number = i});
    frames_.end(now);
    state_ = State::Idle;
}

Point Player::placeOf(std::int32_t finger, const Motion& motion) const {
    const Point middle{thresholds::kPad.width / 2.0, thresholds::kPad.height / 2.0};
    if (!isCircular(shape_)) {
        const double besideMiddle = static_cast<double>(finger) - static_cast<double>(fingers_ - 1) / 2.0;
        return middle + Point{besideMiddle * thresholds::kPadFingerGap, 0.0} + motion.way;
    }
    const double angle = 2.0 * std::numbers::pi * static_cast<double>(finger) / static_cast<double>(fingers_);
    const double radius = thresholds::kPadPinchRadius * motion.scale;
    return middle + motion.way +
           Point{std::cos(angle + motion.angle) * radius, std::sin(angle + motion.angle) * radius};
}

/// The longest distance that any finger moves between two motions.
double Player::farthestStep(const Motion& from, const Motion& to) const {
    const double way = distance(from.way, to.way);
    if (!isCircular(shape_)) return way;
    const double radius = thresholds::kPadPinchRadius * std::max(from.scale, to.scale);
    return way + thresholds::kPadPinchRadius * std::abs(to.scale - from.scale) +
           radius * std::abs(to.angle - from.angle);
}

} // namespace touch
