#include "tests/touch/Script.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using touching::gesturesIn;
using touching::lines;
using touching::only;
using touching::play;
using touching::Stage;
using touching::Stroke;
using touching::strokes;

constexpr double kEnd = 500.0;

/// Fingers that go the same way, landing 10 milliseconds after one another.
std::string together(std::vector<touch::Point> from, touch::Point way, double end = kEnd) {
    std::vector<Stroke> fingers;
    double landing = 0.0;
    for (const touch::Point place : from) {
        fingers.push_back({.from = place, .to = place + way, .landsAt = landing, .liftsAt = end, .movesFrom = 120});
        landing += 10.0;
    }
    return strokes(fingers);
}

/// Fingers that go to, or come from, the middle at 100,60, to or from so many times their distance from it.
std::string fromMiddle(std::vector<touch::Point> from, double scale) {
    const touch::Point middle{100, 60};
    std::vector<Stroke> fingers;
    for (const touch::Point place : from) {
        fingers.push_back(
            {.from = place, .to = middle + (place - middle) * scale, .landsAt = 0, .liftsAt = kEnd, .movesFrom = 120});
    }
    return strokes(fingers);
}

const std::vector<touch::Point> kTwo{{90, 60}, {115, 60}};
const std::vector<touch::Point> kThree{{80, 60}, {100, 55}, {120, 60}};
const std::vector<touch::Point> kFour{{70, 65}, {90, 55}, {110, 55}, {130, 65}};
const std::vector<touch::Point> kAround{{70, 85}, {85, 35}, {100, 32}, {120, 38}};

std::string whatIsDone(const Stage& stage, const std::string& fingers) { return gesturesIn(play(stage, fingers)); }

