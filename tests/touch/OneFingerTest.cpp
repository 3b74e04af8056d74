#include "tests/touch/Script.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using touching::lines;
using touching::only;
using touching::play;
using touching::Stage;

/// A desktop whose applications keep every touch they were given.
Stage keepingTouches() {
    Stage stage;
    stage.desktop.takesTouchesBack = false;
    return stage;
}

Stage pointerMode() {
    Stage stage;
    stage.settings.fingerMode = touch::FingerMode::Pointer;
    return stage;
}

TEST(OneFinger, IsPassedAtOnceWhereItCanBeTakenBack) {
    EXPECT_EQ(play(Stage(), "0: 1@30,40\n8: 1@30,42\n16: 1@31,50\n24: -"), lines(R"(
        0 touch +0 30,40
        8 touch ~0 30,42
        16 touch ~0 31,50
        24 touch -0
    )"));
}

TEST(OneFinger, ThatCannotBeTakenBackIsGivenWhenItLifts) {
    EXPECT_EQ(play(keepingTouches(), "0: 1@30,40\n60: -"), lines(R"(
        60 touch +0 30,40
        60 touch -0
    )"));
}

TEST(OneFinger, ThatCannotBeTakenBackIsGivenWhenItMovesPastTheThreshold) {
    EXPECT_EQ(play(keepingTouches(), "0: 1@30,40\n8: 1@30,42\n16: 1@30,42.1\n24: -"), lines(R"(
        16 touch +0 30,40
        16 touch ~0 30,42.1
        24 touch -0
    )"));
}

TEST(OneFinger, ThatCannotBeTakenBackIsGivenWhenItHasBeenAlone) {
    EXPECT_EQ(play(keepingTouches(), "0: 1@30,40\n200: -"), lines(R"(
        80 touch +0 30,40
        200 touch -0
    )"));
}

TEST(OneFinger, IsHeldForAsLongAsALongPressTakesWhereThatIsOn) {
    Stage stage = keepingTouches();
    stage.settings.longPress = 500ms;
    EXPECT_EQ(play(stage, "0: 1@30,40\n499: -"), lines(R"(
        499 touch +0 30,40
        499 touch -0
    )"));
}

TEST(OneFinger, InPointerModeTapsAsAClick) {
    EXPECT_EQ(play(pointerMode(), "0: 1@30,40\n60: -"), lines(R"(
        60 pointer 30,40
        60 pointer +left
        60 pointer -left
    )"));
}

TEST(OneFinger, InPointerModeDragsFromWhereItLanded) {
    EXPECT_EQ(play(pointerMode(), "0: 1@30,40\n8: 1@33,40\n16: 1@40,40\n24: -"), lines(R"(
        8 pointer 30,40
        8 pointer +left
        8 pointer 33,40
        16 pointer 40,40
        24 pointer -left
    )"));
}

TEST(OneFinger, InPointerModeKeepsTheButtonWhileASecondFingerComesAndGoes) {
    EXPECT_EQ(play(pointerMode(), "0: 1@30,40\n8: 1@33,40\n200: 1@33,40 2@60,60\n260: 1@33,40\n300: -"), lines(R"(
        8 pointer 30,40
        8 pointer +left
        8 pointer 33,40
        300 pointer -left
    )"));
}

TEST(RightClick, HappensAfterTheSetTimeAtRestAndGoesUpWithTheFinger) {
    Stage stage;
    stage.settings.longPress = 500ms;
    EXPECT_EQ(play(stage, "0: 1@30,40\n900: -"), lines(R"(
        0 touch +0 30,40
        500 touch x0
        500 pointer 30,40
        500 pointer +right
        900 pointer -right
    )"));
}

TEST(RightClick, GivesNoTouchAtAllWhereTouchesCannotBeTakenBack) {
    Stage stage = keepingTouches();
    stage.settings.longPress = 500ms;
    EXPECT_EQ(play(stage, "0: 1@30,40\n900: -"), lines(R"(
        500 pointer 30,40
        500 pointer +right
        900 pointer -right
    )"));
}

TEST(RightClick, DoesNotHappenWhereItIsOff) {
    EXPECT_EQ(play(Stage(), "0: 1@30,40\n3500: -"), lines(R"(
        0 touch +0 30,40
        3500 touch -0
    )"));
}

TEST(RightClick, DoesNotHappenToAFingerThatMovedPastTheThreshold) {
    Stage stage;
    stage.settings.longPress = 500ms;
    EXPECT_EQ(play(stage, "0: 1@30,40\n100: 1@32.1,40\n900: -"), lines(R"(
        0 touch +0 30,40
        100 touch ~0 32.1,40
        900 touch -0
    )"));
}

TEST(RightClick, HappensToAFingerThatStayedWithinTheThreshold) {
    Stage stage;
    stage.settings.longPress = 500ms;
    EXPECT_EQ(only("pointer", play(stage, "0: 1@30,40\n100: 1@32,40\n900: -")), lines(R"(
        500 pointer 32,40
        500 pointer +right
        900 pointer -right
    )"));
}

TEST(RightClick, HasATimeBetweenThreeTenthsOfASecondAndThreeSeconds) {
    Stage stage;
    stage.settings.longPress = 0ms;
    EXPECT_EQ(only("pointer", play(stage, "0: 1@30,40\n9000: -")), lines(R"(
        300 pointer 30,40
        300 pointer +right
        9000 pointer -right
    )"));
    stage.settings.longPress = 60s;
    EXPECT_EQ(only("pointer", play(stage, "0: 1@30,40\n9000: -")), lines(R"(
        3000 pointer 30,40
        3000 pointer +right
        9000 pointer -right
    )"));
}

TEST(RightClick, MovesWithTheFingerAsAMouseWould) {
    Stage stage;
    stage.settings.longPress = 500ms;
    EXPECT_EQ(only("pointer", play(stage, "0: 1@30,40\n600: 1@31,40\n700: 1@50,40\n900: -")), lines(R"(
        500 pointer 30,40
        500 pointer +right
        700 pointer 50,40
        900 pointer -right
    )"));
}

TEST(RightClick, IsNotDisturbedByAnotherFinger) {
    Stage stage;
    stage.settings.longPress = 500ms;
    EXPECT_EQ(only("pointer pad touch", play(stage, "0: 1@30,40\n600: 1@30,40 2@60,60\n700: 2@60,60\n900: -")),
              lines(R"(
        0 touch +0 30,40
        500 touch x0
        500 pointer 30,40
        500 pointer +right
        700 pointer -right
    )"));
}

} // namespace
