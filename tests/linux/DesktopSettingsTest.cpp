#include "linux/DesktopSettings.h"

#include "linux/BusConnection.h"
#include "linux/CommandOutput.h"
#include "linux/PollRunLoop.h"
#include "support/EnvironmentVariable.h"
#include "support/PrivateBus.h"
#include "support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace kelvo {

namespace {

using touch::Surroundings;
using namespace std::chrono_literals;

class Commands : public testing::Test {
protected:
    std::string outputOf(const std::vector<std::string>& words) {
        std::optional<std::string> printed;
        const CommandOutput command(loop, words, [&](const std::string& text) { printed = text; });
        loop.runUntil([&] { return printed.has_value(); }, 20.0);
        return printed.value_or("nothing was told");
    }
    PollRunLoop loop;
};

TEST_F(Commands, GiveAllThatTheyPrint) {
    EXPECT_EQ(outputOf({"sh", "-c", "printf 'one\\n'; printf 'two' >&2; printf three"}), "one\nthree");
    EXPECT_EQ(outputOf({"sh", "-c", "head -c 200000 /dev/zero"}).size(), 200000U);
}

TEST_F(Commands, ThatCannotBeRunPrintNothing) { EXPECT_EQ(outputOf({"no-such-program-at-all"}), ""); }

TEST_F(Commands, ThatAreNoLongerWantedAreEnded) {
    bool isTold = false;
    {
        const CommandOutput command(loop, {"sleep", "1000"}, [&](const std::string&) { isTold = true; });
    }
    loop.runUntil([] { return false; }, 0.0);
    EXPECT_FALSE(isTold);
}

TEST(KdeFiles, SayTheDoubleClickAndTheTouchpadsThatScrollNaturally) {
    const Surroundings found = settingsInKdeFiles("[General]\nDoubleClickInterval=100\n\n[KDE]\nSingleClick=false\n"
                                                  "DoubleClickInterval = 350\n",
                                                  "[Libinput][0][2][Panel [1] Touchpad]\nNaturalScroll=true\n"
                                                  "[Libinput][0][2][Other]\nNaturalScroll=false\n[Mouse]\n"
                                                  "NaturalScroll=true");
    EXPECT_EQ(found.doubleClickInterval, 350ms);
    EXPECT_EQ(found.naturalTouchpads, std::vector<std::string>{"Panel [1] Touchpad"});
    EXPECT_FALSE(found.scrollsNaturally);
}

TEST(KdeFiles, ThatAreDamagedSayNothing) {
    for (const std::string text :
         {"", "[KDE]", "[KDE]\nDoubleClickInterval", "[KDE]\nDoubleClickInterval=soon", "[KDE]\nDoubleClickInterval=-5",
          "DoubleClickInterval=5", "[Libinput][\nNaturalScroll="}) {
        EXPECT_EQ(settingsInKdeFiles(text, text), Surroundings()) << text;
    }
}

class DesktopSettingsTest : public testing::Test {
protected:
    template <typename Condition>
    void await(const Condition& holds) {
        loop.runUntil(holds, 20.0);
        EXPECT_TRUE(holds());
    }

    TemporaryDirectory home;
    PrivateBus bus;
    EnvironmentVariable busVariable{"DBUS_SESSION_BUS_ADDRESS", bus.address()};
    EnvironmentVariable configVariable{"XDG_CONFIG_HOME", home.path("config")};
    PollRunLoop loop;
    int changes = 0;
};

TEST_F(DesktopSettingsTest, OfKdeAreFollowed) {
    const EnvironmentVariable desktop("XDG_CURRENT_DESKTOP", "KDE");
    home.write("config/kdeglobals", "[KDE]\nDoubleClickInterval=300\n");
    const auto settings = openDesktopSettings(loop, [this] { ++changes; });
    ASSERT_TRUE(settings);
    EXPECT_EQ(settings->surroundings().doubleClickInterval, 300ms);
    home.write("config/other", "");
    home.write("config/new", "[KDE]\nDoubleClickInterval=500\n");
    std::filesystem::rename(home.path("config/new"), home.path("config/kdeglobals"));
    await([&] { return settings->surroundings().doubleClickInterval == 500ms; });
    EXPECT_EQ(changes, 1);
}

TEST_F(DesktopSettingsTest, OfGnomeAreFollowed) {
    const EnvironmentVariable desktop("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
    const EnvironmentVariable path("PATH", home.path("bin") + ":" + std::getenv("PATH"));
    home.write("bin/gsettings", "#!/bin/sh\ncat \"" + home.path() + "/$2.$3\"\n");
    std::filesystem::permissions(home.path("bin/gsettings"), std::filesystem::perms::owner_all);
    home.write("org.gnome.desktop.peripherals.mouse.double-click", "400\n");
    home.write("org.gnome.desktop.peripherals.touchpad.natural-scroll", "true\n");
    const auto settings = openDesktopSettings(loop, [this] { ++changes; });
    ASSERT_TRUE(settings);
    await([&] {
        return settings->surroundings().doubleClickInterval == 400ms && settings->surroundings().scrollsNaturally;
    });

    home.write("org.gnome.desktop.peripherals.mouse.double-click", "700\n");
    home.write("org.gnome.desktop.peripherals.touchpad.natural-scroll", "false\n");
    const auto writer = BusConnection::open(loop, bus.address());
    ASSERT_TRUE(writer);
    ASSERT_GE(sd_bus_emit_signal(writer->bus(), "/ca/desrt/dconf/Writer/user", "ca.desrt.dconf.Writer", "Notify",
                                 "sass", "/org/gnome/desktop/peripherals/mouse/double-click", 1, "", "tag"),
              0);
    writer->process();
    await([&] {
        return settings->surroundings().doubleClickInterval == 700ms && !settings->surroundings().scrollsNaturally;
    });
}

TEST_F(DesktopSettingsTest, OfADesktopThatIsNotKnownAreNone) {
    const EnvironmentVariable socket("SWAYSOCK", "");
    const EnvironmentVariable desktop("XDG_CURRENT_DESKTOP", "sway");
    EXPECT_FALSE(openDesktopSettings(loop, [] {}));
    const EnvironmentVariable none("XDG_CURRENT_DESKTOP", "");
    EXPECT_FALSE(openDesktopSettings(loop, [] {}));
}

} // namespace

} // namespace kelvo
