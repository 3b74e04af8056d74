#include "peers/status-bar/PaneOpener.h"

#include "TDNames.h"
#include "support/FakePlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace kelvo {

namespace {

using support::dictionaryOf;
using support::MemoryPorts;
using testing::ElementsAre;
using testing::IsEmpty;

class PaneOpenerTest : public testing::Test {
protected:
    void runPane(MemoryPorts::Peer peer = MemoryPorts::Peer::Answers) {
        platform_.ports.peers[kPreferencePortName] = peer;
    }

    /// The tabs that the pane was told of, in order; -1 for anything else that it heard.
    [[nodiscard]] std::vector<int> tabsTold() const {
        std::vector<int> tabs;
        for (const support::ReceivedMessage& message : platform_.ports.received) {
            const int tab = message.payload.objectForKey("SelectedMenuItem").intValue();
            const bool isTab = message.port == "PreferenceMessagePort" && message.id == 8 &&
                               message.payload.isEqual(dictionaryOf({{tab, "SelectedMenuItem"}}));
            tabs.push_back(isTab ? tab : -1);
        }
        return tabs;
    }

    support::FakePlatform platform_;
    int starts_ = 0;
    bool canStart_ = true;
    std::optional<PaneOpener> opener_{std::in_place, [this] {
                                          ++starts_;
                                          return canStart_;
                                      }};
};

TEST_F(PaneOpenerTest, PaneThatRunsIsToldAndNoneIsStarted) {
    runPane();
    for (const int tab : {3, 0}) opener_->openAtTab(tab);
    EXPECT_THAT(tabsTold(), ElementsAre(3, 0));
    EXPECT_EQ(starts_, 0);
    EXPECT_EQ(platform_.runLoop.pendingTimers(), 0U);
}

TEST_F(PaneOpenerTest, PaneThatDoesNotRunIsStartedOnceAndToldWhenItsPortIsThere) {
    opener_->openAtTab(2);
    EXPECT_EQ(starts_, 1);
    platform_.runLoop.advance(5.0);
    EXPECT_THAT(tabsTold(), IsEmpty());

    runPane();
    platform_.runLoop.advance(0.2);

    EXPECT_THAT(tabsTold(), ElementsAre(2));
    EXPECT_EQ(starts_, 1);
    EXPECT_EQ(platform_.runLoop.pendingTimers(), 0U);
    EXPECT_THAT(platform_.log.lines, IsEmpty());
}

TEST_F(PaneOpenerTest, LastTabChosenWhileThePaneStartsIsTheOneShown) {
    for (const int tab : {2, 1, 3}) opener_->openAtTab(tab);
    runPane();
    platform_.runLoop.advance(0.2);
    EXPECT_THAT(tabsTold(), ElementsAre(3));
    EXPECT_EQ(starts_, 1);
}

TEST_F(PaneOpenerTest, PaneThatNeverOpensIsGivenUpAfterTenSeconds) {
    opener_->openAtTab(2);
    platform_.runLoop.advance(9.9);
    EXPECT_THAT(platform_.log.lines, IsEmpty());
    platform_.runLoop.advance(0.2);
    EXPECT_THAT(platform_.log.lines, ElementsAre("the settings were started but do not open"));
    EXPECT_EQ(platform_.runLoop.pendingTimers(), 0U);

    runPane();
    platform_.runLoop.advance(10.0);
    EXPECT_THAT(tabsTold(), IsEmpty());
}

TEST_F(PaneOpenerTest, PaneThatWasGivenUpIsStartedAnewByTheNextChoice) {
    opener_->openAtTab(2);
    platform_.runLoop.advance(11.0);
    opener_->openAtTab(1);
    EXPECT_EQ(starts_, 2);
    runPane();
    platform_.runLoop.advance(0.2);
    EXPECT_THAT(tabsTold(), ElementsAre(1));
}

TEST_F(PaneOpenerTest, PaneThatEndedIsStartedAnewAtOnce) {
    opener_->openAtTab(2);
    runPane();
    platform_.runLoop.advance(0.2);
    platform_.ports.peers.clear();
    opener_->openAtTab(1);
    EXPECT_EQ(starts_, 2);
}

TEST_F(PaneOpenerTest, PaneThatCannotBeStartedIsNotWaitedFor) {
    canStart_ = false;
    opener_->openAtTab(2);
    EXPECT_EQ(platform_.runLoop.pendingTimers(), 0U);
    EXPECT_THAT(platform_.log.lines, ElementsAre("the settings cannot be started; is kelvo-touch-display installed?"));
}

TEST_F(PaneOpenerTest, PaneThatHangsIsNeitherStartedNorToldAgain) {
    runPane(MemoryPorts::Peer::Hung);
    opener_->openAtTab(2);
    platform_.runLoop.advance(20.0);
    EXPECT_EQ(starts_, 0);
    EXPECT_THAT(tabsTold(), ElementsAre(2));
    EXPECT_THAT(platform_.log.lines, ElementsAre("the settings do not answer; close their window and choose again"));
}

TEST_F(PaneOpenerTest, TabChosenWhileThePaneIsBeingToldIsToldNext) {
    runPane(MemoryPorts::Peer::Slow);
    platform_.runLoop.scheduleTimer(0.1, [this] { opener_->openAtTab(0); });
    platform_.runLoop.scheduleTimer(0.2, [this] { opener_->openAtTab(3); });
    opener_->openAtTab(1);
    EXPECT_THAT(tabsTold(), ElementsAre(1, 3));
    EXPECT_EQ(starts_, 0);
}

TEST_F(PaneOpenerTest, OpenerThatIsGoneTellsNobody) {
    opener_->openAtTab(2);
    opener_.reset();
    runPane();
    platform_.runLoop.advance(10.0);
    EXPECT_THAT(tabsTold(), IsEmpty());
}

} // namespace

} // namespace kelvo
