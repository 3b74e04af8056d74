#include "peers/calibration/Calibrator.h"

#include "TDUtilities.h"
#include "linux/PollRunLoop.h"
#include "peers/PeerPlatform.h"
#include "peers/calibration/CalibrationTexts.h"
#include "peers/driver/DriverSimulator.h"
#include "peers/driver/TouchSettings.h"
#include "support/EnvironmentVariable.h"
#include "support/PrivateBus.h"
#include "support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace {

using kelvo::Calibrator;
using Outcome = Calibrator::Outcome;
using State = touch::CalibrationRun::State;
using touch::Point;

constexpr double kPatience = 20.0;

class CalibratorTest : public testing::Test {
protected:
    CalibratorTest() {
        EXPECT_TRUE(driver.core().start());
        driver.core().connect("Desk");
    }

    void begin(const std::string& display = "Desk") {
        calibrator.emplace(loop, display, false,
                           Calibrator::Handlers{[] {}, [this](Outcome ended) { outcome = ended; }});
        calibrator->setOutput("HDMI-1");
        calibrator->begin();
        waitFor([&] { return calibrator->run().has_value() || outcome.has_value(); });
    }
    void waitFor(const std::function<bool()>& condition) {
        loop.runUntil(condition, kPatience);
        EXPECT_TRUE(condition());
    }
    void lay(const std::vector<std::string>& places) {
        std::vector<std::string> words{"contacts", "Desk"};
        words.insert(words.end(), places.begin(), places.end());
        EXPECT_EQ(performAndWait(loop, words).outcome, kelvo::DriverAnswer::Outcome::Done);
    }
    /// Rests on the place until that counts, then lifts.
    void press(Point place) {
        const std::size_t points = calibrator->run()->points().size();
        lay({std::to_string(place.x) + "," + std::to_string(place.y)});
        waitFor([&] { return outcome || calibrator->run()->points().size() > points; });
        if (outcome) return;
        lay({});
        waitFor([&] { return outcome || calibrator->run()->state() != State::Lift; });
    }
    void pressAllCrosses(Point off) {
        while (calibrator->run()->state() == State::Touch) press(calibrator->run()->cross() + off);
    }
    static bool isStored() { return std::filesystem::exists(getAdvanceCalibrationFilePath()); }

    TemporaryDirectory home;
    PrivateBus bus;
    EnvironmentVariable homeVariable{"HOME", home.path()};
    EnvironmentVariable busVariable{"DBUS_SESSION_BUS_ADDRESS", bus.address()};
    kelvo::PollRunLoop loop;
    kelvo::PeerPlatform services{"calibrator-test", loop};
    std::vector<std::string> lines;
    kelvo::DriverSimulator driver{[this](const std::string& line) { lines.push_back(line); }};
    std::optional<Outcome> outcome;
    std::optional<Calibrator> calibrator;
};

TEST_F(CalibratorTest, WhatIsConfirmedIsStoredBesideTheOthersAndCountsForTheDriver) {
    home.write("Library/Preferences/KelvoTouchDisplay/advanceCalibrationPoints.plist",
               "<plist version=\"1.0\"><dict><key>Other</key><dict><key>Matrix</key><string>kept</string></dict>"
               "</dict></plist>");
    begin();
    pressAllCrosses({0.02, -0.01});
    ASSERT_EQ(calibrator->run()->state(), State::Confirm);
    press(calibrator->run()->cross() + Point{0.02, -0.01});
    EXPECT_EQ(outcome, Outcome::Saved);
    const auto file = platform::NSMutableDictionary::dictionaryWithContentsOfFile(getAdvanceCalibrationFilePath());
    EXPECT_TRUE(file.objectForKey("Other").dictionary().objectForKey("Matrix").isEqual("kept"));
    const auto entry = file.objectForKey("Desk").dictionary();
    EXPECT_TRUE(entry.objectForKey("Output").isEqual("HDMI-1"));
    ASSERT_EQ(entry.objectForKey("Points").array().count(), 4U);
    const auto point = entry.objectForKey("Points").array().objectAtIndex(0).dictionary();
    EXPECT_NEAR(point.objectForKey("Glass").array().objectAtIndex(0).doubleValue(), 0.12, 1e-6);
    EXPECT_NEAR(point.objectForKey("Target").array().objectAtIndex(0).doubleValue(), 0.1, 1e-6);
    const touch::Matrix matrix = kelvo::touchSettingsOf("Desk", {}, kelvo::currentSettingsContext()).calibration;
    EXPECT_NEAR(matrix[0], 1.0, 1e-6);
    EXPECT_NEAR(matrix[2], -0.02, 1e-6);
    EXPECT_NEAR(matrix[5], 0.01, 1e-6);
}

