#include "peers/status-bar/StatusMenu.h"

#include "linux/PosixFileManager.h"
#include "linux/StringsTable.h"
#include "support/FakePlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>

namespace kelvo {

namespace {

using support::dictionaryOf;
using testing::ElementsAre;

constexpr char kUtilitiesFile[] = "/home/user/Library/Preferences/KelvoTouchDisplay/Utilities.plist";
constexpr std::size_t kNameLine = 0;
constexpr std::size_t kDriverLine = 6;
constexpr std::size_t kAdviceLine = 7;
constexpr std::size_t kSwitchLine = 8;
constexpr double kNextLookSeconds = 10.0;

class StatusMenuTest : public testing::Test {
protected:
    void setDriverInFile(const platform::Value& isOn) {
        platform_.setPlist(kUtilitiesFile, dictionaryOf({{isOn, "DriverEnable"}}));
    }

    [[nodiscard]] std::vector<std::string> titles() {
        std::vector<std::string> titles;
        for (const StatusMenu::Item& item : menu_.items()) {
            if (item.isShown) titles.push_back(item.isSeparator ? "-" : item.title);
        }
        return titles;
    }

    /// Opens the menu and keeps the driver's line after each change.
    void open() {
        menu_.open([this] { driverLines_.push_back(menu_.items().at(kDriverLine).title); });
    }

    /// Takes the menu's texts from a file alone: whatever that lacks is then missing.
    void useTable(const char* path) {
        const auto contents = PosixFileManager().contentsAtPath(path);
        ASSERT_TRUE(contents) << path;
        const StringsTable table(*contents);
        for (const char* key :
             {"Tab.Calibration", "Tab.Settings", "Tab.HardwareInformation", "Tab.Version", "Menu.Driver.On",
              "Menu.Driver.Off", "Menu.Driver.On.Answering", "Menu.Driver.On.NotRunning", "Menu.Driver.On.NotAnswering",
              "Menu.Driver.Off.Answering", "Menu.Driver.Off.NotRunning", "Menu.Driver.Off.NotAnswering",
              "Menu.Driver.Start", "Menu.Driver.Restart", "Menu.Driver.SwitchOn", "Menu.Driver.Enable", "Menu.Gestures",
              "CalibrationTool.Title", "Menu.Quit"}) {
            platform_.bundle.strings[key] = table.textForKey(key).value_or("");
        }
    }

