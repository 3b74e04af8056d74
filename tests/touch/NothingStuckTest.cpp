#include "tests/touch/Script.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace std::chrono_literals;
using touching::gesturesIn;
using touching::lines;
using touching::only;
using touching::play;
using touching::Stage;
using touching::strokes;

TEST(NothingStuck, SwitchedOffUnderAFingerTakesItBack) {
    EXPECT_EQ(play(Stage(), "0: 1@30,40\n50: off\n60: 1@40,40\n70: -\n80: 2@30,40\n90: -"), lines(R"(
        0 touch +0 30,40
        50 touch x0
    )"));
}

TEST(NothingStuck, SwitchedOffUnderAFingerLiftsItWhereItCannotBeTakenBack) {
    Stage stage;
    stage.desktop.takesTouchesBack = false;
    EXPECT_EQ(play(stage, "0: 1@30,40\n90: 1@40,40\n100: off\n110: -"), lines(R"(
        80 touch +0 30,40
        90 touch ~0 40,40
        100 touch -0
    )"));
}

TEST(NothingStuck, SwitchedOffUnderAButtonLiftsIt) {
    Stage stage;
    stage.settings.longPress = 500ms;
    EXPECT_EQ(only("pointer", play(stage, "0: 1@30,40\n600: 1@30,40\n700: off\n800: -")), lines(R"(
        500 pointer 30,40
        500 pointer +right
        700 pointer -right
    )"));
}

TEST(NothingStuck, SwitchedOffInAGestureEndsIt) {
    EXPECT_EQ(
        only("pad gesture",
             play(Stage(), "0: 1@90,60 2@110,60\n120: 1@90,61 2@110,61\n130: 1@90,66 2@110,66\n140: off\n150: -")),
        lines(R"(
        130 gesture Scroll down begins
        130 pad +0 -10,0 +1 10,0
        138 pad ~0 -10,-5 ~1 10,-5
        140 pad -0 -1
        140 gesture Scroll down ends
    )"));
}

TEST(NothingStuck, SwitchedOffForgetsATapOfTwoThatWaits) {
    EXPECT_EQ(only("gesture pointer", play(Stage(), "0: 1@30,40 2@50,40\n100: -\n200: off\n300: on")), "");
}

TEST(NothingStuck, SwitchedOffForgetsATapThatIsHeldBack) {
    Stage stage;
    stage.settings.doubleClickRate = 100ms;
    EXPECT_EQ(play(stage, "0: 1@30,40\n60: -\n200: 2@30,40\n250: -\n300: off\n301: on"), lines(R"(
        0 touch +0 30,40
        60 touch -0
    )"));
}

TEST(NothingStuck, FingersThatAreDownWhenItIsSwitchedOnCountForNothingUntilTheyLift) {
    EXPECT_EQ(play(Stage(), "0: off\n10: 1@30,40\n20: on\n30: 1@40,40\n40: 1@40,40 2@60,60\n50: 1@40,40\n60: -\n"
                            "70: 3@30,40\n80: -"),
              lines(R"(
        40 touch +0 60,60
        50 touch -0
        70 touch +0 30,40
        80 touch -0
    )"));
}

TEST(NothingStuck, AClockThatStands) {
    EXPECT_EQ(play(Stage(), "0: 1@30,40\n0: 1@30,42\n0: -\n0: 2@50,60\n0: -"), lines(R"(
        0 touch +0 30,40
        0 touch ~0 30,42
        0 touch -0
        0 touch +0 50,60
        0 touch -0
    )"));
}

TEST(NothingStuck, AClockThatGoesBack) {
    EXPECT_EQ(play(Stage(), "100: 1@30,40\n50: 1@30,44\n20: -\n10: 2@90,60\n5: -"), lines(R"(
        100 touch +0 30,40
        100 touch ~0 30,44
        100 touch -0
        100 touch +0 90,60
        100 touch -0
    )"));
}

TEST(NothingStuck, AnIdThatIsUsedAgainInOneFrameIsAnotherFinger) {
    // The slot ends one contact and begins another between two reports.
    EXPECT_EQ(play(Stage(), "0: 1@30,40\n20: 2@90,60\n40: -"), lines(R"(
        0 touch +0 30,40
        20 touch -0
        20 touch +0 90,60
        40 touch -0
    )"));
}

TEST(NothingStuck, TwoContactsOfOneIdAreOne) {
    EXPECT_EQ(play(Stage(), "0: 1@30,40 1@90,60\n20: -"), lines(R"(
        0 touch +0 30,40
        20 touch -0
    )"));
}

TEST(NothingStuck, SixteenFingersComeAndGo) {
    std::string all;
    std::string down = "0 touch";
    std::string up;
    for (int i = 0; i < 16; ++i) {
        const std::string place = std::to_string(10 + 10 * i) + ",60";
        all += " " + std::to_string(i + 1) + "@" + place;
        if (i > 0) down += " +" + std::to_string(i) + " " + place;
        up += " -" + std::to_string(i);
    }
    Stage stage;
    for (auto& record : stage.settings.gestures) record.isEnabled = false;
    EXPECT_EQ(play(stage, "0:" + all + "\n100:" + all + "\n200: -"),
              "0 touch +0 10,60\n" + down + "\n200 touch" + up + "\n");
}

TEST(NothingStuck, MoreFingersThanAreFollowedAreNotThere) {
    touching::Transcript transcript({200, 120});
    touch::TouchDisplay display({200, 120}, transcript, [&](touch::Fault fault) { transcript.fault(fault); });
    touch::Frame first{.time = 0ms, .contacts = {}};
    for (std::int32_t i = 0; i < 16; ++i) first.contacts.add({i, {10.0 * i, 60}, false});
    EXPECT_FALSE(first.contacts.add({16, {1, 1}, false}));
    display.frame(first);
    // All sixteen change places with others at once.
    touch::Frame second{.time = 8ms, .contacts = {}};
    for (std::int32_t i = 0; i < 16; ++i) second.contacts.add({i + 100, {10.0 * i, 70}, false});
    display.frame(second);
    display.frame({.time = 16ms, .contacts = {}});
    while (display.deadline()) display.timeout(*display.deadline());
}

TEST(NothingStuck, APlaceThatIsNoNumberIsNoContact) {
    touching::Transcript transcript({200, 120});
    touch::TouchDisplay display({200, 120}, transcript, [&](touch::Fault fault) { transcript.fault(fault); });
    for (const double value : {std::nan(""), std::numeric_limits<double>::infinity()}) {
        touch::Frame frame{.time = 0ms, .contacts = {}};
        frame.contacts.add({1, {value, 60}, false});
        display.frame(frame);
    }
    EXPECT_EQ(transcript.text(), "");
}

TEST(NothingStuck, AContactThatIsNowhereIsNone) {
    Stage stage;
    touching::Transcript transcript(stage.glass);
    touch::TouchDisplay display(stage.glass, transcript, [&](touch::Fault fault) { transcript.fault(fault); });
    for (int i = 0; i < 20; ++i) {
        display.frame({.time = 8ms * i, .contacts = {}});
        touch::Frame frame{.time = 8ms * i + 4ms, .contacts = {}};
        frame.contacts.add({1, {1e300, -1e300}, false});
        frame.contacts.add({2, {-1e300 / (i + 1), 1e200 * i}, false});
        display.frame(frame);
    }
    EXPECT_EQ(transcript.text(), "");
}

TEST(NothingStuck, FramesOutsideThePanelStayOnTheScreen) {
    EXPECT_EQ(play(Stage(), "0: 1@-30,-40\n60: 1@-20,-40\n120: 1@100,60\n180: -").substr(0, 16), "0 touch +0 0,0\n6");
}

TEST(NothingStuck, AContactThatJumpsIsTwoFingersAndNoTap) {
    EXPECT_EQ(play(Stage(), "0: 1@30,40\n8: 1@150,100\n40: 1@150,101\n80: -"), lines(R"(
        0 touch +0 30,40
        8 touch x0
        8 touch +0 150,100
        40 touch ~0 150,101
        80 touch -0
    )"));
}

TEST(NothingStuck, AContactThatGoesFarInALongTimeDoesNotJump) {
    EXPECT_EQ(play(Stage(), "0: 1@30,40\n100: 1@150,100\n180: -"), lines(R"(
        0 touch +0 30,40
        100 touch ~0 150,100
        180 touch -0
    )"));
}

TEST(NothingStuck, AJumpEndsAGestureAndWhatTheHandDoesThen) {
    const std::string output = play(Stage(), "0: 1@90,60 2@110,60\n120: 1@90,61 2@110,61\n130: 1@90,66 2@110,66\n"
                                             "138: 1@90,67 2@10,10\n150: 1@90,70 2@12,20\n200: -");
    EXPECT_EQ(gesturesIn(output), "Scroll down");
    EXPECT_NE(output.find("146 pad -0 -1\n146 gesture Scroll down ends"), std::string::npos) << output;
    EXPECT_TRUE(output.ends_with("ends\n")) << output;
}

TEST(NothingStuck, TwoAtAnEdgeThatComeBackToWhereTheyLandedEndTheirGesture) {
    // The first step is the panel's; from where it led they go far enough, and yet stay near to where they landed.
    const std::string output = play(Stage(), "0: 1@2,50 2@2,80\n110: 1@2,52 2@2,82\n120: 1@2,49 2@2,79\n200: -");
    EXPECT_EQ(gesturesIn(output), "Scroll up");
    EXPECT_TRUE(output.ends_with("pad -0 -1\n200 gesture Scroll up ends\n")) << output;
}

TEST(NothingStuck, SettingsThatChangeInAGestureCountFromTheNextFingerOn) {
    Stage stage;
    touching::Transcript transcript(stage.glass);
    touch::TouchDisplay display(stage.glass, transcript, [&](touch::Fault fault) { transcript.fault(fault); });
    display.setSettings(stage.settings);
    const auto frame = [&](touch::Time at, double y) {
        touch::Frame fingers{.time = at, .contacts = {}};
        for (std::int32_t i = 0; i < 3; ++i) fingers.contacts.add({i, {80.0 + 20.0 * i, y}, false});
        display.frame(fingers);
    };
    const auto swipe = [&](touch::Time at, bool switchesOff) {
        frame(at, 60);
        frame(at + 110ms, 61);
        if (switchesOff) {
            stage.switchOff("AppExpos\u00e9");
            display.setSettings(stage.settings);
        }
        frame(at + 120ms, 75);
        frame(at + 150ms, 80);
        display.frame({.time = at + 160ms, .contacts = {}});
        while (display.deadline()) display.timeout(*display.deadline());
    };
    swipe(0ms, true);
    EXPECT_EQ(gesturesIn(transcript.text()), "AppExpos\u00e9 down");
    swipe(1s, false);
    EXPECT_EQ(gesturesIn(transcript.text()), "AppExpos\u00e9 down");
}

TEST(NothingStuck, SettingsThatChangeWhileTapsAreHeldBackCountFromTheNextFingerOn) {
    Stage stage;
    stage.settings.doubleClickRate = 100ms;
    stage.switchOff("SmartZoom");
    touching::Transcript transcript(stage.glass);
    touch::TouchDisplay display(stage.glass, transcript, [&](touch::Fault fault) { transcript.fault(fault); });
    display.setSettings(stage.settings);
    const auto tap = [&](touch::Time at, std::int32_t fingers) {
        touch::Frame frame{.time = at, .contacts = {}};
        for (std::int32_t i = 0; i < fingers; ++i) frame.contacts.add({i, {30.0 + 20.0 * i, 40.0}, false});
        display.frame(frame);
        display.frame({.time = at + 30ms, .contacts = {}});
    };
    tap(0ms, 1);
    tap(150ms, 1);
    tap(200ms, 2);
    EXPECT_EQ(only("gesture", transcript.text()), "") << "all of it waits until 410 ms";
    stage.switchOff("SecondaryClick");
    display.setSettings(stage.settings);
    tap(300ms, 2);
    while (display.deadline()) display.timeout(*display.deadline());
    EXPECT_EQ(gesturesIn(transcript.text()), "SecondaryClick");
}

TEST(NothingStuck, ATapOfTwoThatWaitsIsStillGivenWhereItIsSwitchedOffMeanwhile) {
    Stage stage;
    touching::Transcript transcript(stage.glass);
    touch::TouchDisplay display(stage.glass, transcript, [&](touch::Fault fault) { transcript.fault(fault); });
    display.setSettings(stage.settings);
    const auto tap = [&](touch::Time at) {
        touch::Frame fingers{.time = at, .contacts = {}};
        fingers.contacts.add({1, {30, 40}, false});
        fingers.contacts.add({2, {50, 40}, false});
        display.frame(fingers);
        display.frame({.time = at + 50ms, .contacts = {}});
    };
    tap(0ms);
    stage.switchOff("SecondaryClick");
    display.setSettings(stage.settings);
    display.frame({.time = 100ms, .contacts = {}});
    EXPECT_EQ(gesturesIn(transcript.text()), "");
    tap(2s);
    while (display.deadline()) display.timeout(*display.deadline());
    EXPECT_EQ(gesturesIn(transcript.text()), "SecondaryClick");
    stage.record("SecondaryClick").isEnabled = true;
    display.setSettings(stage.settings);
    tap(4s);
    stage.switchOff("SecondaryClick");
    display.setSettings(stage.settings);
    tap(4s + 200ms);
    while (display.deadline()) display.timeout(*display.deadline());
    EXPECT_EQ(gesturesIn(transcript.text()), "SecondaryClick, SecondaryClick");
}

TEST(NothingStuck, AListOfGesturesThatIsDamagedWantsNothingOfWhatIsDamaged) {
    Stage stage;
    stage.settings.gestures = {
        {.name = "MissionControl", .descriptor = {"SwipeUpWithThreeFingers"}, .selectedIndex = 7},
        {.name = "MissionControl", .descriptor = {"SwipeUpWithThreeFingers"}, .selectedIndex = -1},
        {.name = "MissionControl", .descriptor = {}},
        {.name = "Unheard", .descriptor = {"SwipeUpWithThreeFingers"}},
        {.name = "LookUp", .descriptor = {"SwipeUpWithThreeFingers"}},
        {.name = "AppExpose\u0301", .descriptor = {"SwipeDownWithThreeFingers"}},
    };
    const auto swipe = [](double way) {
        return strokes({{.from = {80, 60}, .to = {80, 60 + way}, .landsAt = 0, .liftsAt = 400, .movesFrom = 120},
                        {.from = {100, 60}, .to = {100, 60 + way}, .landsAt = 0, .liftsAt = 400, .movesFrom = 120},
                        {.from = {120, 60}, .to = {120, 60 + way}, .landsAt = 0, .liftsAt = 400, .movesFrom = 120}});
    };
    EXPECT_EQ(gesturesIn(play(stage, swipe(-30))), "");
    EXPECT_EQ(gesturesIn(play(stage, swipe(30))), "");
}

/// Puts down more than it lifts, and lifts more than it put down.
TEST(Guard, LetsNoReleaseWithoutPressAndNoSecondPressPast) {
    using Kind = touch::Output::Kind;
    touching::Transcript transcript({200, 120});
    touch::Judge judge(transcript, [&](touch::Fault fault) { transcript.fault(fault); });
    touch::Guard guard(judge);
    const auto give = [&](Kind kind, std::int32_t number) {
        guard.give({.kind = kind, .number = number, .endsFrame = true}, 0ms);
    };
    for (const std::int32_t number : {0, 15, 16, -1, 1000}) {
        give(Kind::TouchUp, number);
        give(Kind::TouchMove, number);
        give(Kind::TouchDown, number);
        give(Kind::TouchDown, number);
    }
    for (const std::int32_t key : {30, 30, 0, -5}) give(Kind::KeyDown, key);
    give(Kind::KeyUp, 31);
    give(Kind::ButtonUp, 1);
    give(Kind::ButtonDown, 1);
    give(Kind::PadMove, 0);
    give(Kind::PadDown, 3);
    EXPECT_TRUE(guard.isAnythingDown());
    EXPECT_EQ(transcript.text(), lines(R"(
        0 touch +0 0,0
        0 touch +15 0,0
        0 key +30
        0 pointer +right
        0 pad +3 -800,-800
    )"));
    guard.liftAll(true, 5ms);
    EXPECT_FALSE(guard.isAnythingDown());
    EXPECT_TRUE(transcript.text().ends_with("5 touch x0 x15\n5 pointer -right\n5 pad -3\n5 key -30\n"))
        << transcript.text();
    judge.expectNothingDown();
}

TEST(Guard, EndsAFrameWhoseLastStepDoesNotPass) {
    using Kind = touch::Output::Kind;
    touching::Transcript transcript({200, 120});
    touch::Judge judge(transcript, [&](touch::Fault fault) { transcript.fault(fault); });
    touch::Guard guard(judge);
    guard.give({.kind = Kind::TouchDown, .number = 0}, 0ms);
    guard.give({.kind = Kind::TouchMove, .number = 4, .endsFrame = true}, 0ms);
    EXPECT_EQ(transcript.text(), "0 touch +0 0,0\n");
    guard.liftAll(false, 1ms);
    judge.expectNothingDown();
}

/// What a judge says of a stream.
std::vector<touch::Fault> faultsOf(const std::vector<touch::Output>& outputs, bool endsThere = false) {
    std::vector<touch::Fault> faults;
    touching::Transcript transcript({1, 1});
    const touch::FaultHandler note = [&](touch::Fault fault) { faults.push_back(fault); };
    touch::Judge judge(transcript, note);
    judge.setGestures(touch::GestureChoice(touching::newestGestures(), {}));
    for (const touch::Output& output : outputs) judge.give(output, 0ms);
    if (endsThere) judge.expectNothingDown();
    return faults;
}

TEST(Judge, NamesEveryBreakOfTheGrammar) {
    using Kind = touch::Output::Kind;
    using touch::Fault;
    using touch::Gesture;
    using touch::Shape;
    const touch::Output down{.kind = Kind::TouchDown, .number = 0, .endsFrame = true};
    EXPECT_EQ(faultsOf({down, down}), std::vector{Fault::DownTwice});
    EXPECT_EQ(faultsOf({{.kind = Kind::KeyUp, .number = 30, .endsFrame = true}}), std::vector{Fault::UpWithoutDown});
    EXPECT_EQ(faultsOf({{.kind = Kind::PadMove, .number = 0, .endsFrame = true}}), std::vector{Fault::MoveWithoutDown});
    EXPECT_EQ(faultsOf({{.kind = Kind::TouchDown, .number = 0}, {.kind = Kind::PointerMove, .endsFrame = true}}),
              std::vector{Fault::FrameOfTwoDevices});
    EXPECT_EQ(faultsOf({down}, true), std::vector{Fault::LeftDown});
    EXPECT_EQ(faultsOf({{.kind = Kind::PointerMove}}, true), std::vector{Fault::FrameLeftOpen});
    EXPECT_EQ(faultsOf({{.kind = Kind::PointerMove, .at = {1.01, 0}, .endsFrame = true}}),
              std::vector{Fault::NotANumber});
    EXPECT_EQ(faultsOf({{.kind = Kind::PointerMove, .at = {std::nan(""), 0}, .endsFrame = true}}),
              std::vector{Fault::NotANumber});
    const touch::Output zoom{
        .kind = Kind::GestureBegin, .gesture = Gesture::ZoomInOrOut, .shape = Shape::PinchWithTwo, .endsFrame = true};
    EXPECT_EQ(faultsOf({zoom, zoom}), std::vector{Fault::SecondGesture});
    touch::Output end = zoom;
    end.kind = Kind::GestureEnd;
    EXPECT_EQ(faultsOf({end}), std::vector{Fault::EndWithoutGesture});
    touch::Output wrong = zoom;
    wrong.gesture = Gesture::Rotate;
    EXPECT_EQ(faultsOf({wrong}), std::vector{Fault::UnwantedGesture});
    EXPECT_EQ(faultsOf({zoom, end}, true), std::vector<Fault>{});
}

} // namespace
