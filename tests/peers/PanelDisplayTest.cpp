#include "peers/driver/PanelDisplay.h"

#include "linux/PollRunLoop.h"
#include "peers/PeerPlatform.h"
#include "support/FakePanel.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace {

using kelvo::PanelDisplay;
using touch::Output;

touch::Time now() {
    return std::chrono::duration_cast<touch::Time>(std::chrono::steady_clock::now().time_since_epoch());
}

/// Keeps the kinds of what is given out.
class Kinds final : public touch::Outputs {
public:
    explicit Kinds(std::vector<Output::Kind>& kinds) : kinds_(kinds) {}
    void give(const Output& output, touch::Time /*now*/) override { kinds_.push_back(output.kind); }

private:
    std::vector<Output::Kind>& kinds_;
};

class PanelDisplayTest : public testing::Test {
protected:
    PanelDisplayTest() {
        display = PanelDisplay::open(
            [this](touch::Panel::Listener& listener) {
                auto opened = std::make_unique<support::FakePanel>(listener);
                panel = opened.get();
                return opened;
            },
            std::make_unique<Kinds>(given),
            {[this] { told += "hand "; },
             [this](const kelvo::ContactFrame& frame) {
                 told += "watched " + std::to_string(frame.contacts.size()) + " ";
                 last = frame;
             },
             [this](touch::Gesture gesture, touch::Direction) {
                 told += "called " + std::string(nameOf(gesture)) + " ";
             },
             [this] {
                 told += "gone ";
                 display.reset();
             }});
        // One finger is the pointer, whose button is seen as soon as it moves.
        touch::Settings settings;
        settings.fingerMode = touch::FingerMode::Pointer;
        display->setSettings(settings);
    }

    void finger(double x, double y) {
        touch::Frame frame;
        frame.time = now();
        frame.contacts.add({1, {x, y}});
        panel->report(frame);
    }
    void palm() {
        touch::Frame frame;
        frame.time = now();
        frame.contacts.add({1, {50.0, 50.0}, true});
        panel->report(frame);
    }
    void lift() { panel->report({.time = now(), .contacts = {}}); }
    void drag() {
        finger(50.0, 50.0);
        for (double x = 51.0; x < 90.0; x += 2.0) finger(x, 50.0);
    }
    [[nodiscard]] bool wasGiven(Output::Kind kind) const {
        return std::find(given.begin(), given.end(), kind) != given.end();
    }

    kelvo::PollRunLoop loop;
    kelvo::PeerPlatform services{"panel-display-test", loop};
    std::vector<Output::Kind> given;
    std::string told;
    kelvo::ContactFrame last;
    support::FakePanel* panel = nullptr;
    std::unique_ptr<PanelDisplay> display;
};

TEST_F(PanelDisplayTest, ADisplayThatIsOffLeavesItsPanelToEverybody) {
    EXPECT_EQ(display->state(), PanelDisplay::State::Off);
    EXPECT_FALSE(panel->isWanted);
}

TEST_F(PanelDisplayTest, FingersOnAHeldPanelAreGivenOut) {
    display->setEnabled(true);
    EXPECT_EQ(display->state(), PanelDisplay::State::Held);
    drag();
    EXPECT_TRUE(wasGiven(Output::Kind::ButtonDown));
    EXPECT_EQ(told, "hand ");
}

TEST_F(PanelDisplayTest, EachHandIsSaidToBeginOnce) {
    display->setEnabled(true);
    drag();
    lift();
    drag();
    EXPECT_EQ(told, "hand hand ");
}

TEST_F(PanelDisplayTest, SwitchedOffUnderAFingerWhatIsDownIsLiftedAtOnce) {
    display->setEnabled(true);
    drag();
    panel->isHeldBack = true;
    display->setEnabled(false);
    EXPECT_EQ(given.back(), Output::Kind::ButtonUp);
    const std::size_t before = given.size();
    drag();
    EXPECT_EQ(given.size(), before);
}

TEST_F(PanelDisplayTest, WhatIsDownIsLiftedWhenTheDisplayGoes) {
    display->setEnabled(true);
    drag();
    display.reset();
    EXPECT_EQ(given.back(), Output::Kind::ButtonUp);
}

TEST_F(PanelDisplayTest, APanelThatVanishesUnderAFingerLeavesNothingDown) {
    display->setEnabled(true);
    drag();
    panel->vanish();
    EXPECT_EQ(given.back(), Output::Kind::ButtonUp);
    EXPECT_EQ(told, "hand gone ");
    EXPECT_FALSE(display);
}

TEST_F(PanelDisplayTest, NothingIsGivenOutBeforeThePanelIsHeld) {
    panel->isHeldBack = true;
    display->setEnabled(true);
    EXPECT_EQ(display->state(), PanelDisplay::State::Waiting);
    EXPECT_TRUE(given.empty());
    panel->isAnothers = true;
    EXPECT_EQ(display->state(), PanelDisplay::State::HeldByAnother);
}

TEST_F(PanelDisplayTest, AWatchedDisplayShowsItsContactsAndGivesNothingOut) {
    display->setEnabled(true);
    display->setWatched(true);
    drag();
    EXPECT_TRUE(given.empty());
    ASSERT_EQ(last.contacts.size(), 1U);
    EXPECT_DOUBLE_EQ(last.contacts[0].x, 89.0 / 200.0);
    EXPECT_DOUBLE_EQ(last.contacts[0].y, 0.5);
    EXPECT_DOUBLE_EQ(last.width, 200.0);
    lift();
    EXPECT_TRUE(last.contacts.empty());
}

TEST_F(PanelDisplayTest, APalmIsNotShownToTheWatcher) {
    display->setEnabled(true);
    display->setWatched(true);
    palm();
    EXPECT_TRUE(last.contacts.empty());
}

TEST_F(PanelDisplayTest, AfterWatchingFingersThatAreStillThereCountForNothing) {
    display->setEnabled(true);
    display->setWatched(true);
    drag();
    display->setWatched(false);
    drag();
    EXPECT_TRUE(given.empty());
    lift();
    drag();
    EXPECT_TRUE(wasGiven(Output::Kind::ButtonDown));
}

TEST_F(PanelDisplayTest, WhatIsDueComesWithoutAnotherFrame) {
    touch::Settings settings;
    settings.fingerMode = touch::FingerMode::Pointer;
    settings.longPress = std::chrono::milliseconds(300);
    display->setSettings(settings);
    display->setEnabled(true);
    const touch::Time landed = now();
    finger(50.0, 50.0);
    loop.runUntil([&] { return wasGiven(Output::Kind::ButtonDown); }, 20.0);
    EXPECT_TRUE(wasGiven(Output::Kind::ButtonDown));
    EXPECT_GE(now() - landed, *settings.longPress);
}

TEST_F(PanelDisplayTest, WithoutAFingerNothingWakesUp) {
    display->setEnabled(true);
    int looks = 0;
    loop.runUntil(
        [&] {
            ++looks;
            return false;
        },
        0.05);
    // Before it waits, and when it has waited in vain.
    EXPECT_EQ(looks, 2);
}

TEST(APanelThatIsNone, MakesNoDisplay) {
    kelvo::PollRunLoop loop;
    const kelvo::PeerPlatform services("panel-display-test", loop);
    std::vector<Output::Kind> given;
    EXPECT_FALSE(
        PanelDisplay::open([](touch::Panel::Listener&) { return nullptr; }, std::make_unique<Kinds>(given),
                           {[] {}, [](const kelvo::ContactFrame&) {}, [](touch::Gesture, touch::Direction) {}, [] {}}));
}

} // namespace
