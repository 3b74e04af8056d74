#include "linux/EvdevDisplay.h"

#include "linux/PollRunLoop.h"
#include "support/EventNode.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <sstream>
#include <string>

namespace {

using support::EventNode;

std::int64_t now() {
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// Writes down what a panel does: "held", "free", "gone", and each report as its contacts.
class Diary final : public touch::Panel::Listener {
public:
    void panelIsHeld(touch::Time /*now*/) override { text_ << "held\n"; }
    void panelIsFree(touch::Time /*now*/) override { text_ << "free\n"; }
    void panelReported(const touch::Frame& frame) override {
        text_ << "report";
        for (const touch::Contact& contact : frame.contacts) {
            text_ << " " << contact.id << "@" << contact.place.x << "," << contact.place.y;
            if (contact.isPalm) text_ << "palm";
        }
        text_ << "\n";
    }
    void panelIsGone() override { text_ << "gone\n"; }
    [[nodiscard]] std::string text() const { return text_.str(); }

private:
    std::ostringstream text_;
};

/// A panel whose next report is there before the last one has been dealt with.
class Endless final : public touch::Panel::Listener {
public:
    static constexpr std::int32_t kMost = 5000;

    explicit Endless(EventNode& node) : node_(node) {}
    void panelIsHeld(touch::Time /*now*/) override {}
    void panelIsFree(touch::Time /*now*/) override {}
    void panelReported(const touch::Frame& /*frame*/) override {
        if (++reports_ > kMost) return;
        node_.touch(0, 7, 100 + reports_ % 1000, 200);
        node_.report(now());
    }
    void panelIsGone() override {}
    [[nodiscard]] std::int32_t reports() const { return reports_; }

private:
    EventNode& node_;
    std::int32_t reports_ = 0;
};

class EvdevDisplayTest : public testing::Test {
protected:
    void open() {
        file = node.open();
        display = kelvo::EvdevDisplay::open(loop, kelvo::Descriptor(file), diary);
        ASSERT_TRUE(display);
    }
    /// Lets the display read whatever there is.
    void read() {
        bool isOver = false;
        // The watches of a turn come before a timer that is scheduled in it.
        loop.scheduleTimer(0.0, [&] { loop.scheduleTimer(0.0, [&] { isOver = true; }); });
        loop.runUntil([&] { return isOver; }, 10.0);
    }
    void report() {
        node.report(now());
        read();
    }

    kelvo::PollRunLoop loop;
    EventNode node{EventNode::panel()};
    Diary diary;
    int file = -1;
    std::unique_ptr<kelvo::EvdevDisplay> display;
};

TEST_F(EvdevDisplayTest, APanelSaysWhatItIs) {
    open();
    const touch::PanelDescription& panel = display->description();
    EXPECT_EQ(panel.name, "Panel");
    EXPECT_EQ(panel.vendor, 0x04f3);
    EXPECT_EQ(panel.product, 0x0732);
    EXPECT_EQ(panel.slots, 10U);
    EXPECT_EQ(panel.x.maximum, 2000);
    EXPECT_EQ(panel.x.resolution, 10);
    EXPECT_EQ(display->size(), (touch::Size{200.0, 100.0}));
}

TEST_F(EvdevDisplayTest, APanelThatIsNotWantedIsLeftAlone) {
    open();
    node.touch(0, 1, 100, 200);
    report();
    EXPECT_EQ(diary.text(), "");
    EXPECT_EQ(node.grabs, 0);
}

TEST_F(EvdevDisplayTest, FingersOnAHeldPanelAreReportedInMillimetres) {
    open();
    display->setHeld(true);
    node.touch(0, 7, 100, 200);
    node.touch(1, 8, 1000, 500);
    report();
    node.lift(0);
    report();
    EXPECT_EQ(diary.text(), "held\nreport 7@10,20 8@100,50\nreport 8@100,50\n");
    EXPECT_EQ(node.grabber(), file);
}

TEST_F(EvdevDisplayTest, APanelThatReportsFasterThanItIsReadLeavesTheProgramItsOtherTurns) {
    Endless endless(node);
    display = kelvo::EvdevDisplay::open(loop, kelvo::Descriptor(node.open()), endless);
    ASSERT_TRUE(display);
    display->setHeld(true);
    node.touch(0, 7, 100, 200);
    node.report(now());
    read();
    EXPECT_GT(endless.reports(), 0);
    EXPECT_LT(endless.reports(), Endless::kMost);
    loop.runUntil([&] { return endless.reports() > Endless::kMost; }, 60.0);
    EXPECT_GT(endless.reports(), Endless::kMost);
}

TEST_F(EvdevDisplayTest, APalmIsSaidToBeOne) {
    open();
    display->setHeld(true);
    node.touch(0, 7, 100, 200);
    node.send(EV_ABS, ABS_MT_TOOL_TYPE, 2);
    report();
    EXPECT_EQ(diary.text(), "held\nreport 7@10,20palm\n");
}

TEST_F(EvdevDisplayTest, APanelIsHeldOnceTheFingersAreLiftedThatWereThereBefore) {
    node.touch(0, 7, 100, 200);
    node.touch(1, 8, 300, 200);
    node.report(now());
    open();
    display->setHeld(true);
    EXPECT_EQ(node.grabs, 0);
    node.lift(0);
    report();
    EXPECT_EQ(node.grabs, 0);
    node.lift(1);
    report();
    EXPECT_EQ(diary.text(), "held\n");
}

TEST_F(EvdevDisplayTest, AFingerThatLandsWhileThePanelIsBeingTakenKeepsItFree) {
    open();
    node.meanwhile = [&] {
        node.touch(0, 7, 100, 200);
        node.report(now());
    };
    display->setHeld(true);
    EXPECT_LT(node.grabber(), 0);
    EXPECT_EQ(diary.text(), "");
    read();
    EXPECT_EQ(diary.text(), "");
    node.lift(0);
    report();
    EXPECT_EQ(diary.text(), "held\n");
}

TEST_F(EvdevDisplayTest, WhatEverybodySawIsNotReported) {
    open();
    node.touch(0, 7, 100, 200);
    node.report(now());
    node.lift(0);
    node.report(now());
    display->setHeld(true);
    read();
    EXPECT_EQ(diary.text(), "held\n");
}

TEST_F(EvdevDisplayTest, APanelIsGivenUpOnceAllFingersAreLifted) {
    open();
    display->setHeld(true);
    node.touch(0, 7, 100, 200);
    report();
    display->setHeld(false);
    EXPECT_EQ(node.grabber(), file);
    node.lift(0);
    report();
    EXPECT_LT(node.grabber(), 0);
    EXPECT_EQ(diary.text(), "held\nreport 7@10,20\nreport\nfree\n");
}

TEST_F(EvdevDisplayTest, AFingerThatLandsWhileThePanelIsBeingGivenUpKeepsItHeld) {
    open();
    display->setHeld(true);
    node.meanwhile = [&] { node.touch(0, 7, 100, 200); };
    display->setHeld(false);
    EXPECT_EQ(node.grabber(), file);
    node.lift(0);
    report();
    EXPECT_LT(node.grabber(), 0);
    EXPECT_EQ(diary.text(), "held\nreport\nfree\n");
}

TEST_F(EvdevDisplayTest, APanelThatIsWantedAgainBeforeItWasGivenUpStaysHeld) {
    open();
    display->setHeld(true);
    node.touch(0, 7, 100, 200);
    report();
    display->setHeld(false);
    display->setHeld(true);
    node.lift(0);
    report();
    EXPECT_EQ(node.grabber(), file);
    EXPECT_EQ(diary.text(), "held\nreport 7@10,20\nreport\n");
}

TEST_F(EvdevDisplayTest, ADisplayThatGoesGivesUpItsPanelThoughTheFileIsOpenElsewhere) {
    open();
    display->setHeld(true);
    display.reset();
    EXPECT_LT(node.grabber(), 0);
    EXPECT_EQ(node.grabs, 2);
}

TEST_F(EvdevDisplayTest, APanelThatAnotherProgramHoldsIsSaidToBe) {
    open();
    const kelvo::Descriptor another(node.open());
    node.grabAs(another.number());
    display->setHeld(true);
    EXPECT_TRUE(display->isHeldByAnother());
    EXPECT_EQ(diary.text(), "");
    node.grabAs(-1);
    display->setHeld(false);
    display->setHeld(true);
    EXPECT_FALSE(display->isHeldByAnother());
    EXPECT_EQ(diary.text(), "held\n");
}

TEST_F(EvdevDisplayTest, ContactsThatVanishedWhileEventsWereLostEnd) {
    open();
    display->setHeld(true);
    node.touch(0, 7, 100, 200);
    node.touch(1, 8, 1000, 500);
    report();
    node.lift(0);
    node.touch(1, 8, 1010, 510);
    node.loseEvents(now());
    read();
    // That the one has vanished may come in a report of its own.
    std::string text = diary.text();
    const std::string before = "held\nreport 7@10,20 8@100,50\n";
    ASSERT_TRUE(text.starts_with(before)) << text;
    text.erase(0, before.size());
    EXPECT_EQ(text.find("7@"), std::string::npos) << text;
    EXPECT_TRUE(text.ends_with("report 8@101,51\n")) << text;
}

TEST_F(EvdevDisplayTest, AFingerThatWasLiftedAndLaidDownWhileEventsWereLostIsAnother) {
    open();
    display->setHeld(true);
    node.touch(0, 7, 100, 200);
    report();
    node.lift(0);
    node.touch(0, 8, 500, 500);
    node.loseEvents(now());
    read();
    const std::string text = diary.text();
    EXPECT_TRUE(text.starts_with("held\nreport 7@10,20\n")) << text;
    EXPECT_TRUE(text.ends_with("report 8@50,50\n")) << text;
    EXPECT_EQ(text.find("7@50,50"), std::string::npos) << text;
}

TEST_F(EvdevDisplayTest, ASignalInBetweenLosesNothing) {
    open();
    display->setHeld(true);
    node.interruptReading();
    node.touch(0, 7, 100, 200);
    report();
    EXPECT_EQ(diary.text(), "held\nreport 7@10,20\n");
}

TEST_F(EvdevDisplayTest, APanelThatIsUnpluggedUnderAFingerIsGone) {
    open();
    display->setHeld(true);
    node.touch(0, 7, 100, 200);
    report();
    node.touch(0, 7, 110, 200);
    node.report(now());
    node.unplug();
    read();
    EXPECT_EQ(diary.text(), "held\nreport 7@10,20\ngone\n");
}

TEST_F(EvdevDisplayTest, APanelWhoseRightIsTakenAwayIsGone) {
    open();
    display->setHeld(true);
    ASSERT_EQ(node.answerIoctl(file, EVIOCREVOKE, nullptr), 0);
    read();
    EXPECT_EQ(diary.text(), "held\ngone\n");
}

/// Whether a node with these traits is taken for a touch display.
bool isTaken(const EventNode::Device& device) {
    kelvo::PollRunLoop loop;
    Diary diary;
    EventNode node(device);
    return kelvo::EvdevDisplay::open(loop, kelvo::Descriptor(node.open()), diary) != nullptr;
}

TEST(ANodeIsNoTouchDisplay, WithoutSlots) {
    auto device = EventNode::panel();
    device.axes.erase(ABS_MT_SLOT);
    EXPECT_FALSE(isTaken(device));
}

TEST(ANodeIsNoTouchDisplay, IfFingersDoNotTouchWhatTheyMean) {
    auto device = EventNode::panel();
    device.properties = {INPUT_PROP_POINTER};
    EXPECT_FALSE(isTaken(device));
}

TEST(ANodeIsNoTouchDisplay, WithoutPlaces) {
    for (const unsigned axis : {0U + ABS_MT_POSITION_X, 0U + ABS_MT_POSITION_Y}) {
        auto device = EventNode::panel();
        device.axes.erase(axis);
        EXPECT_FALSE(isTaken(device)) << axis;
    }
}

TEST(ANodeIsNoTouchDisplay, IfItIsOurOwn) {
    auto device = EventNode::panel();
    device.phys = "kelvo-touch/1/touch-screen";
    EXPECT_FALSE(isTaken(device));
}

TEST(ANodeIsNoTouchDisplay, IfItIsAMouseThatTheDisplayHasBesides) {
    auto device = EventNode::panel();
    device.properties = {};
    device.keys = {BTN_LEFT};
    device.axes = {{ABS_X, {}}, {ABS_Y, {}}};
    EXPECT_FALSE(isTaken(device));
}

TEST(AFile, IsNoTouchDisplayWhenItIsNoEventNode) {
    kelvo::PollRunLoop loop;
    Diary diary;
    EXPECT_FALSE(kelvo::EvdevDisplay::open(loop, kelvo::Descriptor(), diary));
}

TEST(APanelThatSaysNoSize, HasTheOneThatIsKnownOfIt) {
    auto device = EventNode::panel();
    device.axes[ABS_MT_POSITION_X].resolution = 0;
    kelvo::PollRunLoop loop;
    Diary diary;
    EventNode node(device);
    const auto display =
        kelvo::EvdevDisplay::open(loop, kelvo::Descriptor(node.open()), diary, touch::Size{300.0, 150.0});
    ASSERT_TRUE(display);
    EXPECT_EQ(display->size(), (touch::Size{300.0, 150.0}));
}

} // namespace
