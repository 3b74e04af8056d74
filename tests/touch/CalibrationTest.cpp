#include "touch/Calibration.h"

#include "touch/Mapping.h"
#include "touch/Thresholds.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using touch::CalibrationFault;
using touch::CalibrationPoint;
using touch::CalibrationRun;
using touch::Matrix;
using touch::Point;
using touch::Size;
using touch::SteadyTouch;
using touch::Time;
using namespace std::chrono_literals;

constexpr Size kGlass{345.0, 194.0};

/// A panel that is put wrongly over its picture: what it reports of a finger on the picture, both in millimetres.
struct SyntheticPanel {
    std::string name;
    Matrix glassFromPicture;

    [[nodiscard]] Point glassAt(Point picture) const {
        const Point place = touch::mapped(glassFromPicture, {picture.x * kGlass.width, picture.y * kGlass.height});
        return place;
    }
};

std::vector<SyntheticPanel> panels() {
    const double angle = 3.0 * std::numbers::pi / 180.0;
    const double width = kGlass.width;
    const double height = kGlass.height;
    return {{"right", {1, 0, 0, 0, 1, 0}},
            {"offset by 10 mm", {1, 0, 10, 0, 1, -10}},
            {"turned a little", {std::cos(angle), -std::sin(angle), 4, std::sin(angle), std::cos(angle), -3}},
            {"turned by a quarter", {0, width / height, 0, -height / width, 0, height}},
            {"turned by half", {-1, 0, width, 0, -1, height}},
            {"mirrored", {-1, 0, width, 0, 1, 0}},
            {"skewed by 5 %", {1, 0.05, 0, 0.05, 1, 0}},
            {"too small and offset", {0.95, 0, 10, 0, 1.05, 10}},
            {"all of it", {-1, 0.05, width - 10, 0.05, 1, 10}}};
}

class Finger {
public:
    explicit Finger(CalibrationRun& run) : run_(run) {}

    /// Rests for a second with a noise of 0.3 mm, then lifts.
    void press(Point glass) {
        for (int i = 0; i < 125; ++i) {
            frame({glass + Point{noise_(random_), noise_(random_)}});
            now += 8ms;
        }
        frame({});
        now += 100ms;
    }
    void frame(const std::vector<Point>& places) {
        touch::Frame frame{.time = now, .contacts = {}};
        for (const Point place : places) frame.contacts.add({static_cast<std::int32_t>(frame.contacts.size()), place});
        run_.see(frame, kGlass);
    }

    Time now{1s};

private:
    CalibrationRun& run_;
    // The same noise in each run, so that a test that fails fails again.
    std::mt19937 random_{7};
    std::normal_distribution<double> noise_{0.0, 0.3};
};

double errorAtCorners(const Matrix& found, const SyntheticPanel& panel) {
    double most = 0.0;
    for (const Point corner : {Point{0, 0}, Point{1, 0}, Point{0, 1}, Point{1, 1}}) {
        const Point glass = panel.glassAt(corner);
        const Point off = touch::mapped(found, {glass.x / kGlass.width, glass.y / kGlass.height}) - corner;
        most = std::max(most, std::hypot(off.x * kGlass.width, off.y * kGlass.height));
    }
    return most;
}

CalibrationRun runOn(const SyntheticPanel& panel, bool isPrecise) {
    CalibrationRun run({}, {}, isPrecise, 1s);
    Finger finger(run);
    while (!run.isOver()) finger.press(panel.glassAt(run.cross()));
    return run;
}

TEST(ACalibration, FourPointsBringEachPanelBelowHalfAMillimetreAtItsCorners) {
    for (const SyntheticPanel& panel : panels()) {
        const CalibrationRun run = runOn(panel, false);
        EXPECT_EQ(run.state(), CalibrationRun::State::Confirmed) << panel.name;
        EXPECT_EQ(run.points().size(), 4U);
        EXPECT_LT(errorAtCorners(run.result().matrix, panel), 0.5) << panel.name;
        EXPECT_LT(run.result().residual, 0.5) << panel.name;
    }
}

TEST(ACalibration, NinePointsBringItBelowThreeTenths) {
    for (const SyntheticPanel& panel : panels()) {
        const CalibrationRun run = runOn(panel, true);
        EXPECT_EQ(run.state(), CalibrationRun::State::Confirmed) << panel.name;
        EXPECT_EQ(run.points().size(), 9U);
        EXPECT_LT(errorAtCorners(run.result().matrix, panel), 0.3) << panel.name;
    }
}

TEST(ACalibration, ExactPointsAreMetExactly) {
    const std::vector<CalibrationPoint> points{
        {{0.1, 0.1}, {0.2, 0.3}}, {{0.9, 0.1}, {0.8, 0.3}}, {{0.9, 0.9}, {0.8, 0.7}}, {{0.1, 0.9}, {0.2, 0.7}}};
    const auto result = calibrationFrom(points, kGlass);
    EXPECT_EQ(result.fault, CalibrationFault::None);
    const Matrix expected{0.75, 0.0, 0.125, 0.0, 0.5, 0.25};
    for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_NEAR(result.matrix[i], expected[i], 1e-12);
    EXPECT_NEAR(result.residual, 0.0, 1e-9);
}

