#pragma once

#include "touch/Frame.h"
#include "touch/Settings.h"
#include "touch/Units.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace touch {

/// A cross that was touched: where the finger was on the glass and where on the panel the cross, both from 0 to 1.
struct CalibrationPoint {
    Point glass;
    Point target;
    bool operator==(const CalibrationPoint&) const = default;
};

/// What keeps points from making a calibration.
enum class CalibrationFault : std::uint8_t {
    None,
    /// Three do not say how good they are.
    TooFew,
    /// Some place is no number, or the glass has no size.
    NoNumbers,
    /// They lie on a line, or all in one place.
    OnALine,
    /// No glass is so much larger or smaller than its picture.
    WrongSize,
    /// They contradict each other: some was touched in another's place.
    Swapped,
};

/// What points came to.
struct CalibrationResult {
    CalibrationFault fault = CalibrationFault::None;
    /// Glass to panel, both from 0 to 1.
    Matrix matrix = kIdentity;
    /// How far the points are from where it puts them, in the root of the mean square, in millimetres.
    double residual = 0.0;
};

/// The plane map that comes nearest to all the points, on a glass of so many millimetres.
[[nodiscard]] CalibrationResult calibrationFrom(std::span<const CalibrationPoint> points, Size glass);

/// Where on the panel a place on the screen is seen, both from 0 to 1: the way back from the turn and the picture.
[[nodiscard]] Point panelPlaceOf(Point screen, const Settings& settings, const Desktop& desktop);

/// Waits until one finger rests, and tells where: the mean of where it has been meanwhile.
class SteadyTouch {
public:
    enum class State : std::uint8_t {
        /// No finger.
        Away,
        /// One that has yet to rest for long enough.
        Holding,
        /// It has; it counts until all fingers are up.
        Steady,
        /// More than one, which count for nothing until they are up.
        TooMany,
    };

    void see(const Frame& frame);
    /// Time goes on, though a finger that rests reports nothing.
    void run(Time now);
    [[nodiscard]] State state() const { return state_; }
    /// When a finger that goes on resting has done so for long enough.
    [[nodiscard]] std::optional<Time> deadline() const;
    /// In millimetres; of one that is steady.
    [[nodiscard]] Point place() const { return sum_ * (1.0 / count_); }

private:
    void begin(Point place, Time now);

    State state_ = State::Away;
    Point anchor_;
    Time since_{0};
    Time seenAt_{0};
    Point last_;
    /// A place counts for as long as the finger was there.
    Point sum_;
    double count_ = 0.0;
};

/// Leads through a calibration: one cross after the other, then one more to confirm.
class CalibrationRun {
public:
    enum class State : std::uint8_t {
        /// The cross is to be touched and held.
        Touch,
        /// That one is done; the finger is to be lifted.
        Lift,
        /// The last cross, which is not among those that were measured, is to be touched.
        Confirm,
        /// It was hit.
        Confirmed,
        /// It was not.
        Missed,
        /// The points make no calibration.
        Refused,
        /// Nobody touched anything for too long.
        TimedOut,
    };

    /// Precise, there are nine crosses in place of four.
    CalibrationRun(Settings settings, const Desktop& desktop, bool isPrecise, Time now);

    void see(const Frame& frame, Size glass);
    void run(Time now);
    [[nodiscard]] Time deadline() const;

    [[nodiscard]] State state() const { return state_; }
    [[nodiscard]] bool isOver() const { return state_ >= State::Confirmed; }
    /// Where on the screen the cross is that is to be touched, from 0 to 1.
    [[nodiscard]] Point cross() const;
    /// Whether any was touched.
    [[nodiscard]] bool hasBegun() const { return !points_.empty() || touch_.state() != SteadyTouch::State::Away; }
    [[nodiscard]] bool isHolding() const { return touch_.state() == SteadyTouch::State::Holding; }
    [[nodiscard]] const std::vector<CalibrationPoint>& points() const { return points_; }
    [[nodiscard]] const CalibrationResult& result() const { return result_; }

private:
    void follow(Time now);
    void take();
    void confirm();
    [[nodiscard]] CalibrationPoint touched() const;

    Settings settings_;
    Desktop desktop_;
    std::vector<Point> crosses_;
    std::vector<CalibrationPoint> points_;
    CalibrationResult result_;
    SteadyTouch touch_;
    Size glass_;
    State state_ = State::Touch;
    Time answeredAt_;
};

} // namespace touch
