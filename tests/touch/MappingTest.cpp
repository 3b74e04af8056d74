#include "touch/Mapping.h"

#include "tests/touch/Script.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using touch::Desktop;
using touch::Mapping;
using touch::Point;
using touch::Settings;

constexpr touch::Size kGlass{200.0, 100.0};

struct Display {
    Settings settings;
    Desktop desktop;

    [[nodiscard]] Mapping mapping() const { return {kGlass, settings, desktop}; }
    [[nodiscard]] Point touchOf(Point glass) const { return mapping().touchOf(mapping().handOf(glass)); }
    [[nodiscard]] Point pointerOf(Point glass) const { return mapping().pointerOf(mapping().handOf(glass)); }
    [[nodiscard]] bool isOnPicture(Point glass) const { return mapping().isOnPicture(mapping().handOf(glass)); }
};

void expectPlace(Point place, Point expected) {
    EXPECT_NEAR(place.x, expected.x, 1e-9);
    EXPECT_NEAR(place.y, expected.y, 1e-9);
}

// A place a tenth from the left and a fifth from the top.
constexpr Point kPlace{20.0, 20.0};

TEST(Turn, ByQuartersIsClockwise) {
    expectPlace(touch::turned({0.1, 0.2}, 0), {0.1, 0.2});
    expectPlace(touch::turned({0.1, 0.2}, 1), {0.2, 0.9});
    expectPlace(touch::turned({0.1, 0.2}, 2), {0.9, 0.8});
    expectPlace(touch::turned({0.1, 0.2}, 3), {0.8, 0.1});
    expectPlace(touch::turned({0.1, 0.2}, -1), {0.8, 0.1});
    expectPlace(touch::turned({0.1, 0.2}, 4), {0.1, 0.2});
    expectPlace(touch::turned({0.1, 0.2}, std::numeric_limits<std::int64_t>::max()), {0.8, 0.1});
    expectPlace(touch::turned({0.1, 0.2}, std::numeric_limits<std::int64_t>::min()), {0.1, 0.2});
}

TEST(Turn, OfTheSettingsHoldsWhereItIsNotZero) {
    Display display;
    display.settings.rotateMode = 1;
    display.desktop.turns = 2;
    expectPlace(display.pointerOf(kPlace), {0.2, 0.9});
}

TEST(Turn, IsTheDesktopsWhereTheSettingsHaveNone) {
    Display display;
    display.desktop.turns = 3;
    expectPlace(display.pointerOf(kPlace), {0.8, 0.1});
}

TEST(Turn, IsAppliedToTouchesWhereTheDesktopDoesNot) {
    Display display;
    display.desktop.turns = 1;
    expectPlace(display.touchOf(kPlace), {0.2, 0.9});
    display.settings.rotateMode = 2;
    expectPlace(display.touchOf(kPlace), {0.9, 0.8});
}

TEST(Turn, IsNeverAppliedTwiceToTouchesThatTheDesktopTurns) {
    Display display;
    display.desktop.turnsTouches = true;
    display.desktop.turns = 1;
    expectPlace(display.touchOf(kPlace), {0.1, 0.2});
    expectPlace(display.pointerOf(kPlace), {0.2, 0.9});
}

TEST(Turn, OfTouchesThatTheDesktopTurnsIsWhatThatLacks) {
    Display display;
    display.desktop.turnsTouches = true;
    display.desktop.turns = 1;
    display.settings.rotateMode = 3;
    // Two more quarters, which with the desktop's own make three.
    expectPlace(display.touchOf(kPlace), {0.9, 0.8});
    expectPlace(touch::turned(display.touchOf(kPlace), display.desktop.turns), display.pointerOf(kPlace));
}

TEST(Place, OfThePointerIsThePartOfTheDesktopThatTheMonitorShows) {
    Display display;
    display.desktop.place = {{0.25, 0.5}, {0.75, 0.5}};
    expectPlace(display.pointerOf({0, 0}), {0.25, 0.5});
    expectPlace(display.pointerOf({200, 100}), {1.0, 1.0});
    expectPlace(display.pointerOf(kPlace), {0.325, 0.6});
    // Of touches the desktop knows itself where they belong.
    expectPlace(display.touchOf(kPlace), {0.1, 0.2});
}

TEST(Place, OfThePointerComesAfterTheTurn) {
    Display display;
    display.desktop.place = {{0.5, 0.0}, {0.5, 1.0}};
    display.desktop.turns = 1;
    expectPlace(display.pointerOf(kPlace), {0.6, 0.9});
}

TEST(Turn, ByAQuarterSwapsTheSidesOfTheGlass) {
    Display display;
    display.settings.rotateMode = 1;
    EXPECT_EQ(display.mapping().handSize(), (touch::Size{100, 200}));
    expectPlace(display.mapping().handOf(kPlace), {20, 180});
}

TEST(Calibration, IsAppliedBeforeTheTurn) {
    Display display;
    display.settings.calibration = {1, 0, 0.1, 0, 1, 0};
    display.settings.rotateMode = 1;
    expectPlace(display.pointerOf(kPlace), touch::turned({0.2, 0.2}, 1));
}