TEST_F(CalibratorTest, OneThatEndsHalfWayChangesNothingAndGivesTheDisplayBack) {
    begin();
    press(calibrator->run()->cross());
    press(calibrator->run()->cross());
    EXPECT_TRUE(lines.empty());
    calibrator.reset();
    EXPECT_FALSE(isStored());
    // Until the bus has told the driver that nobody watches any more, fingers lead to nothing.
    for (int i = 0; lines.empty() && i < 1000; ++i) {
        lay({"0.5,0.5"});
        lay({});
    }
    EXPECT_FALSE(lines.empty());
}

TEST_F(CalibratorTest, ADisplayThatIsUnpluggedHalfWayEndsItWithAWord) {
    begin();
    press(calibrator->run()->cross());
    driver.core().disconnect("Desk");
    waitFor([&] { return outcome.has_value(); });
    EXPECT_EQ(outcome, Outcome::DisplayGone);
    EXPECT_EQ(textOf(*outcome, *calibrator), "The touchscreen was disconnected.\nNothing was changed.");
    EXPECT_FALSE(isStored());
}

TEST_F(CalibratorTest, ADriverThatIsSwitchedOffEndsItToo) {
    begin();
    driver.core().setDriverEnabled(false);
    waitFor([&] { return outcome.has_value(); });
    EXPECT_EQ(outcome, Outcome::DisplayGone);
}

TEST_F(CalibratorTest, ATouchBesideTheLastCrossStoresNothing) {
    begin();
    pressAllCrosses({0.0, 0.0});
    press(calibrator->run()->cross() + Point{0.1, 0.0});
    EXPECT_EQ(outcome, Outcome::Missed);
    EXPECT_FALSE(isStored());
}

TEST_F(CalibratorTest, TouchesThatContradictEachOtherAreRefused) {
    begin();
    for (const Point place : {Point{0.9, 0.1}, Point{0.1, 0.1}, Point{0.9, 0.9}, Point{0.1, 0.9}}) press(place);
    EXPECT_EQ(outcome, Outcome::Refused);
    EXPECT_FALSE(isStored());
}

TEST_F(CalibratorTest, ADamagedFileStaysAsItIs) {
    home.write("Library/Preferences/KelvoTouchDisplay/advanceCalibrationPoints.plist", "<plist");
    begin();
    pressAllCrosses({0.0, 0.0});
    press(calibrator->run()->cross());
    EXPECT_EQ(outcome, Outcome::NotSaved);
    EXPECT_EQ(home.read("Library/Preferences/KelvoTouchDisplay/advanceCalibrationPoints.plist"), "<plist");
}

TEST_F(CalibratorTest, ADisplayThatIsNotConnectedIsSaid) {
    begin("Nowhere");
    waitFor([&] { return outcome.has_value(); });
    EXPECT_EQ(outcome, Outcome::NotWatched);
}

TEST(ACalibratorWithoutADriver, SaysSo) {
    const TemporaryDirectory home;
    const PrivateBus bus;
    const EnvironmentVariable homeVariable("HOME", home.path());
    for (const std::string& address : {bus.address(), std::string("unix:path=/nowhere")}) {
        const EnvironmentVariable busVariable("DBUS_SESSION_BUS_ADDRESS", address);
        kelvo::PollRunLoop loop;
        const kelvo::PeerPlatform services("calibrator-test", loop);
        std::optional<Outcome> outcome;
        Calibrator calibrator(loop, "Desk", false, {[] {}, [&](Outcome ended) { outcome = ended; }});
        calibrator.begin();
        loop.runUntil([&] { return outcome.has_value(); }, kPatience);
        EXPECT_EQ(outcome, Outcome::NoDriver);
    }
}

} // namespace
