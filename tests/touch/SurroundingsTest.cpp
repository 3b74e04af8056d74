#include "touch/Surroundings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using touch::Monitor;
using touch::Size;

constexpr Size kLarge{600.0, 340.0};
constexpr Size kSmall{344.0, 194.0};

Monitor monitor(const std::string& name, std::optional<Size> millimetres) {
    Monitor made;
    made.name = name;
    made.millimetres = millimetres;
    return made;
}

std::string nameOfMonitor(const std::vector<Monitor>& monitors, const std::string& bound, std::optional<Size> glass) {
    const Monitor* found = touch::monitorOf(monitors, bound, glass);
    return found ? found->name : "none";
}

const std::vector<Monitor> kTwo{monitor("DP-1", kLarge), monitor("HDMI-1", kSmall)};

TEST(MonitorOfADisplay, IsTheOneThatItWasBoundTo) {
    EXPECT_EQ(nameOfMonitor(kTwo, "DP-1", kSmall), "DP-1");
    EXPECT_EQ(nameOfMonitor(kTwo, "HDMI-1", std::nullopt), "HDMI-1");
}

TEST(MonitorOfADisplay, IsElseTheOnlyOneAsLargeAsItsGlass) {
    EXPECT_EQ(nameOfMonitor(kTwo, "", kSmall), "HDMI-1");
    EXPECT_EQ(nameOfMonitor(kTwo, "gone", kLarge), "DP-1");
    EXPECT_EQ(nameOfMonitor(kTwo, "", Size{345.0, 200.0}), "HDMI-1");
    EXPECT_EQ(nameOfMonitor(kTwo, "", Size{194.0, 344.0}), "none");
}

TEST(MonitorOfADisplay, MayBeAFewPercentLargerOrSmallerThanTheGlass) {
    const std::vector<Monitor> monitors{monitor("a", Size{100.0, 100.0}), monitor("b", std::nullopt)};
    EXPECT_EQ(nameOfMonitor(monitors, "", Size{104.9, 95.1}), "a");
    EXPECT_EQ(nameOfMonitor(monitors, "", Size{105.1, 100.0}), "none");
    EXPECT_EQ(nameOfMonitor(monitors, "", Size{100.0, 94.9}), "none");
}

TEST(MonitorOfADisplay, IsNotGuessedAmongSeveral) {
    EXPECT_EQ(nameOfMonitor({monitor("a", kSmall), monitor("b", kSmall)}, "", kSmall), "none");
    EXPECT_EQ(nameOfMonitor(kTwo, "", std::nullopt), "none");
    EXPECT_EQ(nameOfMonitor({}, "DP-1", kSmall), "none");
}

TEST(MonitorOfADisplay, IsTheOnlyOneThereIsWhateverItsSize) {
    EXPECT_EQ(nameOfMonitor({monitor("DP-1", kLarge)}, "gone", kSmall), "DP-1");
    EXPECT_EQ(nameOfMonitor({monitor("DP-1", std::nullopt)}, "", std::nullopt), "DP-1");
}

} // namespace
