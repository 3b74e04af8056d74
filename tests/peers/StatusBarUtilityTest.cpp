#include "peers/status-bar/StatusBarUtility.h"

#include "TDNames.h"
#include "TDUtilities.h"
#include "support/FakePlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

namespace kelvo {

namespace {

using support::dictionaryOf;
using support::MemoryPorts;
using testing::ElementsAre;
using testing::IsEmpty;
using Occasion = StatusBarUtility::Occasion;
using Start = StatusBarUtility::Start;

constexpr char kUtilitiesFile[] = "/home/user/Library/Preferences/KelvoTouchDisplay/Utilities.plist";
constexpr char kNoTray[] = "no system tray; the menu cannot be shown";

class RecordedIcon : public StatusIcon {
public:
    bool isThereATray = true;
    bool isShown = false;

    [[nodiscard]] bool hasPlace() override { return isThereATray; }
    void show() override { isShown = true; }
    void hide() override { isShown = false; }
};

class StatusBarUtilityTest : public testing::Test {
protected:
    void setShownInFile(const platform::Value& isShown) {
        platform_.setPlist(kUtilitiesFile, dictionaryOf({{isShown, "IsShowStatuMenu"}}));
    }

    void deliver(std::int32_t messageId, std::initializer_list<platform::NSMutableDictionary::ObjectAndKey> payload) {
        platform_.ports.deliver(kStatusBarPortName, messageId, dictionaryOf(payload));
    }

