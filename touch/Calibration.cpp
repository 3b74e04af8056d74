#include "touch/Calibration.h"

#include "touch/Mapping.h"
#include "touch/Thresholds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

namespace touch {

namespace {

bool isFinite(Point place) { return std::isfinite(place.x) && std::isfinite(place.y); }

bool areNumbers(std::span<const CalibrationPoint> points, Size glass) {
    return glass.width > 0.0 && glass.height > 0.0 && std::isfinite(glass.width) && std::isfinite(glass.height) &&
           std::all_of(points.begin(), points.end(),
                       [](const CalibrationPoint& point) { return isFinite(point.glass) && isFinite(point.target); });
}

Point meanOf(std::span<const CalibrationPoint> points, Point CalibrationPoint::*place) {
    Point sum;
    for (const CalibrationPoint& point : points) sum = sum + point.*place;
    return sum * (1.0 / static_cast<double>(points.size()));
}

/// The sums of squares and products about the mean, for the least-squares fit.
struct Moments {
    double xx = 0.0;
    double xy = 0.0;
    double yy = 0.0;
    /// Of the panel's x and y with those of the target.
    Point withX;
    Point withY;

    [[nodiscard]] double determinant() const { return xx * yy - xy * xy; }
};

Moments momentsOf(std::span<const CalibrationPoint> points, Point glassMean, Point targetMean) {
    Moments moments;
    for (const CalibrationPoint& point : points) {
        const Point glass = point.glass - glassMean;
        const Point target = point.target - targetMean;
        moments.xx += glass.x * glass.x;
        moments.xy += glass.x * glass.y;
        moments.yy += glass.y * glass.y;
        moments.withX = moments.withX + target * glass.x;
        moments.withY = moments.withY + target * glass.y;
    }
    return moments;
}

/// The smaller of the two spreads of the points about their mean, along and across the line that fits them best.
double leastSpread(const Moments& moments, std::size_t count) {
    const double half = 0.5 * (moments.xx + moments.yy);
    const double least = half - std::sqrt(std::max(0.0, half * half - moments.determinant()));
    return std::sqrt(std::max(0.0, least) / static_cast<double>(count));
}

Matrix fitted(const Moments& moments, Point glassMean, Point targetMean) {
    const double factor = 1.0 / moments.determinant();
    const double a = (moments.withX.x * moments.yy - moments.withY.x * moments.xy) * factor;
    const double b = (moments.withY.x * moments.xx - moments.withX.x * moments.xy) * factor;
    const double c = (moments.withX.y * moments.yy - moments.withY.y * moments.xy) * factor;
    const double d = (moments.withY.y * moments.xx - moments.withX.y * moments.xy) * factor;
    return {a, b, targetMean.x - a * glassMean.x - b * glassMean.y,
            c, d, targetMean.y - c * glassMean.x - d * glassMean.y};
}

/// If the panel is mounted across its picture, the sides of the picture are swapped.
Size sidesOfPanel(const Matrix& matrix, Size glass) {
    return std::abs(matrix[1]) > std::abs(matrix[0]) ? Size{glass.height, glass.width} : glass;
}

double missedBy(const Matrix& matrix, const CalibrationPoint& point, Size glass) {
    const Point off = mapped(matrix, point.glass) - point.target;
    const Size sides = sidesOfPanel(matrix, glass);
    return lengthOf({off.x * sides.width, off.y * sides.height});
}

double residualOf(const Matrix& matrix, std::span<const CalibrationPoint> points, Size glass) {
    double squares = 0.0;
    for (const CalibrationPoint& point : points) squares += std::pow(missedBy(matrix, point, glass), 2);
    return std::sqrt(squares / static_cast<double>(points.size()));
}

bool isOfUsualSize(const Matrix& matrix) {
    const double size = std::abs(matrix[0] * matrix[4] - matrix[1] * matrix[3]);
    return size >= thresholds::kSmallestPictureShare && size <= thresholds::kLargestPictureShare;
}

/// The crosses on the screen, in the order in which they are touched, and the last one to confirm. That one is on no
/// axis of symmetry of the corners.
std::vector<Point> crossesFor(bool isPrecise) {
    constexpr double kNear = 0.1;
    constexpr double kFar = 0.9;
    constexpr double kMiddle = 0.5;
    std::vector<Point> crosses{{kNear, kNear}, {kFar, kNear}, {kFar, kFar}, {kNear, kFar}};
    if (isPrecise) {
        crosses.insert(crosses.end(),
                       {{kMiddle, kNear}, {kFar, kMiddle}, {kMiddle, kFar}, {kNear, kMiddle}, {kMiddle, kMiddle}});
    }
    crosses.push_back({0.35, 0.6});
    return crosses;
}

} // namespace

CalibrationResult calibrationFrom(std::span<const CalibrationPoint> points, Size glass) {
    constexpr std::size_t kFewest = 4;
    if (points.size() < kFewest) return {.fault = CalibrationFault::TooFew};
    if (!areNumbers(points, glass)) return {.fault = CalibrationFault::NoNumbers};
    const Point glassMean = meanOf(points, &CalibrationPoint::glass);
    const Point targetMean = meanOf(points, &CalibrationPoint::target);
    const Moments moments = momentsOf(points, glassMean, targetMean);
    if (leastSpread(moments, points.size()) < thresholds::kCalibrationSpreadShare) {
        return {.fault = CalibrationFault::OnALine};
    }
    CalibrationResult result{.matrix = fitted(moments, glassMean, targetMean)};
    result.residual = residualOf(result.matrix, points, glass);
    if (!(result.residual <= thresholds::kCalibrationResidual)) {
        result.fault = CalibrationFault::Swapped;
    } else if (!isOfUsualSize(result.matrix)) {
        result.fault = CalibrationFault::WrongSize;
    }
    return result;
}

Point panelPlaceOf(Point screen, const Settings& settings, const Desktop& desktop) {
    Settings uncalibrated = settings;
    uncalibrated.calibration = kIdentity;
    const Mapping mapping({1.0, 1.0}, uncalibrated, desktop);
    // The map is affine, so three positions on the panel determine it.
    const auto seen = [&](Point glass) { return mapping.screenOf(mapping.handOf(glass)); };
    const Point origin = seen({0.0, 0.0});
    const Point right = seen({1.0, 0.0}) - origin;
    const Point down = seen({0.0, 1.0}) - origin;
    const Point way = screen - origin;
    const double size = right.x * down.y - right.y * down.x;
    return {(way.x * down.y - way.y * down.x) / size, (right.x * way.y - right.y * way.x) / size};
}

// A finger that rests

void SteadyTouch::see(const Frame& frame) {
    run(frame.time);
    if (frame.contacts.empty()) {
        state_ = State::Away;
    } else if (frame.contacts.size() > 1) {
        state_ = State::TooMany;
    } else if (state_ == State::Away) {
        begin(frame.contacts[0].place, frame.time);
    } else if (state_ == State::Holding) {
        last_ = frame.contacts[0].place;
        if (distance(last_, anchor_) > thresholds::kCalibrationRest) begin(last_, frame.time);
    }
}

void SteadyTouch::run(Time now) {
    if (state_ != State::Holding) return;
    const Time until = std::min(now, since_ + thresholds::kCalibrationHold);
    const double seconds = std::chrono::duration<double>(until - seenAt_).count();
    if (seconds > 0.0) {
        sum_ = sum_ + last_ * seconds;
        count_ += seconds;
        seenAt_ = until;
    }
    if (now - since_ >= thresholds::kCalibrationHold) state_ = State::Steady;
}

std::optional<Time> SteadyTouch::deadline() const {
    if (state_ != State::Holding) return std::nullopt;
    return since_ + thresholds::kCalibrationHold;
}

void SteadyTouch::begin(Point place, Time now) {
    state_ = State::Holding;
    anchor_ = place;
    last_ = place;
    since_ = now;
    seenAt_ = now;
    sum_ = {};
    count_ = 0.0;
}

// One cross after the other

CalibrationRun::CalibrationRun(Settings settings, const Desktop& desktop, bool isPrecise, Time now)
    : settings_(std::move(settings)), desktop_(desktop), crosses_(crossesFor(isPrecise)), answeredAt_(now) {}

Point CalibrationRun::cross() const { return crosses_[std::min(points_.size(), crosses_.size() - 1)]; }

void CalibrationRun::see(const Frame& frame, Size glass) {
    if (isOver()) return;
    run(frame.time);
    if (isOver()) return;
    glass_ = glass;
    touch_.see(frame);
    answeredAt_ = frame.time;
    follow(frame.time);
}

void CalibrationRun::run(Time now) {
    if (isOver()) return;
    touch_.run(now);
    follow(now);
    if (!isOver() && now - answeredAt_ >= thresholds::kCalibrationPatience) state_ = State::TimedOut;
}

Time CalibrationRun::deadline() const {
    const Time patience = answeredAt_ + thresholds::kCalibrationPatience;
    return std::min(patience, touch_.deadline().value_or(patience));
}

void CalibrationRun::follow(Time now) {
    if (state_ == State::Lift && touch_.state() == SteadyTouch::State::Away) {
        state_ = points_.size() + 1 < crosses_.size() ? State::Touch : State::Confirm;
    } else if (touch_.state() == SteadyTouch::State::Steady && state_ == State::Touch) {
        answeredAt_ = now;
        take();
    } else if (touch_.state() == SteadyTouch::State::Steady && state_ == State::Confirm) {
        confirm();
    }
}

void CalibrationRun::take() {
    points_.push_back(touched());
    state_ = State::Lift;
    if (points_.size() + 1 < crosses_.size()) return;
    result_ = calibrationFrom(points_, glass_);
    if (result_.fault != CalibrationFault::None) state_ = State::Refused;
}

void CalibrationRun::confirm() {
    const bool isHit = missedBy(result_.matrix, touched(), glass_) <= thresholds::kCalibrationHit;
    state_ = isHit ? State::Confirmed : State::Missed;
}

CalibrationPoint CalibrationRun::touched() const {
    const Point place = touch_.place();
    return {{place.x / glass_.width, place.y / glass_.height}, panelPlaceOf(cross(), settings_, desktop_)};
}

} // namespace touch
