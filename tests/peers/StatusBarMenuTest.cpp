#include "peers/status-bar/StatusMenu.h"

#include "support/FakePlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {

namespace {

using support::dictionaryOf;
using testing::ElementsAre;

constexpr char kUtilitiesFile[] = "/home/user/Library/Preferences/KelvoTouchDisplay/Utilities.plist";
constexpr std::size_t kDriverLine = 5;

class StatusMenuTest : public testing::Test {
protected:
    void setDriverInFile(const platform::Value& isOn) {
        platform_.setPlist(kUtilitiesFile, dictionaryOf({{isOn, "DriverEnable"}}));
    }

    [[nodiscard]] std::vector<std::string> titles() const {
        std::vector<std::string> titles;
        for (const StatusMenu::Item& item : menu_.items()) titles.push_back(item.title);
        return titles;
    }

    /// Opens the menu and keeps the driver's line after each change.
    void open() {
        menu_.open([this] { driverLines_.push_back(menu_.items().at(kDriverLine).title); });
    }

    support::FakePlatform platform_;
    std::vector<std::string> story_;
    std::function<void(PortAnswer)> tell_;
    std::vector<std::string> driverLines_;
    StatusMenu menu_{{.openPaneAtTab = [this](std::int32_t tab) { story_.push_back("tab " + std::to_string(tab)); },
                      .quit = [this] { story_.emplace_back("quit"); },
                      .askDriver = [this](std::function<void(PortAnswer)> tell) { tell_ = std::move(tell); }}};
};

TEST_F(StatusMenuTest, HasTheTabsThenTheDriverThenTheEnd) {
    EXPECT_THAT(titles(),
                ElementsAre("Calibration", "Touch and Gestures", "Display", "Version", "", "Driver", "", "Quit"));
}

TEST_F(StatusMenuTest, EachTabOpensThePaneThereAndQuitQuits) {
    for (const StatusMenu::Item& item : menu_.items()) {
        if (item.choose) item.choose();
    }
    EXPECT_THAT(story_, ElementsAre("tab 0", "tab 1", "tab 2", "tab 3", "quit"));
}

TEST_F(StatusMenuTest, DriverAndSeparatorsCannotBeChosen) {
    for (const std::size_t line : {std::size_t{4}, kDriverLine, std::size_t{6}}) {
        EXPECT_FALSE(menu_.items().at(line).choose) << line;
    }
}

TEST_F(StatusMenuTest, DriversLineSaysWhatTheFileSaysAndThenWhetherItAnswers) {
    const std::pair<PortAnswer, std::string> answers[] = {{PortAnswer::NotRunning, "not running"},
                                                          {PortAnswer::NotAnswering, "not answering"},
                                                          {PortAnswer::Answering, "answering"}};
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

} // namespace

} // namespace kelvo