TEST(ACalibration, TheResidualIsInMillimetresOfTheGlass) {
    // One corner is off by 4 mm across: the plane map takes a quarter of that at each point, now this, now that way.
    std::vector<CalibrationPoint> points{{{0, 0}, {0, 0}}, {{1, 0}, {1, 0}}, {{1, 1}, {1, 1}}, {{0, 1}, {0, 1}}};
    points[2].target.x += 4.0 / kGlass.width;
    EXPECT_NEAR(calibrationFrom(points, kGlass).residual, 1.0, 1e-9);
}

TEST(ACalibration, PointsThatMakeNoneAreRefusedWithTheReason) {
    const auto faultOf = [](std::vector<CalibrationPoint> points, Size glass = kGlass) {
        return calibrationFrom(points, glass).fault;
    };
    const std::vector<CalibrationPoint> good{
        {{0.1, 0.1}, {0.1, 0.1}}, {{0.9, 0.1}, {0.9, 0.1}}, {{0.9, 0.9}, {0.9, 0.9}}, {{0.1, 0.9}, {0.1, 0.9}}};
    EXPECT_EQ(faultOf(good), CalibrationFault::None);
    EXPECT_EQ(faultOf({}), CalibrationFault::TooFew);
    EXPECT_EQ(faultOf({good[0], good[1], good[2]}), CalibrationFault::TooFew);

    auto points = good;
    for (CalibrationPoint& point : points) point.glass = {0.5, 0.5};
    EXPECT_EQ(faultOf(points), CalibrationFault::OnALine);
    for (CalibrationPoint& point : points) point.glass = {point.target.x, 0.5 * point.target.x};
    EXPECT_EQ(faultOf(points), CalibrationFault::OnALine);

    points = good;
    std::swap(points[0].glass, points[1].glass);
    EXPECT_EQ(faultOf(points), CalibrationFault::Swapped);
    points = good;
    points[3].glass = points[2].glass;
    EXPECT_EQ(faultOf(points), CalibrationFault::Swapped);

    points = good;
    for (CalibrationPoint& point : points) point.glass = Point{0.5, 0.5} + (point.glass - Point{0.5, 0.5}) * 0.3;
    EXPECT_EQ(faultOf(points), CalibrationFault::WrongSize);

    points = good;
    points[1].glass.y = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(faultOf(points), CalibrationFault::NoNumbers);
    points[1].glass.y = std::numeric_limits<double>::infinity();
    EXPECT_EQ(faultOf(points), CalibrationFault::NoNumbers);
    EXPECT_EQ(faultOf(good, {0.0, 100.0}), CalibrationFault::NoNumbers);
}

TEST(ACalibration, SwappedPointsEndTheRunBeforeItIsConfirmed) {
    CalibrationRun run({}, {}, false, 1s);
    Finger finger(run);
    for (const Point cross : {Point{0.9, 0.1}, Point{0.1, 0.1}, Point{0.9, 0.9}, Point{0.1, 0.9}}) {
        finger.press({cross.x * kGlass.width, cross.y * kGlass.height});
    }
    EXPECT_EQ(run.state(), CalibrationRun::State::Refused);
    EXPECT_EQ(run.result().fault, CalibrationFault::Swapped);
}

TEST(ACalibration, OnlyAHitConfirms) {
    const SyntheticPanel panel = panels().front();
    for (const double off : {-6.0, 0.0, 4.0, 6.0}) {
        CalibrationRun run({}, {}, false, 1s);
        Finger finger(run);
        while (run.state() != CalibrationRun::State::Confirm) finger.press(panel.glassAt(run.cross()));
        finger.press(panel.glassAt(run.cross()) + Point{off, 0.0});
        EXPECT_EQ(run.state(), std::abs(off) < touch::thresholds::kCalibrationHit ? CalibrationRun::State::Confirmed
                                                                                  : CalibrationRun::State::Missed)
            << off;
    }
}

TEST(ACalibration, ATransposedPanelIsNoneWhereTwoCornersWereSwapped) {
    // Of four corners it cannot be told whether two that lie across were swapped or the panel is; the last cross can.
    CalibrationRun run({}, {}, false, 1s);
    Finger finger(run);
    for (const Point cross : {Point{0.9, 0.9}, Point{0.9, 0.1}, Point{0.1, 0.1}, Point{0.1, 0.9}}) {
        finger.press({cross.x * kGlass.width, cross.y * kGlass.height});
    }
    ASSERT_EQ(run.state(), CalibrationRun::State::Confirm);
    finger.press({run.cross().x * kGlass.width, run.cross().y * kGlass.height});
    EXPECT_EQ(run.state(), CalibrationRun::State::Missed);
}