TEST(SeveralFingers, TapOfTwoIsASecondaryClickInTheirMiddle) {
    Stage stage;
    stage.switchOff("SmartZoom");
    EXPECT_EQ(play(stage, "0: 1@30,40\n10: 1@30,40 2@50,44\n90: 2@50,44\n100: -"), lines(R"(
        0 touch +0 30,40
        100 touch x0
        100 gesture SecondaryClick begins
        100 pointer 40,42
        100 pointer +right
        100 pointer -right
        100 gesture SecondaryClick ends
    )"));
}

TEST(SeveralFingers, TapsOfTwoHandsPassAsTouches) {
    Stage stage;
    stage.switchOff("SmartZoom");
    EXPECT_EQ(gesturesIn(play(stage, "0: 1@20,40 2@170,40\n60: -")), "SecondaryClick");
    EXPECT_EQ(gesturesIn(play(stage, "0: 1@20,40 2@90,40 3@170,40\n60: -")), "LookUp");
    EXPECT_EQ(play(stage, "0: 1@20,40 2@170.1,40\n60: -"), lines(R"(
        0 touch +0 20,40
        60 touch +1 170.1,40
        60 touch -0 -1
    )"));
    EXPECT_EQ(gesturesIn(play(stage, "0: 1@20,40 2@90,40 3@170.1,40\n60: -")), "");
}

TEST(SeveralFingers, TapOfTwoWaitsForItsDoubleWhereBothAreOn) {
    EXPECT_EQ(only("gesture", play(Stage(), "0: 1@30,40 2@50,40\n100: -")), lines(R"(
        500 gesture SecondaryClick begins
        500 gesture SecondaryClick ends
    )"));
}

TEST(SeveralFingers, DoubleTapOfTwoIsSmartZoomAlone) {
    EXPECT_EQ(only("gesture pointer key", play(Stage(), "0: 1@30,40 2@50,40\n100: -\n300: 3@31,41 4@52,40\n400: -")),
              lines(R"(
        400 gesture SmartZoom begins
        400 key +29
        400 key +82
        400 key -82
        400 key -29
        400 gesture SmartZoom ends
    )"));
}

TEST(SeveralFingers, ATapOfOneBetweenTwoTapsOfTwoMakesThemTwoClicks) {
    const char* const fingers = "0: 1@30,40 2@50,40\n50: -\n120: 3@100,100\n160: -\n300: 4@30,40 5@50,40\n350: -";
    EXPECT_EQ(whatIsDone(Stage(), fingers), "SecondaryClick, SecondaryClick");
    Stage stage;
    stage.switchOff("SecondaryClick");
    EXPECT_EQ(whatIsDone(stage, fingers), "");
}

TEST(SeveralFingers, DoubleTapOfTwoElsewhereIsTwoClicks) {
    EXPECT_EQ(whatIsDone(Stage(), "0: 1@30,40 2@50,40\n100: -\n300: 3@60,40 4@80,40\n400: -"),
              "SecondaryClick, SecondaryClick");
}

TEST(SeveralFingers, DoubleTapOfTwoTooLateIsTwoClicks) {
    EXPECT_EQ(whatIsDone(Stage(), "0: 1@30,40 2@50,40\n100: -\n501: 3@30,40 4@50,40\n600: -"),
              "SecondaryClick, SecondaryClick");
}

TEST(SeveralFingers, DoubleTapOfTwoIsTwoClicksWhereItIsOff) {
    Stage stage;
    stage.switchOff("SmartZoom");
    EXPECT_EQ(whatIsDone(stage, "0: 1@30,40 2@50,40\n100: -\n300: 3@30,40 4@50,40\n400: -"),
              "SecondaryClick, SecondaryClick");
}

TEST(SeveralFingers, TapOfTwoPassesAsTouchesWhereOnlyItsDoubleIsOn) {
    Stage stage;
    stage.switchOff("SecondaryClick");
    EXPECT_EQ(play(stage, "0: 1@30,40 2@50,40\n100: -"), lines(R"(
        0 touch +0 30,40
        100 touch +1 50,40
        100 touch -0 -1
    )"));
    EXPECT_EQ(whatIsDone(stage, "0: 1@30,40 2@50,40\n100: -\n300: 3@30,40 4@50,40\n400: -"), "SmartZoom");
}

TEST(SeveralFingers, AFingerAfterATapOfTwoFollowsIt) {
    EXPECT_EQ(play(Stage(), "0: 1@30,40 2@50,40\n100: -\n200: 3@90,90\n250: -"), lines(R"(
        0 touch +0 30,40
        100 touch x0
        250 gesture SecondaryClick begins
        250 pointer 40,40
        250 pointer +right
        250 pointer -right
        250 gesture SecondaryClick ends
        250 touch +0 90,90
        250 touch -0
    )"));
}

TEST(SeveralFingers, OfOneHandLandAndLiftUpToEightyMillisecondsApart) {
    Stage stage;
    stage.switchOff("SmartZoom");
    EXPECT_EQ(whatIsDone(stage, "0: 1@30,40\n80: 1@30,40 2@50,40\n120: 2@50,40\n200: -"), "SecondaryClick");
    EXPECT_EQ(whatIsDone(stage, "0: 1@30,40\n81: 1@30,40 2@50,40\n120: 2@50,40\n200: -"), "");
    EXPECT_EQ(whatIsDone(stage, "0: 1@30,40\n80: 1@30,40 2@50,40\n120: 2@50,40\n201: -"), "");
}

TEST(SeveralFingers, ThatMoveAsTheyLandMayLandEightyMillisecondsApart) {
    const auto scroll = [](double landing) {
        return strokes({{.from = {80, 80}, .to = {80, 40}, .landsAt = 0, .liftsAt = 400},
                        {.from = {100, 80}, .to = {100, 48}, .landsAt = landing, .liftsAt = 400}});
    };
    EXPECT_EQ(whatIsDone(Stage(), scroll(80)), "Scroll up");
    EXPECT_EQ(whatIsDone(Stage(), scroll(81)), "");
}

TEST(SeveralFingers, ThatRestForLongerDoNothing) {
    Stage stage;
    stage.switchOff("SmartZoom");
    EXPECT_EQ(whatIsDone(stage, "0: 1@30,40 2@50,40\n300: -"), "SecondaryClick");
    EXPECT_EQ(play(stage, "0: 1@30,40 2@50,40\n301: -"), lines(R"(
        0 touch +0 30,40
        301 touch x0
    )"));
}

TEST(SeveralFingers, TapOfThreeIsLookUp) {
    EXPECT_EQ(only("gesture key", play(Stage(), "0: 1@30,40 2@50,40\n20: 1@30,40 2@50,40 3@70,40\n100: -")), lines(R"(
        100 gesture LookUp begins
        100 key +217
        100 key -217
        100 gesture LookUp ends
    )"));
}

TEST(SeveralFingers, TapOfFourPassesAsTouches) {
    EXPECT_EQ(only("touch", play(Stage(), "0: 1@30,40 2@50,40 3@70,40 4@90,40\n100: -")), lines(R"(
        0 touch +0 30,40
        100 touch +1 50,40 +2 70,40 +3 90,40
        100 touch -0 -1 -2 -3
    )"));
}

TEST(SeveralFingers, TwoMovingTogetherScroll) {
    EXPECT_EQ(whatIsDone(Stage(), together(kTwo, {0, 30})), "Scroll down");
    EXPECT_EQ(whatIsDone(Stage(), together(kTwo, {0, -30})), "Scroll up");
}

TEST(SeveralFingers, ScrollingBeginsWhereTheFingersAreAndGoesAsFarAsThey) {
    Stage stage;
    stage.desktop.scrollsNaturally = true;
    const std::string output = play(stage, "0: 1@90,60 2@110,60\n120: 1@90,61 2@110,61\n130: 1@90,63 2@110,63\n"
                                           "140: 1@90,64 2@110,64\n160: -");
    EXPECT_EQ(output, lines(R"(
        0 touch +0 90,60
        130 touch x0
        130 gesture Scroll down begins
        130 pointer 100,60
        130 pad +0 -10,0 +1 10,0
        138 pad ~0 -10,3 ~1 10,3
        140 pad ~0 -10,4 ~1 10,4
        160 pad -0 -1
        160 gesture Scroll down ends
    )"));
}

TEST(SeveralFingers, ScrollingIsOnlyWantedWhereItsRecordIsOn) {
    Stage stage;
    stage.settings.gestures = touching::snowLeopardGestures();
    EXPECT_EQ(whatIsDone(stage, together(kTwo, {0, 30})), "Scroll down");
    stage.switchOff("Scroll");
    EXPECT_EQ(whatIsDone(stage, together(kTwo, {0, 30})), "");
    EXPECT_EQ(only("pad", play(stage, together(kTwo, {0, 30}))), "");
}

/// How far the first finger of the pad went down.
double scrolled(const Stage& stage) {
    const std::string pad = only("pad", play(stage, together(kTwo, {0, 30})));
    const std::size_t last = pad.rfind("~0 -10,");
    if (last == std::string::npos) return 0.0;
    return std::stod(pad.substr(last + std::string_view("~0 -10,").size()));
}

TEST(SeveralFingers, ContentFollowsTheFingersWhateverTheDesktopDoesToTouchpads) {
    Stage stage;
    stage.desktop.scrollsNaturally = true;
    EXPECT_NEAR(scrolled(stage), 30.0, 0.5);
    stage.desktop.scrollsNaturally = false;
    EXPECT_NEAR(scrolled(stage), -30.0, 0.5);
    stage.switchOff("ScrollDirection");
    EXPECT_NEAR(scrolled(stage), 30.0, 0.5);
    stage.desktop.scrollsNaturally = true;
    EXPECT_NEAR(scrolled(stage), -30.0, 0.5);
}

TEST(SeveralFingers, TwoComingTogetherOrGoingApartZoom) {
    EXPECT_EQ(whatIsDone(Stage(), fromMiddle({{80, 60}, {120, 60}}, 2.0)), "ZoomInOrOut");
    EXPECT_EQ(whatIsDone(Stage(), fromMiddle({{60, 40}, {140, 80}}, 0.5)), "ZoomInOrOut");
}

TEST(SeveralFingers, ZoomingScalesThePadsFingersAsTheRealOnesAndTurnsNothing) {
    const std::string pad = only("pad", play(Stage(), fromMiddle({{80, 60}, {120, 60}}, 2.0)));
    EXPECT_NE(pad.find("pad +0 60,0 +1 -60,0\n"), std::string::npos) << pad;
    EXPECT_NE(pad.find("~0 120,0 ~1 -120,0"), std::string::npos) << pad;
}

TEST(SeveralFingers, TwoGoingAboutEachOtherRotate) {
    const std::vector<Stroke> fingers{
        {.from = {80, 60}, .to = {86, 46}, .landsAt = 0, .liftsAt = kEnd, .movesFrom = 120},
        {.from = {120, 60}, .to = {114, 74}, .landsAt = 0, .liftsAt = kEnd, .movesFrom = 120}};
    EXPECT_EQ(whatIsDone(Stage(), strokes(fingers)), "Rotate");
}

TEST(SeveralFingers, OneGoingAboutAnotherRotatesAndOneGoingAwayFromAnotherZooms) {
    const Stroke still{.from = {80, 60}, .to = {80, 60}, .landsAt = 0, .liftsAt = kEnd};
    EXPECT_EQ(
        whatIsDone(
            Stage(),
            strokes({still, {.from = {120, 60}, .to = {118, 80}, .landsAt = 20, .liftsAt = kEnd, .movesFrom = 120}})),
        "Rotate");
    EXPECT_EQ(
        whatIsDone(
            Stage(),
            strokes({still, {.from = {120, 60}, .to = {145, 60}, .landsAt = 20, .liftsAt = kEnd, .movesFrom = 120}})),
        "ZoomInOrOut");
}

TEST(SeveralFingers, AThumbThatComesAFewMillimetresToMeetAFingerZoomsOrRotatesWithIt) {
    for (const double thumb : {1.5, 2.0, 4.0, 6.0}) {
        const auto both = [thumb](touch::Point from, touch::Point thumbsWay, touch::Point way) {
            return strokes(
                {{.from = {80, 80}, .to = touch::Point{80, 80} + thumbsWay * thumb, .landsAt = 0, .liftsAt = kEnd},
                 {.from = from, .to = from + way, .landsAt = 20, .liftsAt = kEnd}});
        };
        EXPECT_EQ(whatIsDone(Stage(), both({130, 80}, {1, 0}, {-20, 0})), "ZoomInOrOut") << thumb;
        EXPECT_EQ(whatIsDone(Stage(), both({110, 80}, {-1, 0}, {20, 0})), "ZoomInOrOut") << thumb;
        EXPECT_EQ(whatIsDone(Stage(), both({120, 80}, {0, 1}, {-2, -25})), "Rotate") << thumb;
    }
}

TEST(SeveralFingers, OneOfTwoThatStartsLateStillScrolls) {
    EXPECT_EQ(
        whatIsDone(
            Stage(),
            strokes({{.from = {80, 60}, .to = {80, 30}, .landsAt = 0, .liftsAt = kEnd, .movesFrom = 0, .movesTo = 300},
                     {.from = {120, 60},
                      .to = {120, 30},
                      .landsAt = 0,
                      .liftsAt = kEnd,
                      .movesFrom = 60,
                      .movesTo = 360}})),
        "Scroll up");
}

TEST(SeveralFingers, AQuickSidewaysMovementOfTwoTurnsPages) {
    EXPECT_EQ(whatIsDone(Stage(), together(kTwo, {-30, 0}, 250)), "SwipeBetweenPages left");
    EXPECT_EQ(only("key", play(Stage(), together(kTwo, {30, 0}, 250))), lines(R"(
        250 key +56
        250 key +105
        250 key -105
        250 key -56
    )"));
}

TEST(SeveralFingers, ASlowSidewaysMovementOfTwoScrolls) {
    EXPECT_EQ(whatIsDone(Stage(), together(kTwo, {-30, 0}, 600)), "Scroll left");
}

TEST(SeveralFingers, AQuickSidewaysMovementOfTwoScrollsWherePagesAreOffOrThree) {
    Stage stage;
    stage.switchOff("SwipeBetweenPages");
    EXPECT_EQ(whatIsDone(stage, together(kTwo, {-30, 0}, 250)), "Scroll left");
    Stage three;
    three.choose("SwipeBetweenPages", "SwipeWithThreeFingers");
    three.choose("FullScreenApps", "SwipeLeftOrRightWithFourFingers");
    EXPECT_EQ(whatIsDone(three, together(kTwo, {-30, 0}, 250)), "Scroll left");
    EXPECT_EQ(whatIsDone(three, together(kThree, {-30, 0})), "SwipeBetweenPages left");
}

TEST(SeveralFingers, PagesWithTwoOrThreeWantsBothShapes) {
    Stage stage;
    stage.choose("SwipeBetweenPages", "SwipeWithTwoOrThreeFingers");
    stage.choose("FullScreenApps", "SwipeLeftOrRightWithFourFingers");
    EXPECT_EQ(whatIsDone(stage, together(kTwo, {-30, 0}, 250)), "SwipeBetweenPages left");
    EXPECT_EQ(whatIsDone(stage, together(kThree, {30, 0})), "SwipeBetweenPages right");
}

TEST(SeveralFingers, OfTwoRecordsThatWantOneShapeTheFirstHasIt) {
    Stage stage;
    stage.choose("SwipeBetweenPages", "SwipeWithThreeFingers");
    EXPECT_EQ(whatIsDone(stage, together(kThree, {30, 0})), "SwipeBetweenPages right");
    stage.switchOff("SwipeBetweenPages");
    EXPECT_EQ(whatIsDone(stage, together(kThree, {30, 0})), "FullScreenApps right");
    std::swap(stage.record("SwipeBetweenPages"), stage.record("FullScreenApps"));
    stage.record("SwipeBetweenPages").isEnabled = true;
    EXPECT_EQ(whatIsDone(stage, together(kThree, {30, 0})), "FullScreenApps right");
}

TEST(SeveralFingers, ThreeAndFourSwipeInFourDirections) {
    Stage stage;
    EXPECT_EQ(whatIsDone(stage, together(kThree, {-30, 5})), "FullScreenApps left");
    EXPECT_EQ(whatIsDone(stage, together(kThree, {30, -5})), "FullScreenApps right");
    EXPECT_EQ(whatIsDone(stage, together(kThree, {5, -30})), "MissionControl up");
    EXPECT_EQ(whatIsDone(stage, together(kThree, {-5, 30})), "AppExpos\u00e9 down");
    stage.choose("FullScreenApps", "SwipeLeftOrRightWithFourFingers");
    stage.choose("MissionControl", "SwipeUpWithFourFingers");
    stage.choose("AppExpos\u00e9", "SwipeDownWithFourFingers");
    EXPECT_EQ(whatIsDone(stage, together(kFour, {-30, 5})), "FullScreenApps left");
    EXPECT_EQ(whatIsDone(stage, together(kFour, {30, -5})), "FullScreenApps right");
    EXPECT_EQ(whatIsDone(stage, together(kFour, {5, -30})), "MissionControl up");
    EXPECT_EQ(whatIsDone(stage, together(kFour, {-5, 30})), "AppExpos\u00e9 down");
}

TEST(SeveralFingers, ADiagonalSwipeHasNoDirection) { EXPECT_EQ(whatIsDone(Stage(), together(kThree, {25, 25})), ""); }

TEST(SeveralFingers, ASwipeIsPlayedWithItsOwnNumberOfFingers) {
    const std::string pad = only("pad", play(Stage(), together(kThree, {0, -30})));
    EXPECT_NE(pad.find("pad +0 -20,0 +1 0,0 +2 20,0\n"), std::string::npos) << pad;
    EXPECT_EQ(pad.find("+3"), std::string::npos) << pad;
}

TEST(SeveralFingers, ThumbAndThreeTogetherAndApart) {
    EXPECT_EQ(whatIsDone(Stage(), fromMiddle(kAround, 0.4)), "Launchpad");
    EXPECT_EQ(whatIsDone(Stage(), fromMiddle(kAround, 1.6)), "ShowDesktop");
}

/// A thumb and, `gap` millimetres farther from it than they are when a hand is closed, three fingers. Each goes so far
/// along the line from the one to the others.
std::string thumbAndThree(double gap, double thumb, double three, double end) {
    const touch::Point way{0.79, -0.61};
    std::vector<Stroke> fingers{{.from = {85, 75}, .to = touch::Point{85, 75} + way * thumb, .liftsAt = end}};
    for (const touch::Point from : {touch::Point{95, 44}, {107, 48}, {115, 58}}) {
        fingers.push_back({.from = from + way * gap, .to = from + way * (gap + three), .landsAt = 15, .liftsAt = end});
    }
    return strokes(fingers);
}

TEST(SeveralFingers, AThumbGoesLessFarThanTheThreeThatComeToItOrLeaveIt) {
    for (const double thumb : {0.0, 4.0, 8.0, 12.0, 20.0}) {
        for (const double end : {150.0, kEnd}) {
            EXPECT_EQ(whatIsDone(Stage(), thumbAndThree(35, thumb, -25, end)), "Launchpad") << thumb << " " << end;
            EXPECT_EQ(whatIsDone(Stage(), thumbAndThree(0, -thumb, 35, end)), "ShowDesktop") << thumb << " " << end;
        }
    }
}

TEST(SeveralFingers, TwoFromTheRightEdgeShowNotifications) {
    EXPECT_EQ(whatIsDone(Stage(), together({{195, 50}, {180, 70}}, {-40, 0})), "NotificationCenter left");
    EXPECT_EQ(whatIsDone(Stage(), together({{189, 50}, {180, 70}}, {-40, 0})), "Scroll left");
    Stage stage;
    stage.switchOff("NotificationCenter");
    EXPECT_EQ(whatIsDone(stage, together({{195, 50}, {180, 70}}, {-40, 0})), "Scroll left");
}

TEST(SeveralFingers, AtAnEdgeMayStartOneAfterAnother) {
    for (const double late : {8.0, 16.0, 40.0}) {
        const auto fingers = [late](std::vector<touch::Point> from, touch::Point way, double starts) {
            std::vector<Stroke> found;
            for (const touch::Point place : from) {
                found.push_back({.from = place,
                                 .to = place + way,
                                 .landsAt = found.empty() ? 0.0 : 10.0,
                                 .liftsAt = 600,
                                 .movesFrom = found.empty() ? starts + late : starts});
            }
            return strokes(found);
        };
        for (const double starts : {20.0, 130.0}) {
            EXPECT_EQ(whatIsDone(Stage(), fingers({{196, 50}, {180, 62}}, {-40, 0}, starts)), "NotificationCenter left")
                << late;
            EXPECT_EQ(whatIsDone(Stage(), fingers({{196, 50}, {195, 68}}, {-40, 0}, starts)), "NotificationCenter left")
                << late;
            EXPECT_EQ(whatIsDone(Stage(), fingers({{90, 116}, {110, 110}}, {0, -36}, starts)), "Scroll up") << late;
            EXPECT_EQ(whatIsDone(Stage(), fingers({{90, 116}, {110, 110}, {130, 112}}, {0, -36}, starts)),
                      "MissionControl up")
                << late;
        }
    }
}

TEST(SeveralFingers, AGestureThatIsOffIsNeverPlayedAndItsFingersPass) {
    Stage stage;
    stage.switchOff("ZoomInOrOut");
    const std::string output = play(stage, fromMiddle({{80, 60}, {120, 60}}, 2.0));
    EXPECT_EQ(gesturesIn(output), "");
    EXPECT_EQ(only("pad key pointer", output), "");
    EXPECT_NE(output.find("touch +1 120,60"), std::string::npos) << output;
    EXPECT_NE(output.find("~0 60,60 ~1 140,60"), std::string::npos) << output;
}

TEST(SeveralFingers, FingersThatNoEnabledGestureWantsPassAtOnce) {
    Stage stage;
    for (auto& record : stage.settings.gestures) record.isEnabled = false;
    stage.settings.gestures.push_back({.name = "Scroll", .descriptor = {"ScrollWithTwoFingers"}, .isEnabled = false});
    EXPECT_EQ(play(stage, "0: 1@30,40\n10: 1@30,40 2@50,40\n18: 1@32,41 2@50,42\n40: -"), lines(R"(
        0 touch +0 30,40
        10 touch +1 50,40
        18 touch ~0 32,41 ~1 50,42
        40 touch -0 -1
    )"));
}

TEST(SeveralFingers, FivePassAsTouches) {
    std::vector<touch::Point> five = kFour;
    five.push_back({150, 80});
    const std::string output = play(Stage(), together(five, {0, 30}));
    EXPECT_EQ(gesturesIn(output), "");
    EXPECT_NE(output.find("+4 150,80"), std::string::npos) << output;
}

TEST(SeveralFingers, AreOnlyOnWhereTheSystemsOwnSwitchIsOnToo) {
    Stage stage;
    stage.settings.switches.missionControl = false;
    EXPECT_EQ(whatIsDone(stage, together(kThree, {0, -30})), "");
    stage = Stage();
    stage.settings.switches.appExpose = false;
    EXPECT_EQ(whatIsDone(stage, together(kThree, {0, 30})), "");
    stage = Stage();
    stage.settings.switches.launchpad = false;
    EXPECT_EQ(whatIsDone(stage, fromMiddle(kAround, 0.4)), "");
    stage = Stage();
    stage.settings.switches.showDesktop = false;
    EXPECT_EQ(whatIsDone(stage, fromMiddle(kAround, 1.6)), "");
    stage = Stage();
    stage.settings.switches.swipeNavigateWithScrolls = false;
    EXPECT_EQ(whatIsDone(stage, together(kTwo, {-30, 0}, 250)), "Scroll left");
    stage.settings.switches.pagesNeedNoSwitch = true;
    EXPECT_EQ(whatIsDone(stage, together(kTwo, {-30, 0}, 250)), "SwipeBetweenPages left");
    stage.settings.switches.pagesNeedNoSwitch = false;
    stage.choose("SwipeBetweenPages", "SwipeWithThreeFingers");
    EXPECT_EQ(whatIsDone(stage, together(kThree, {-30, 0})), "SwipeBetweenPages left");
}

TEST(SeveralFingers, StayWhatTheyAreUntilAllAreUp) {
    // Two scroll, a third joins and all go sideways: still the scroll, which ends with its first finger.
    const std::string output = play(Stage(), strokes({
                                                 {.from = {90, 60}, .to = {90, 90}, .landsAt = 0, .liftsAt = 400},
                                                 {.from = {110, 60}, .to = {110, 90}, .landsAt = 0, .liftsAt = 300},
                                                 {.from = {130, 60}, .to = {60, 60}, .landsAt = 200, .liftsAt = 500},
                                             }));
    EXPECT_EQ(gesturesIn(output), "Scroll down");
    EXPECT_EQ(only("touch", output), "0 touch +0 90,60\n" + only("touch", output).substr(17));
    EXPECT_EQ(output.find("+1 130,60"), std::string::npos) << output;
}

TEST(SeveralFingers, AFlickThatIsOverBeforeItsFingersHaveSettledIsPlayedToItsEnd) {
    const std::string output =
        play(Stage(), strokes({{.from = {90, 60}, .to = {90, 85}, .landsAt = 0, .liftsAt = 70},
                               {.from = {110, 60}, .to = {110, 85}, .landsAt = 8, .liftsAt = 78},
                               {.from = {130, 60}, .to = {130, 85}, .landsAt = 8, .liftsAt = 78}}));
    EXPECT_EQ(gesturesIn(output), "AppExpos\u00e9 down");
    EXPECT_TRUE(output.ends_with("gesture AppExpos\u00e9 down ends\n")) << output;
    EXPECT_NE(output.find("pad -0 -1 -2"), std::string::npos) << output;
}

TEST(SeveralFingers, AFourthFingerThatLandsLateMakesItFour) {
    Stage stage;
    stage.choose("AppExpos\u00e9", "SwipeDownWithFourFingers");
    EXPECT_EQ(
        whatIsDone(stage,
                   strokes({{.from = {104, 27}, .to = {105, 72}, .landsAt = 0, .liftsAt = 560, .movesFrom = 70},
                            {.from = {33, 61}, .to = {35, 104}, .landsAt = 28, .liftsAt = 530, .movesFrom = 70},
                            {.from = {65, 29}, .to = {66, 74}, .landsAt = 28, .liftsAt = 540, .movesFrom = 70},
                            {.from = {160, 52}, .to = {162, 87}, .landsAt = 111, .liftsAt = 560, .movesFrom = 160}})),
        "AppExpos\u00e9 down");
}

TEST(SeveralFingers, WhatAFlickHasLeftToPlayIsPlayedThoughAFingerLands) {
    const std::string flick = "0: 1@90,60 2@110,60\n120: 1@90,61 2@110,61\n128: 1@90,85 2@110,85\n136: -\n";
    const std::string alone = only("pad gesture", play(Stage(), flick));
    EXPECT_TRUE(alone.ends_with(" pad -0 -1\n168 gesture Scroll down ends\n")) << alone;
    const std::string followed = play(Stage(), flick + "140: 3@50,50\n180: -");
    EXPECT_EQ(only("pad gesture", followed), alone);
    EXPECT_EQ(only("touch", followed), only("touch", play(Stage(), flick)) + "140 touch +0 50,50\n180 touch -0\n");
}

TEST(SeveralFingers, WhatAFlickHasLeftToPlayEndsWhereThePointerGoesElsewhere) {
    Stage stage;
    stage.settings.fingerMode = touch::FingerMode::Pointer;
    const std::string output = play(stage, "0: 1@90,60 2@110,60\n120: 1@90,61 2@110,61\n128: 1@90,85 2@110,85\n"
                                           "136: -\n140: 3@50,50\n150: -");
    EXPECT_TRUE(output.ends_with(lines(R"(
        150 pad -0 -1
        150 gesture Scroll down ends
        150 pointer 50,50
        150 pointer +left
        150 pointer -left
    )")))
        << output;
}

TEST(Rest, AHandThatHoldsTheEdgeIsTakenBackWhenAFingerMoves) {
    EXPECT_EQ(play(Stage(), "0: 1@4,60\n400: 1@4,60 2@100,60\n410: 1@4,60 2@100,63\n420: 1@4,60 2@100,66\n430: 1@4,60\n"
                            "900: -"),
              lines(R"(
        0 touch +0 4,60
        410 touch x0
        410 touch +1 100,60
        410 touch ~1 100,63
        420 touch ~1 100,66
        430 touch -1
    )"));
}

TEST(Rest, AFingerThatRestsWhileAnotherTapsLeavesTheTapATap) {
    EXPECT_EQ(
        play(Stage(), "0: 1@30,40\n400: 1@30,40 2@60,40\n470: 1@30,40\n600: 1@30,40 3@60,42\n660: 1@30,40\n900: -"),
        lines(R"(
        0 touch +0 30,40
        470 touch +1 60,40
        470 touch -1
        600 touch +1 60,42
        660 touch -1
        900 touch -0
    )"));
}

TEST(Rest, FingersThatTypeSlowlyOneBeforeTheOtherLiftsAreTwoTouches) {
    EXPECT_EQ(play(Stage(), "0: 1@30,90\n200: 1@30,90 2@150,90\n350: 2@150,90\n420: -"), lines(R"(
        0 touch +0 30,90
        350 touch +1 150,90
        350 touch -0
        420 touch -1
    )"));
}

TEST(Rest, AFingerThatComesToStayBesideAnotherIsPassed) {
    EXPECT_EQ(play(Stage(), "0: 1@30,40\n400: 1@30,40 2@60,40\n1000: -"), lines(R"(
        0 touch +0 30,40
        700 touch +1 60,40
        1000 touch -0 -1
    )"));
}

TEST(Rest, APalmAtTheEdgeTakesNoPartInAScroll) {
    const std::string output = play(
        Stage(), strokes({{.from = {3, 100}, .to = {3, 100}, .landsAt = 0, .liftsAt = 600},
                          {.from = {90, 60}, .to = {90, 90}, .landsAt = 30, .liftsAt = kEnd, .movesFrom = 150},
                          {.from = {110, 60}, .to = {110, 90}, .landsAt = 40, .liftsAt = kEnd, .movesFrom = 150}}));
    EXPECT_EQ(gesturesIn(output), "Scroll down");
    EXPECT_NE(output.find("pointer 100,60"), std::string::npos) << output;
}

TEST(Rest, APalmAtTheEdgeLeavesOneFingersDragADrag) {
    const std::string output =
        play(Stage(), strokes({{.from = {3, 100}, .to = {3, 100}, .landsAt = 0, .liftsAt = 600},
                               {.from = {90, 60}, .to = {90, 90}, .landsAt = 30, .liftsAt = kEnd, .movesFrom = 150}}));
    EXPECT_EQ(gesturesIn(output), "");
    EXPECT_NE(output.find("touch +1 90,60"), std::string::npos) << output;
    EXPECT_NE(output.find("touch ~1 90,90"), std::string::npos) << output;
}

TEST(Rest, APalmThatThePanelKnowsIsNothing) {
    EXPECT_EQ(play(Stage(), "0: 1@30,40p\n100: 1@30,50p\n200: -"), "");
    EXPECT_EQ(play(Stage(), "0: 1@30,40\n100: 1@30,40p\n200: -"), lines(R"(
        0 touch +0 30,40
        100 touch x0
    )"));
}

TEST(TakingBack, AFingerThatBecomesAGestureIsTakenBackWithoutATap) {
    const std::string output = play(Stage(), together(kThree, {0, -30}));
    EXPECT_TRUE(only("touch", output).starts_with("0 touch +0 80,60\n")) << output;
    EXPECT_NE(output.find("touch x0"), std::string::npos) << output;
    EXPECT_EQ(output.find("touch -0"), std::string::npos) << output;
}

TEST(TakingBack, NothingIsGivenThatWouldHaveToBeWhereItCannotBe) {
    for (const auto mode : {touch::FingerMode::Touch, touch::FingerMode::Pointer}) {
        Stage stage;
        stage.desktop.takesTouchesBack = false;
        stage.settings.fingerMode = mode;
        stage.switchOff("SmartZoom");
        EXPECT_EQ(only("touch", play(stage, together(kThree, {0, -30}))), "");
        EXPECT_EQ(play(stage, "0: 1@30,40\n80: 1@30,40 2@50,40\n150: -"), lines(R"(
            150 gesture SecondaryClick begins
            150 pointer 40,40
            150 pointer +right
            150 pointer -right
            150 gesture SecondaryClick ends
        )"));
    }
}

} // namespace