    support::FakePlatform platform_;
    std::vector<std::string> story_;
    std::function<void(PortAnswer)> tell_;
    std::function<void()> switched_;
    std::vector<std::string> driverLines_;
    int questions_ = 0;
    int watches_ = 0;
    StatusMenu menu_{{.openPaneAtTab = [this](std::int32_t tab) { story_.push_back("tab " + std::to_string(tab)); },
                      .showGestures = [this] { story_.emplace_back("gestures"); },
                      .calibrate = [this] { story_.emplace_back("calibrate"); },
                      .quit = [this] { story_.emplace_back("quit"); },
                      .askDriver =
                          [this](std::function<void(PortAnswer)> tell) {
                              tell_ = std::move(tell);
                              ++questions_;
                          },
                      .switchDriver =
                          [this](bool isOn, std::function<void()> done) {
                              story_.emplace_back(isOn ? "on" : "off");
                              switched_ = std::move(done);
                          },
                      .watchDriver = [this] { ++watches_; }}};
};

TEST_F(StatusMenuTest, HasTheTabsThenTheDriverThenTheEnd) {
    EXPECT_THAT(titles(), ElementsAre("Calibration", "Touch and gestures", "Rotation", "Version", "-", "Driver",
                                      "Enable driver", "What gestures do", "Calibrate touchscreen", "-", "Quit"));
}

TEST_F(StatusMenuTest, EachTabOpensThePaneThereAndQuitQuits) {
    for (const StatusMenu::Item& item : menu_.items()) {
        if (item.choose) item.choose();
    }
    EXPECT_THAT(story_, ElementsAre("tab 0", "tab 1", "tab 2", "tab 3", "on", "gestures", "calibrate", "quit"));
}

TEST_F(StatusMenuTest, SwitchIsTickedAsTheFileSaysAndSwitchesToTheOther) {
    for (const bool isOn : {true, false}) {
        story_.clear();
        setDriverInFile(isOn);
        open();
        EXPECT_EQ(menu_.items().at(kSwitchLine).isTicked, isOn);
        menu_.items().at(kSwitchLine).choose();
        EXPECT_THAT(story_, ElementsAre(isOn ? "off" : "on"));
    }
}

TEST_F(StatusMenuTest, TickAndAdviceFollowOnceTheDriverHasSwitched) {
    setDriverInFile(true);
    open();
    tell_(PortAnswer::Answering);
    menu_.items().at(kSwitchLine).choose();
    setDriverInFile(false);
    EXPECT_EQ(menu_.items().at(kSwitchLine).isTicked, true) << "nothing is known of it yet";
    switched_();
    tell_(PortAnswer::Answering);
    EXPECT_EQ(menu_.items().at(kSwitchLine).isTicked, false);
    EXPECT_EQ(menu_.advice(), "Settings are not available. Enable the driver.");
}

TEST_F(StatusMenuTest, SwitchStaysTickedWhenTheDriverDidNotSwitch) {
    setDriverInFile(true);
    open();
    menu_.items().at(kSwitchLine).choose();
    switched_();
    EXPECT_EQ(menu_.items().at(kSwitchLine).isTicked, true);
}

TEST_F(StatusMenuTest, SwitchIsOfferedUnlessNoDriverRuns) {
    const std::pair<PortAnswer, bool> states[] = {{PortAnswer::NotRunning, false},
                                                  {PortAnswer::NotAnswering, true},
                                                  {PortAnswer::NotRunning, false},
                                                  {PortAnswer::Answering, true}};
    EXPECT_TRUE(menu_.items().at(kSwitchLine).isOffered) << "nothing is known yet";
    for (const auto& [answer, isOffered] : states) {
        open();
        tell_(answer);
        EXPECT_EQ(menu_.items().at(kSwitchLine).isOffered, isOffered);
    }
}

TEST_F(StatusMenuTest, BeginsWithTheDisplayThatTheWindowShowsAsLongAsThatIsConnected) {
    const auto firstLineWith = [&](const platform::Value& connected, const platform::Value& shown) {
        platform_.setPlist(kUtilitiesFile,
                           dictionaryOf({{connected, "CurrentDeviceType"}, {shown, "SelectDeviceName"}}));
        open();
        return titles().front();
    };
    const platform::Value two(platform::NSMutableArray::arrayWithObjects({"Kelvo 24", "Kelvo 32"}));
    EXPECT_EQ(firstLineWith(two, "Kelvo 32"), "Kelvo 32");
    EXPECT_EQ(firstLineWith(two, "Kelvo 40"), "Calibration");
    EXPECT_EQ(firstLineWith(two, ""), "Calibration");
    EXPECT_EQ(firstLineWith(platform::NSMutableArray::arrayWithObjects(), "Kelvo 32"), "Calibration");
    EXPECT_EQ(firstLineWith("Kelvo 32", "Kelvo 32"), "Calibration");
    EXPECT_EQ(firstLineWith(two, platform::NSMutableArray::arrayWithObjects()), "Calibration");
}

TEST_F(StatusMenuTest, DriverAndSeparatorsCannotBeChosen) {
    for (const std::size_t line : {kNameLine, std::size_t{5}, kDriverLine, kAdviceLine, std::size_t{11}}) {
        EXPECT_FALSE(menu_.items().at(line).choose) << line;
    }
}

TEST_F(StatusMenuTest, DriversLineSaysWhatTheFileSaysAndThenWhetherItAnswers) {
    const std::pair<PortAnswer, std::string> answers[] = {{PortAnswer::NotRunning, "not running"},
                                                          {PortAnswer::NotAnswering, "not responding"},
                                                          {PortAnswer::Answering, "responding"}};
    for (const auto& [answer, text] : answers) {
        for (const bool isOn : {true, false}) {
            const std::string state = isOn ? "Driver: on" : "Driver: off";
            driverLines_.clear();
            setDriverInFile(isOn);

            open();
            tell_(answer);

            EXPECT_THAT(driverLines_, ElementsAre(state, state + ", " + text));
        }
    }
}

TEST_F(StatusMenuTest, DriverOfANewHomeIsOnAndOfADamagedFileOff) {
    open();
    platform_.files.setText(kUtilitiesFile, "<plist><dict>");
    open();
    EXPECT_THAT(driverLines_, ElementsAre("Driver: on", "Driver: off"));
}

TEST_F(StatusMenuTest, AdviceStandsBelowADriverThatSettingsDoNotReach) {
    const std::tuple<bool, PortAnswer, std::string> states[] = {
        {true, PortAnswer::Answering, ""},
        {true, PortAnswer::NotRunning, "Changes have no effect. Start the driver or log in again."},
        {false, PortAnswer::NotRunning, "Changes have no effect. Start the driver or log in again."},
        {true, PortAnswer::NotAnswering, "Changes have no effect. Restart the driver or this computer."},
        {false, PortAnswer::Answering, "Settings are not available. Enable the driver."},
        {true, PortAnswer::Answering, ""},
    };
    for (const auto& [isOn, answer, advice] : states) {
        setDriverInFile(isOn);
        open();
        tell_(answer);

        const StatusMenu::Item line = menu_.items().at(kAdviceLine);
        EXPECT_EQ(line.title, advice);
        EXPECT_EQ(line.isShown, !advice.empty());
        EXPECT_EQ(menu_.advice(), advice);
    }
}

TEST_F(StatusMenuTest, AdviceStaysUntilTheNextAnswer) {
    open();
    tell_(PortAnswer::NotRunning);
    open();
    EXPECT_NE(menu_.advice(), "");
    tell_(PortAnswer::Answering);
    EXPECT_EQ(menu_.advice(), "");
}

TEST_F(StatusMenuTest, DriverThatCameOrWentIsAskedAgainWhoeverLooks) {
    menu_.refresh();
    EXPECT_EQ(questions_, 0) << "nobody has seen the menu yet";
    open();
    tell_(PortAnswer::NotRunning);
    menu_.refresh();
    tell_(PortAnswer::Answering);

    EXPECT_EQ(questions_, 2);
    EXPECT_EQ(watches_, 1);
    EXPECT_EQ(driverLines_.back(), "Driver: on, responding");
}

TEST_F(StatusMenuTest, OnlyADriverThatDoesNotAnswerIsLookedAtOnceMore) {
    open();
    tell_(PortAnswer::NotAnswering);
    platform_.runLoop.runUntil([] { return false; }, kNextLookSeconds);
    EXPECT_EQ(questions_, 2);
    tell_(PortAnswer::Answering);
    platform_.runLoop.runUntil([] { return false; }, 10 * kNextLookSeconds);
    EXPECT_EQ(questions_, 2);
}

TEST_F(StatusMenuTest, TextsAreTheBundlesAndWithoutItTheSame) {
    std::vector<std::string> withoutBundle;
    for (const bool hasBundle : {false, true}) {
        std::vector<std::string> said;
        if (hasBundle) useTable(KELVO_ENGLISH_STRINGS);
        for (const bool isOn : {true, false}) {
            for (const PortAnswer answer : {PortAnswer::NotRunning, PortAnswer::NotAnswering, PortAnswer::Answering}) {
                setDriverInFile(isOn);
                open();
                tell_(answer);
                const std::vector<std::string> after = titles();
                said.insert(said.end(), after.begin(), after.end());
            }
        }
        said.insert(said.end(), driverLines_.begin(), driverLines_.end());
        driverLines_.clear();
        if (hasBundle) {
            EXPECT_EQ(said, withoutBundle);
        } else {
            withoutBundle = said;
        }
    }
    platform_.bundle.strings["Menu.Quit"] = "Ende";
    EXPECT_EQ(titles().back(), "Ende");
}

} // namespace

} // namespace kelvo
