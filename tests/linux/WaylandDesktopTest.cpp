#include "linux/WaylandDesktop.h"

#include "linux/Desktop.h"
#include "linux/PollRunLoop.h"
#include "support/EnvironmentVariable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

using touch::Monitor;

/// On a compositor of the test's own, with one output of 1280 by 800 and, lower to the right of it, one of 640 by 480.
class WaylandDesktopTest : public testing::Test {
protected:
    static void command(const std::string& words) {
        EXPECT_EQ(std::system(("swaymsg --quiet '" + words + "'").c_str()), 0) << words;
    }
    template <typename Condition>
    void await(const Condition& holds) {
        loop.runUntil(holds, 20.0);
        EXPECT_TRUE(holds());
    }
    [[nodiscard]] static const Monitor* monitor(const touch::DesktopWatch& desktop, const std::string& name) {
        const auto& monitors = desktop.surroundings().monitors;
        const auto found = std::ranges::find(monitors, name, &Monitor::name);
        return found == monitors.end() ? nullptr : &*found;
    }

    PollRunLoop loop;
    int changes = 0;
};

TEST_F(WaylandDesktopTest, MonitorsHaveTheirPartsOfTheDesktop) {
    const auto desktop = openWaylandDesktop(loop, [this] { ++changes; });
    ASSERT_TRUE(desktop);
    EXPECT_TRUE(desktop->surroundings().turnsTouches);
    EXPECT_EQ(desktop->surroundings().monitors.size(), 2U);
    const Monitor* left = monitor(*desktop, "HEADLESS-1");
    const Monitor* right = monitor(*desktop, "HEADLESS-2");
    ASSERT_TRUE(left && right);
    EXPECT_EQ(left->place, (touch::Region{{0.0, 0.0}, {1280.0 / 1920.0, 1.0}}));
    EXPECT_EQ(right->place, (touch::Region{{1280.0 / 1920.0, 320.0 / 800.0}, {640.0 / 1920.0, 480.0 / 800.0}}));
    EXPECT_EQ(left->turns, 0);
    // Made up, it says no size.
    EXPECT_EQ(left->millimetres, std::nullopt);
    EXPECT_EQ(changes, 0);
}

TEST_F(WaylandDesktopTest, TheDesktopIsThatOfTheCompositorWhateverIsSaidOfAnXServer) {
    const EnvironmentVariable server("DISPLAY", ":4711");
    const auto desktop = openDesktop(loop, [this] { ++changes; });
    ASSERT_TRUE(desktop);
    EXPECT_TRUE(monitor(*desktop, "HEADLESS-1"));
    command("output HEADLESS-2 transform 90");
    await([&] { return monitor(*desktop, "HEADLESS-2")->turns == 1; });
    EXPECT_GE(changes, 1);
    command("output HEADLESS-2 transform normal");
}

TEST_F(WaylandDesktopTest, TurnsAreFollowedAndCountedClockwise) {
    const auto desktop = openWaylandDesktop(loop, [this] { ++changes; });
    ASSERT_TRUE(desktop);
    const auto turns = [&] { return monitor(*desktop, "HEADLESS-2")->turns; };
    for (const auto& [degrees, quarters] :
         std::vector<std::pair<std::string, std::int64_t>>{{"90", 1}, {"180", 2}, {"270", 3}, {"normal", 0}}) {
        command("output HEADLESS-2 transform " + degrees);
        await([&, wanted = quarters] { return turns() == wanted; });
    }
    EXPECT_GE(changes, 4);
}

TEST_F(WaylandDesktopTest, AMonitorThatIsTurnedByAQuarterShowsAPartWithItsSidesSwapped) {
    const auto desktop = openWaylandDesktop(loop, [this] { ++changes; });
    ASSERT_TRUE(desktop);
    command("output HEADLESS-2 transform 90 position 1280 0");
    const touch::Region expected{{1280.0 / 1760.0, 0.0}, {480.0 / 1760.0, 640.0 / 800.0}};
    await([&] { return monitor(*desktop, "HEADLESS-2")->place == expected; });
    command("output HEADLESS-2 transform normal position 1280 320");
}

TEST_F(WaylandDesktopTest, MonitorsThatComeTakeTheirPart) {
    const auto desktop = openWaylandDesktop(loop, [this] { ++changes; });
    ASSERT_TRUE(desktop);
    command("create_output");
    await([&] { return monitor(*desktop, "HEADLESS-3") != nullptr; });
    command("output HEADLESS-3 resolution 640x800 position 1920 0");
    const touch::Region expected{{0.75, 0.0}, {0.25, 1.0}};
    await([&] { return monitor(*desktop, "HEADLESS-3")->place == expected; });
    EXPECT_EQ(monitor(*desktop, "HEADLESS-1")->place, (touch::Region{{0.0, 0.0}, {0.5, 1.0}}));
}

TEST_F(WaylandDesktopTest, WithoutACompositorThereIsNoSuchDesktop) {
    const EnvironmentVariable server("DISPLAY", "");
    const EnvironmentVariable nowhere("WAYLAND_DISPLAY", "no-such-compositor");
    EXPECT_FALSE(openWaylandDesktop(loop, [] {}));
    const EnvironmentVariable none("WAYLAND_DISPLAY", "");
    EXPECT_FALSE(openWaylandDesktop(loop, [] {}));
    EXPECT_FALSE(openDesktop(loop, [] {}));
}

/// The last one, since nothing is left of the compositor.
TEST_F(WaylandDesktopTest, ZACompositorThatEndsLeavesWhatWasKnownAndWakesNobodyUp) {
    const auto desktop = openWaylandDesktop(loop, [this] { ++changes; });
    ASSERT_TRUE(desktop);
    const touch::Surroundings before = desktop->surroundings();
    const char* compositor = std::getenv("KELVO_TEST_COMPOSITOR");
    ASSERT_TRUE(compositor);
    ASSERT_EQ(::kill(std::atoi(compositor), SIGTERM), 0);
    int looks = 0;
    // Once it has ended, only the time that passes ends the wait.
    for (int i = 0; i < 100 && looks != 2; ++i) {
        looks = 0;
        loop.runUntil(
            [&] {
                ++looks;
                return false;
            },
            0.05);
    }
    EXPECT_EQ(looks, 2);
    EXPECT_EQ(desktop->surroundings(), before);
    EXPECT_EQ(changes, 0);
}

} // namespace

} // namespace kelvo