TEST(ACalibration, EndsWhenNobodyTouchesAnythingForTwentySeconds) {
    CalibrationRun run({}, {}, false, 1s);
    EXPECT_EQ(run.deadline(), Time(21s));
    run.run(20'999ms);
    EXPECT_EQ(run.state(), CalibrationRun::State::Touch);
    Finger finger(run);
    finger.now = 20'999ms;
    finger.press({100.0, 100.0});
    run.run(21s);
    EXPECT_EQ(run.state(), CalibrationRun::State::Touch);
    run.run(60s);
    EXPECT_EQ(run.state(), CalibrationRun::State::TimedOut);
    finger.press({100.0, 100.0});
    EXPECT_EQ(run.state(), CalibrationRun::State::TimedOut);
}

TEST(ACalibration, EachCrossIsTouchedByAFingerThatWasLiftedBefore) {
    CalibrationRun run({}, {}, false, 1s);
    Finger finger(run);
    finger.frame({{30.0, 20.0}});
    run.run(1s + touch::thresholds::kCalibrationHold);
    EXPECT_EQ(run.state(), CalibrationRun::State::Lift);
    run.run(5s);
    EXPECT_EQ(run.points().size(), 1U);
    finger.now = 6s;
    finger.frame({});
    EXPECT_EQ(run.state(), CalibrationRun::State::Touch);
}

TEST(ASteadyTouch, IsOneThatRestsForLongEnough) {
    SteadyTouch touch;
    touch::Frame frame{.time = 1s, .contacts = {}};
    frame.contacts.add({1, {10.0, 10.0}});
    touch.see(frame);
    EXPECT_EQ(touch.deadline(), Time(1600ms));
    touch.run(1599ms);
    EXPECT_EQ(touch.state(), SteadyTouch::State::Holding);
    touch.run(1600ms);
    EXPECT_EQ(touch.state(), SteadyTouch::State::Steady);
    EXPECT_EQ(touch.place(), (Point{10.0, 10.0}));
    EXPECT_EQ(touch.deadline(), std::nullopt);
}

TEST(ASteadyTouch, BeginsAnewWhereTheFingerGoesOn) {
    SteadyTouch touch;
    for (int i = 0; i <= 10; ++i) {
        touch::Frame frame{.time = 1s + i * 500ms, .contacts = {}};
        frame.contacts.add({1, {10.0 + 2.5 * i, 10.0}});
        touch.see(frame);
        EXPECT_EQ(touch.state(), SteadyTouch::State::Holding);
    }
    touch.run(10s);
    EXPECT_EQ(touch.place(), (Point{35.0, 10.0}));
}

TEST(ASteadyTouch, IsNoneOfTwoFingersUntilBothAreUp) {
    SteadyTouch touch;
    touch::Frame two{.time = 1s, .contacts = {}};
    two.contacts.add({1, {10.0, 10.0}});
    two.contacts.add({2, {50.0, 10.0}});
    touch.see(two);
    EXPECT_EQ(touch.state(), SteadyTouch::State::TooMany);
    touch::Frame one{.time = 2s, .contacts = {}};
    one.contacts.add({1, {10.0, 10.0}});
    touch.see(one);
    touch.run(9s);
    EXPECT_EQ(touch.state(), SteadyTouch::State::TooMany);
    touch.see({.time = 10s, .contacts = {}});
    EXPECT_EQ(touch.state(), SteadyTouch::State::Away);
}

TEST(AClockThatGoesBack, MakesNoPlaceThatIsNone) {
    SteadyTouch touch;
    for (const Time time : {5s, 4s, 4s, 11s}) {
        touch::Frame frame{.time = time, .contacts = {}};
        frame.contacts.add({1, {10.0, 10.0}});
        touch.see(frame);
    }
    EXPECT_EQ(touch.state(), SteadyTouch::State::Steady);
    EXPECT_EQ(touch.place(), (Point{10.0, 10.0}));
}

TEST(PanelPlaces, AreWhereTheDriverPutsThemOnTheScreen) {
    touch::Settings settings;
    settings.manualPicture = Size{1280.0, 720.0};
    touch::Desktop desktop;
    desktop.nativePixels = Size{1920.0, 1080.0};
    for (const std::int64_t mode : {0, 1, 2, 3}) {
        for (const std::int64_t turns : {0, 1, 3}) {
            settings.rotateMode = mode;
            desktop.turns = turns;
            const touch::Mapping mapping(kGlass, settings, desktop);
            for (const Point screen : {Point{0.1, 0.1}, Point{0.9, 0.3}, Point{0.35, 0.6}}) {
                const Point panel = panelPlaceOf(screen, settings, desktop);
                const Point there =
                    mapping.pointerOf(mapping.handOf({panel.x * kGlass.width, panel.y * kGlass.height}));
                EXPECT_NEAR(there.x, screen.x, 1e-9) << mode << " " << turns;
                EXPECT_NEAR(there.y, screen.y, 1e-9) << mode << " " << turns;
            }
        }
    }
}

} // namespace