TEST(Calibration, ThatTurnsThePanelTurnsItsSidesToo) {
    Display display;
    display.settings.calibration = {0, 1, 0, -1, 0, 1};
    EXPECT_EQ(display.mapping().handSize(), (touch::Size{100, 200}));
    expectPlace(display.touchOf(kPlace), {0.2, 0.9});
}

TEST(Calibration, ThatIsNoneCountsAsNone) {
    Display display;
    for (const touch::Matrix& matrix : {touch::Matrix{0, 0, 0, 0, 0, 0}, touch::Matrix{1, 1, 0, 1, 1, 0},
                                        touch::Matrix{std::nan(""), 0, 0, 0, 1, 0}}) {
        display.settings.calibration = matrix;
        expectPlace(display.touchOf(kPlace), {0.1, 0.2});
    }
}

TEST(Calibration, PutsWhatItMovesPastTheEdgeAtTheEdge) {
    Display display;
    display.settings.calibration = {1, 0, -0.2, 0, 1, 0};
    EXPECT_TRUE(display.isOnPicture(kPlace));
    expectPlace(display.touchOf(kPlace), {0.0, 0.2});
}

Display withPicture(touch::Size picture, std::optional<touch::Size> native = touch::Size{2000, 1000}) {
    Display display;
    display.settings.manualPicture = picture;
    display.desktop.nativePixels = native;
    return display;
}

TEST(Picture, IsCentredOnThePanel) {
    const Display display = withPicture({1000, 500});
    expectPlace(display.touchOf({50, 25}), {0, 0});
    expectPlace(display.touchOf({100, 50}), {0.5, 0.5});
    expectPlace(display.touchOf({150, 75}), {1, 1});
}

TEST(Picture, HasNothingForAContactThatLandsBesideIt) {
    const Display display = withPicture({1000, 500});
    EXPECT_TRUE(display.isOnPicture({50, 25}));
    EXPECT_FALSE(display.isOnPicture({49.9, 25}));
    EXPECT_FALSE(display.isOnPicture({50, 75.1}));
}

TEST(Picture, HoldsAContactThatLandedInside) {
    const Display display = withPicture({1000, 500});
    expectPlace(display.touchOf({10, 50}), {0, 0.5});
    expectPlace(display.pointerOf({100, 99}), {0.5, 1});
}

TEST(Picture, HasASideOfThePanelWhereItsOwnIsZeroNoNumberOrNotSmaller) {
    for (const double side : {0.0, -5.0, std::nan(""), 2000.0, 4096.0}) {
        const Display display = withPicture({side, 500});
        expectPlace(display.touchOf({20, 50}), {0.1, 0.5});
        EXPECT_TRUE(display.isOnPicture({1, 50}));
        EXPECT_FALSE(display.isOnPicture({1, 20}));
    }
}

TEST(Picture, IsTheWholeGlassWhereThePanelsPixelsAreUnknown) {
    const Display display = withPicture({1000, 500}, std::nullopt);
    expectPlace(display.touchOf(kPlace), {0.1, 0.2});
}

TEST(Picture, LiesInThePanelsOwnOrientationBeforeTheTurn) {
    Display display = withPicture({1000, 1000});
    display.settings.rotateMode = 1;
    // Half as wide as the panel and as high: the turned display has its bars above and below.
    expectPlace(display.pointerOf({50, 0}), touch::turned({0, 0}, 1));
    EXPECT_FALSE(display.isOnPicture({49, 50}));
    EXPECT_TRUE(display.isOnPicture({51, 0}));
}

TEST(Picture, LetsNothingOfAFingerBesideItOut) {
    touching::Stage stage;
    stage.settings.manualPicture = touch::Size{1000, 1000};
    stage.desktop.nativePixels = touch::Size{2000, 1000};
    EXPECT_EQ(touching::play(stage, "0: 1@10,50\n20: 1@100,50\n40: -"), "");
    EXPECT_EQ(touching::play(stage, "0: 1@10,50\n20: 1@10,50 2@100,60\n60: 1@10,50\n90: -"),
              touching::lines("20 touch +1 100,60\n60 touch -1"));
}

TEST(Direction, IsTheOneThatTheUserSees) {
    touching::Stage stage;
    stage.settings.rotateMode = 1;
    // Turned a quarter clockwise the panel's left is below.
    const std::vector<touching::Stroke> left{
        {.from = {150, 40}, .to = {110, 40}, .landsAt = 0, .liftsAt = 500, .movesFrom = 120},
        {.from = {150, 60}, .to = {110, 60}, .landsAt = 0, .liftsAt = 500, .movesFrom = 120},
        {.from = {150, 80}, .to = {110, 80}, .landsAt = 0, .liftsAt = 500, .movesFrom = 120}};
    EXPECT_EQ(touching::gesturesIn(touching::play(stage, touching::strokes(left))), "AppExpos\u00e9 down");
    stage.settings.rotateMode = 3;
    EXPECT_EQ(touching::gesturesIn(touching::play(stage, touching::strokes(left))), "MissionControl up");
    stage.settings.rotateMode = 2;
    EXPECT_EQ(touching::gesturesIn(touching::play(stage, touching::strokes(left))), "FullScreenApps right");
}

} // namespace