    support::FakePlatform platform_;
    RecordedIcon icon_;
    int startsAnew_ = 0;
    std::optional<StatusBarUtility> utility_{std::in_place, icon_, [this] { ++startsAnew_; }};
};

TEST_F(StatusBarUtilityTest, ListensAtItsPortForItsLife) {
    EXPECT_EQ(utility_->start(Occasion::Launch), Start::IsFirst);
    EXPECT_TRUE(platform_.ports.isListening("StatusBarMessagePort"));

    utility_.reset();

    EXPECT_FALSE(platform_.ports.isListening("StatusBarMessagePort"));
}

TEST_F(StatusBarUtilityTest, LaunchShowsTheIconWhateverTheFileSays) {
    setShownInFile(false);
    EXPECT_EQ(utility_->start(Occasion::Launch), Start::IsFirst);
    EXPECT_TRUE(icon_.isShown);
    EXPECT_THAT(platform_.log.lines, ElementsAre("icon shown"));
}

TEST_F(StatusBarUtilityTest, SessionStartShowsTheIconThatTheFileWants) {
    setShownInFile(true);
    EXPECT_EQ(utility_->start(Occasion::SessionStart), Start::IsFirst);
    EXPECT_TRUE(icon_.isShown);
}

TEST_F(StatusBarUtilityTest, SessionStartWithoutAFileMakesOneThatWantsTheIcon) {
    EXPECT_EQ(utility_->start(Occasion::SessionStart), Start::IsFirst);
    EXPECT_TRUE(icon_.isShown);
    EXPECT_TRUE(platform_.plist(kUtilitiesFile).objectForKey("IsShowStatuMenu").boolValue());
}

TEST_F(StatusBarUtilityTest, SessionStartThatWantsNoIconStillListens) {
    setShownInFile(false);
    EXPECT_EQ(utility_->start(Occasion::SessionStart), Start::IsFirst);
    EXPECT_FALSE(icon_.isShown);
    EXPECT_TRUE(platform_.ports.isListening("StatusBarMessagePort"));
    EXPECT_THAT(platform_.log.lines, ElementsAre("icon hidden"));
}

TEST_F(StatusBarUtilityTest, DamagedFileReadsAsNoIconAndStaysAsItIs) {
    platform_.files.setText(kUtilitiesFile, "<plist><dict>");
    EXPECT_EQ(utility_->start(Occasion::SessionStart), Start::IsFirst);
    EXPECT_FALSE(icon_.isShown);
    EXPECT_EQ(platform_.files.textOf(kUtilitiesFile), "<plist><dict>");
}

TEST_F(StatusBarUtilityTest, MessageTenHidesAndShowsTheIconAndLogsEachChangeOnce) {
    EXPECT_EQ(utility_->start(Occasion::Launch), Start::IsFirst);

    deliver(10, {{false, "IsShowStatuMenu"}});
    EXPECT_FALSE(icon_.isShown);
    deliver(10, {{false, "IsShowStatuMenu"}});
    deliver(10, {{true, "IsShowStatuMenu"}});
    EXPECT_TRUE(icon_.isShown);
    deliver(10, {{true, "IsShowStatuMenu"}});

    const std::string off = "message 10 { IsShowStatuMenu = 0; }";
    const std::string on = "message 10 { IsShowStatuMenu = 1; }";
    EXPECT_THAT(platform_.log.lines, ElementsAre("icon shown", off, "icon hidden", off, on, "icon shown", on));
}

TEST_F(StatusBarUtilityTest, MessageTenThatCannotBeReadHidesTheIcon) {
    EXPECT_EQ(utility_->start(Occasion::Launch), Start::IsFirst);
    for (const platform::NSData& data : {platform::NSData{}, platform::NSData{0xFF, 0x00, 0x3C}}) {
        deliver(10, {{true, "IsShowStatuMenu"}});
        platform_.ports.deliver(kStatusBarPortName, 10, data);
        EXPECT_FALSE(icon_.isShown);
    }
}

TEST_F(StatusBarUtilityTest, OtherMessagesChangeNothing) {
    EXPECT_EQ(utility_->start(Occasion::Launch), Start::IsFirst);
    for (const std::int32_t messageId : {0, 4, 7, 8, 9, 11, -1}) deliver(messageId, {{false, "IsShowStatuMenu"}});
    EXPECT_TRUE(icon_.isShown);
    EXPECT_THAT(platform_.log.lines, ElementsAre("icon shown"));
}

TEST_F(StatusBarUtilityTest, AnotherStartShowsTheIconAgain) {
    setShownInFile(false);
    EXPECT_EQ(utility_->start(Occasion::SessionStart), Start::IsFirst);
    deliver(100, {{true, "HasPlace"}});
    EXPECT_TRUE(icon_.isShown);
    EXPECT_EQ(startsAnew_, 0);
}

TEST_F(StatusBarUtilityTest, MissingTrayIsLoggedOnceAndTheIconIsShownInOneThatComes) {
    icon_.isThereATray = false;
    EXPECT_EQ(utility_->start(Occasion::Launch), Start::IsFirst);
    deliver(100, {{false, "HasPlace"}});
    deliver(10, {{true, "IsShowStatuMenu"}});
    EXPECT_FALSE(icon_.isShown);
    const std::string on = "message 10 { IsShowStatuMenu = 1; }";
    EXPECT_THAT(platform_.log.lines, ElementsAre(kNoTray, on));

    icon_.isThereATray = true;
    deliver(10, {{true, "IsShowStatuMenu"}});

    EXPECT_TRUE(icon_.isShown);
    EXPECT_THAT(platform_.log.lines, ElementsAre(kNoTray, on, on, "icon shown"));
}

TEST_F(StatusBarUtilityTest, ShowsTheIconThatWasWantedInATrayThatComes) {
    icon_.isThereATray = false;
    EXPECT_EQ(utility_->start(Occasion::Launch), Start::IsFirst);
    icon_.isThereATray = true;

    utility_->takePlace();

    EXPECT_TRUE(icon_.isShown);
    EXPECT_EQ(startsAnew_, 0);
    EXPECT_THAT(platform_.log.lines, ElementsAre(kNoTray, "icon shown"));
}

TEST_F(StatusBarUtilityTest, StartsAnewForATrayThatComesAndOnlyANewProcessSees) {
    icon_.isThereATray = false;
    EXPECT_EQ(utility_->start(Occasion::Launch), Start::IsFirst);

    utility_->takePlace();

    EXPECT_EQ(startsAnew_, 1);
}

TEST_F(StatusBarUtilityTest, TakesNoPlaceForAnIconThatNobodyWants) {
    icon_.isThereATray = false;
    setShownInFile(false);
    EXPECT_EQ(utility_->start(Occasion::SessionStart), Start::IsFirst);
    utility_->takePlace();
    deliver(10, {{true, "IsShowStatuMenu"}});
    deliver(10, {{false, "IsShowStatuMenu"}});
    utility_->takePlace();

    EXPECT_FALSE(icon_.isShown);
    EXPECT_EQ(startsAnew_, 0);
}

TEST_F(StatusBarUtilityTest, StartsAnewForATrayThatOnlyANewProcessSees) {
    icon_.isThereATray = false;
    EXPECT_EQ(utility_->start(Occasion::Launch), Start::IsFirst);
    deliver(100, {{false, "HasPlace"}});
    EXPECT_EQ(startsAnew_, 0);
    deliver(100, {{true, "HasPlace"}});
    EXPECT_EQ(startsAnew_, 1);
}

TEST_F(StatusBarUtilityTest, SwitchedOffIsStoredHiddenAndToldToThePaneOfOneDisplay) {
    const auto one = platform::NSMutableArray::arrayWithObjects({"Desk"});
    saveSettingItemsToPlist(dictionaryOf({{one, "CurrentDeviceType"}, {true, "IsShowStatuMenu"}}),
                            getUilitiesFilePath());
    platform_.ports.peers[kPreferencePortName] = MemoryPorts::Peer::Answers;
    EXPECT_EQ(utility_->start(Occasion::Launch), Start::IsFirst);

    utility_->switchOff();

    EXPECT_FALSE(icon_.isShown);
    EXPECT_TRUE(
        readUtilitiesDictionary().isEqual(dictionaryOf({{one, "CurrentDeviceType"}, {false, "IsShowStatuMenu"}})));
    ASSERT_EQ(platform_.ports.received.size(), 1U);
    EXPECT_EQ(platform_.ports.received[0].port, "PreferenceMessagePort");
    EXPECT_EQ(platform_.ports.received[0].id, 7);
    EXPECT_TRUE(platform_.ports.received[0].payload.isEqual(dictionaryOf({{true, "IsConnected"}})));
}

TEST_F(StatusBarUtilityTest, SwitchedOffWithoutAFileMakesOneWithTheDefaultsOfAllElse) {
    EXPECT_EQ(utility_->start(Occasion::Launch), Start::IsFirst);
    utility_->switchOff();
    EXPECT_FALSE(readUtilitiesDictionary().objectForKey("IsShowStatuMenu").boolValue());
    EXPECT_TRUE(readUtilitiesDictionary().objectForKey("DriverEnable").boolValue());
    EXPECT_THAT(platform_.ports.received, IsEmpty());
}

class SecondStatusBarUtilityTest : public StatusBarUtilityTest {
protected:
    SecondStatusBarUtilityTest() { platform_.ports.takenNames.insert(kStatusBarPortName); }

