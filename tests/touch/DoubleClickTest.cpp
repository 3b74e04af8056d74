#include "tests/touch/Script.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using touching::lines;
using touching::only;
using touching::play;
using touching::Stage;

/// Half a second and 32 points, which are a circle of 8.47 millimetres; the desktop counts 400 milliseconds and
/// 5 points, which are 1.32 millimetres.
Stage stageWith(touch::Time rate, double range) {
    Stage stage;
    stage.settings.doubleClickRate = rate;
    stage.settings.doubleClickRange = range;
    return stage;
}

TEST(DoubleClick, IsGivenAtTheFirstTapsPlace) {
    EXPECT_EQ(play(stageWith(500ms, 32), "0: 1@30,40\n60: -\n200: 2@33,42\n260: -"), lines(R"(
        0 touch +0 30,40
        60 touch -0
        200 touch +0 30,40
        260 touch -0
    )"));
}

TEST(DoubleClick, CountsATapThatLandsJustInsideTheCircle) {
    EXPECT_EQ(play(stageWith(500ms, 32), "0: 1@30,40\n60: -\n200: 2@34.23,40\n260: -"), lines(R"(
        0 touch +0 30,40
        60 touch -0
        200 touch +0 30,40
        260 touch -0
    )"));
}

TEST(DoubleClick, DoesNotCountATapThatLandsJustOutsideTheCircle) {
    EXPECT_EQ(play(stageWith(500ms, 32), "0: 1@30,40\n60: -\n200: 2@34.3,40\n260: -"), lines(R"(
        0 touch +0 30,40
        60 touch -0
        200 touch +0 34.3,40
        260 touch -0
    )"));
}

TEST(DoubleClick, HasACircleAndNoSquare) {
    // Each axis alone is within the radius of 4.23 millimetres.
    EXPECT_EQ(only("touch", play(stageWith(500ms, 32), "0: 1@30,40\n60: -\n200: 2@33.5,43.5\n260: -")), lines(R"(
        0 touch +0 30,40
        60 touch -0
        200 touch +0 33.5,43.5
        260 touch -0
    )"));
}

TEST(DoubleClick, RunsFromLandingToLanding) {
    EXPECT_EQ(play(stageWith(300ms, 32), "0: 1@30,40\n200: -\n300: 2@31,40\n350: -"), lines(R"(
        0 touch +0 30,40
        200 touch -0
        300 touch +0 30,40
        350 touch -0
    )"));
}

TEST(DoubleClick, ThatIsTooLateWaitsUntilTheDesktopNoLongerCountsIt) {
    EXPECT_EQ(play(stageWith(300ms, 32), "0: 1@30,40\n60: -\n301: 2@31,40\n350: -"), lines(R"(
        0 touch +0 30,40
        60 touch -0
        410 touch +0 31,40
        410 touch -0
    )"));
}

TEST(DoubleClick, ThatIsTooLateForBothIsGivenAtOnce) {
    EXPECT_EQ(play(stageWith(300ms, 32), "0: 1@30,40\n60: -\n410: 2@31,40\n450: -"), lines(R"(
        0 touch +0 30,40
        60 touch -0
        410 touch +0 31,40
        450 touch -0
    )"));
}

TEST(DoubleClick, ThatIsTooLateWaitsForTheDesktopsTimeSinceItGotTheFirst) {
    EXPECT_EQ(play(stageWith(300ms, 32), "0: 1@30,40\n50: reached\n60: -\n301: 2@31,40\n350: -"), lines(R"(
        0 touch +0 30,40
        60 touch -0
        460 touch +0 31,40
        460 touch -0
    )"));
}

TEST(DoubleClick, ThatIsTooLateIsHeldBackThoughBothAreReadAtOnceAfterAStandstill) {
    EXPECT_EQ(play(stageWith(300ms, 32),
                   "0: 1@30,40\n1000: reached\n60: -\n1001: reached\n450: 2@31,40\n1002: reached\n"
                   "500: -\n1003: reached"),
              lines(R"(
        0 touch +0 30,40
        60 touch -0
        1410 touch +0 31,40
        1410 touch -0
    )"));
}

TEST(DoubleClick, WhosePressWaitsReachesTheDesktopNoSoonerThanItIsGiven) {
    EXPECT_EQ(play(stageWith(150ms, 32), "0: 1@30,40\n0: reached\n40: -\n200: 2@30,40\n240: -\n241: reached\n420: -\n"
                                         "430: reached\n700: 3@30,40\n740: -"),
              lines(R"(
        0 touch +0 30,40
        40 touch -0
        410 touch +0 30,40
        410 touch -0
        840 touch +0 30,40
        840 touch -0
    )"));
}

TEST(DoubleClick, OutsideASmallCircleWaitsWhereTheDesktopWouldCountIt) {
    // 8 points are a radius of 1.06 millimetres; the desktop's distance is 1.32.
    EXPECT_EQ(play(stageWith(500ms, 8), "0: 1@30,40\n60: -\n200: 2@31.2,40\n260: -"), lines(R"(
        0 touch +0 30,40
        60 touch -0
        410 touch +0 31.2,40
        410 touch -0
    )"));
}

TEST(DoubleClick, OutsideASmallCircleWaitsWhereTheDesktopCountsByLargePixels) {
    // A pixel is 0.5 millimetres, so that the desktop's distance is 2.5.
    Stage stage = stageWith(500ms, 8);
    stage.desktop.nativePixels = touch::Size{400.0, 240.0};
    EXPECT_EQ(play(stage, "0: 1@30,40\n60: -\n200: 2@32.4,40\n260: -"), lines(R"(
        0 touch +0 30,40
        60 touch -0
        410 touch +0 32.4,40
        410 touch -0
    )"));
    EXPECT_EQ(play(stage, "0: 1@30,40\n60: -\n200: 2@32.6,40\n260: -"), lines(R"(
        0 touch +0 30,40
        60 touch -0
        200 touch +0 32.6,40
        260 touch -0
    )"));
}

TEST(DoubleClick, CountsAPointWhereTheDesktopsPixelsAreSmaller) {
    Stage stage = stageWith(500ms, 8);
    stage.desktop.nativePixels = touch::Size{2000.0, 1200.0};
    EXPECT_EQ(play(stage, "0: 1@30,40\n60: -\n200: 2@31.2,40\n260: -"), lines(R"(
        0 touch +0 30,40
        60 touch -0
        410 touch +0 31.2,40
        410 touch -0
    )"));
}

TEST(DoubleClick, WhatComesAfterATapThatWaitsQueuesBehindIt) {
    EXPECT_EQ(play(stageWith(100ms, 32), "0: 1@30,40\n60: -\n150: 2@31,40\n200: -\n300: 3@90,90\n350: -"), lines(R"(
        0 touch +0 30,40
        60 touch -0
        410 touch +0 31,40
        410 touch -0
        410 touch +0 90,90
        410 touch -0
    )"));
}

TEST(DoubleClick, ThatIsTooLateAgainAndAgainIsNeverGivenAsOne) {
    Stage stage;
    stage.settings.doubleClickRate = 150ms;
    EXPECT_EQ(play(stage, "0: 1@30,40\n40: -\n200: 2@30,40\n240: -\n400: 3@30,40\n440: -\n600: 4@30,40\n640: -"),
              lines(R"(
        0 touch +0 30,40
        40 touch -0
        410 touch +0 30,40
        410 touch -0
        820 touch +0 30,40
        820 touch -0
        1230 touch +0 30,40
        1230 touch -0
    )"));
}

TEST(DoubleClick, SlowerThanTheDesktopsIsLeftToTheDesktop) {
    Stage stage = stageWith(900ms, 32);
    EXPECT_EQ(play(stage, "0: 1@30,40\n60: -\n800: 2@31,40\n860: -"), lines(R"(
        0 touch +0 30,40
        60 touch -0
        800 touch +0 30,40
        860 touch -0
    )"));
    touching::Transcript transcript(stage.glass);
    touch::TouchDisplay display(stage.glass, transcript, [&](touch::Fault fault) { transcript.fault(fault); });
    display.setSettings(stage.settings);
    EXPECT_TRUE(display.isDoubleClickSlowerThanDesktop());
    stage.settings.doubleClickRate = 400ms;
    display.setSettings(stage.settings);
    EXPECT_FALSE(display.isDoubleClickSlowerThanDesktop());
}

TEST(DoubleClick, OfThreeAndFourTapsKeepsThePlaceOfTheFirst) {
    EXPECT_EQ(play(stageWith(500ms, 32),
                   "0: 1@30,40\n60: -\n200: 2@31,40\n260: -\n400: 3@32,40\n460: -\n600: 4@33,40\n660: -"),
              lines(R"(
        0 touch +0 30,40
        60 touch -0
        200 touch +0 30,40
        260 touch -0
        400 touch +0 30,40
        460 touch -0
        600 touch +0 30,40
        660 touch -0
    )"));
}

TEST(DoubleClick, ThatDragsFollowsTheFinger) {
    EXPECT_EQ(play(stageWith(500ms, 32), "0: 1@30,40\n60: -\n200: 2@32,40\n220: 2@33,40\n240: 2@40,40\n300: -"),
              lines(R"(
        0 touch +0 30,40
        60 touch -0
        200 touch +0 30,40
        240 touch ~0 40,40
        300 touch -0
    )"));
}

TEST(DoubleClick, ADragIsNotTheFirstOfOne) {
    Stage stage = stageWith(500ms, 32);
    EXPECT_EQ(play(stage, "0: 1@30,40\n30: 1@36,40\n60: -\n200: 2@33,40\n260: -"), lines(R"(
        0 touch +0 30,40
        30 touch ~0 36,40
        60 touch -0
        200 touch +0 33,40
        260 touch -0
    )"));
}

TEST(DoubleClick, WithALongPressOnTheSecondTapIsARightClick) {
    Stage stage = stageWith(500ms, 32);
    stage.settings.longPress = 600ms;
    EXPECT_EQ(play(stage, "0: 1@30,40\n60: -\n200: 2@32,40\n900: -"), lines(R"(
        0 touch +0 30,40
        60 touch -0
        200 touch +0 30,40
        800 touch x0
        800 pointer 32,40
        800 pointer +right
        900 pointer -right
    )"));
}

TEST(DoubleClick, ASecondTapByAnotherFingerWhileTheFirstRestsIsNone) {
    EXPECT_EQ(play(stageWith(500ms, 32), "0: 1@30,40\n200: 1@30,40 2@33,40\n260: 1@30,40\n900: -"), lines(R"(
        0 touch +0 30,40
        260 touch +1 33,40
        260 touch -1
        900 touch -0
    )"));
}

TEST(DoubleClick, InPointerModeIsGivenAtTheFirstTapsPlace) {
    Stage stage = stageWith(500ms, 32);
    stage.settings.fingerMode = touch::FingerMode::Pointer;
    EXPECT_EQ(play(stage, "0: 1@30,40\n60: -\n200: 2@33,42\n260: -"), lines(R"(
        60 pointer 30,40
        60 pointer +left
        60 pointer -left
        260 pointer 30,40
        260 pointer +left
        260 pointer -left
    )"));
}

TEST(DoubleClick, InPointerModeTooLateByItsLandingWaitsForTheDesktopsInterval) {
    Stage stage = stageWith(300ms, 32);
    stage.settings.fingerMode = touch::FingerMode::Pointer;
    // Given at 60, and would be again at 370.
    EXPECT_EQ(play(stage, "0: 1@30,40\n60: -\n310: 2@30,40\n370: -"), lines(R"(
        60 pointer 30,40
        60 pointer +left
        60 pointer -left
        470 pointer 30,40
        470 pointer +left
        470 pointer -left
    )"));
}

TEST(DoubleClick, HoldsRateAndRangeToTheirBounds) {
    // 0.1 seconds at the least and 8 points.
    EXPECT_EQ(only("touch", play(stageWith(0ms, -5), "0: 1@30,40\n50: -\n100: 2@31,40\n150: -")), lines(R"(
        0 touch +0 30,40
        50 touch -0
        100 touch +0 30,40
        150 touch -0
    )"));
    // A second at the most and 128 points, a radius of 16.9 millimetres.
    EXPECT_EQ(only("touch", play(stageWith(60s, 1e9), "0: 1@30,40\n50: -\n1000: 2@46.9,40\n1050: -")), lines(R"(
        0 touch +0 30,40
        50 touch -0
        1000 touch +0 30,40
        1050 touch -0
    )"));
    EXPECT_EQ(only("touch", play(stageWith(60s, 1e9), "0: 1@30,40\n50: -\n1001: 2@46.9,40\n1050: -")), lines(R"(
        0 touch +0 30,40
        50 touch -0
        1001 touch +0 46.9,40
        1050 touch -0
    )"));
}

TEST(DoubleClick, ATouchThatWasTakenBackIsNoFirstTap) {
    // Two fingers click with the right button; the tap that follows is the first of its own series.
    EXPECT_EQ(only("touch", play(stageWith(100ms, 32), "0: 1@30,40\n10: 1@30,40 2@50,40\n60: -\n300: 3@30,40\n360: -")),
              lines(R"(
        0 touch +0 30,40
        60 touch x0
        300 touch +0 30,40
        360 touch -0
    )"));
}

TEST(DoubleClick, ANewRateCountsFromTheNextFingerOn) {
    const Stage stage = stageWith(500ms, 32);
    touching::Transcript transcript(stage.glass);
    touch::TouchDisplay display(stage.glass, transcript, [&](touch::Fault fault) { transcript.fault(fault); });
    display.setSettings(stage.settings);
    const auto tap = [&](touch::Time at, int id) {
        touch::Frame frame{.time = at, .contacts = {}};
        frame.contacts.add({id, {30, 40}, false});
        display.frame(frame);
        display.frame({.time = at + 50ms, .contacts = {}});
    };
    tap(0ms, 1);
    display.setSettings(stageWith(200ms, 32).settings);
    tap(300ms, 2);
    while (display.deadline()) display.timeout(*display.deadline());
    EXPECT_EQ(transcript.text(), lines(R"(
        0 touch +0 30,40
        50 touch -0
        410 touch +0 30,40
        410 touch -0
    )"));
}

} // namespace