    void setOther(MemoryPorts::Peer other) { platform_.ports.peers[kStatusBarPortName] = other; }
};

TEST_F(SecondStatusBarUtilityTest, LaunchTellsTheFirstWithWhatItSees) {
    setOther(MemoryPorts::Peer::Answers);
    for (const bool isThereATray : {true, false}) {
        icon_.isThereATray = isThereATray;
        platform_.ports.received.clear();

        EXPECT_EQ(utility_->start(Occasion::Launch), Start::OtherRuns);

        ASSERT_EQ(platform_.ports.received.size(), 1U);
        EXPECT_EQ(platform_.ports.received[0].port, "StatusBarMessagePort");
        EXPECT_EQ(platform_.ports.received[0].id, 100);
        EXPECT_TRUE(platform_.ports.received[0].payload.isEqual(dictionaryOf({{isThereATray, "HasPlace"}})));
        EXPECT_FALSE(icon_.isShown);
    }
}

TEST_F(SecondStatusBarUtilityTest, SessionStartTellsTheFirstOnlyWhenTheFileWantsTheIcon) {
    setOther(MemoryPorts::Peer::Answers);
    setShownInFile(false);
    EXPECT_EQ(utility_->start(Occasion::SessionStart), Start::OtherRuns);
    EXPECT_THAT(platform_.ports.received, IsEmpty());
    EXPECT_FALSE(utility_->hasHeardFromOther());
    setShownInFile(true);
    EXPECT_EQ(utility_->start(Occasion::SessionStart), Start::OtherRuns);
    EXPECT_EQ(platform_.ports.received.size(), 1U);
    EXPECT_TRUE(utility_->hasHeardFromOther());
}

TEST_F(SecondStatusBarUtilityTest, FirstThatDoesNotAnswerIsHung) {
    setOther(MemoryPorts::Peer::Hung);
    EXPECT_EQ(utility_->start(Occasion::Launch), Start::OtherIsHung);
}

TEST_F(SecondStatusBarUtilityTest, WithoutABusThereIsNoPortAndNoIcon) {
    EXPECT_EQ(utility_->start(Occasion::Launch), Start::NoPort);
    EXPECT_FALSE(icon_.isShown);
}

} // namespace

} // namespace kelvo
