#include "linux/X11Desktop.h"

#include "linux/Desktop.h"
#include "linux/PollRunLoop.h"
#include "linux/XSettings.h"
#include "support/EnvironmentVariable.h"

#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace kelvo {

namespace {

using touch::Monitor;
using touch::Region;
using touch::Surroundings;
using namespace std::chrono_literals;

/// Settings as a manager of the desktop writes them, in the order of bytes of either kind of machine.
class Settings {
public:
    explicit Settings(bool isBigEndian) : isBigEndian_(isBigEndian) {
        bytes = {static_cast<std::uint8_t>(isBigEndian ? 1 : 0), 0, 0, 0};
        add(7, 4);
    }
    Settings& count(std::uint32_t number) {
        add(number, 4);
        return *this;
    }
    Settings& integer(const std::string& name, std::int32_t value) {
        head(0, name);
        add(static_cast<std::uint32_t>(value), 4);
        return *this;
    }
    Settings& text(const std::string& name, const std::string& value) {
        head(1, name);
        add(static_cast<std::uint32_t>(value.size()), 4);
        addText(value);
        return *this;
    }
    Settings& colour(const std::string& name) {
        head(2, name);
        add(1, 4);
        add(2, 4);
        return *this;
    }
    std::vector<std::uint8_t> bytes;

private:
    void add(std::uint32_t value, std::size_t size) {
        for (std::size_t i = 0; i < size; ++i) {
            const std::size_t shift = isBigEndian_ ? size - 1 - i : i;
            bytes.push_back(static_cast<std::uint8_t>(value >> (8 * shift)));
        }
    }
    void addText(const std::string& text) {
        bytes.insert(bytes.end(), text.begin(), text.end());
        while (bytes.size() % 4 != 0) bytes.push_back(0);
    }
    void head(std::uint8_t kind, const std::string& name) {
        bytes.push_back(kind);
        bytes.push_back(0);
        add(static_cast<std::uint32_t>(name.size()), 2);
        addText(name);
        add(3, 4);
    }

    bool isBigEndian_;
};

TEST(XSettings, AreReadInEitherOrderOfBytes) {
    for (const bool isBigEndian : {false, true}) {
        Settings settings(isBigEndian);
        settings.count(4).text("Net/ThemeName", "Clear").colour("Own/Colour").integer("Net/DoubleClickDistance", 7);
        settings.integer("Net/DoubleClickTime", 250);
        EXPECT_EQ(xSetting(settings.bytes, "Net/DoubleClickTime"), 250);
        EXPECT_EQ(xSetting(settings.bytes, "Net/DoubleClickDistance"), 7);
        EXPECT_EQ(xSetting(settings.bytes, "Net/ThemeName"), std::nullopt);
        EXPECT_EQ(xSetting(settings.bytes, "Net/Double"), std::nullopt);
    }
}

TEST(XSettings, ThatEndTooEarlySayNothingMore) {
    Settings settings(false);
    settings.count(2).text("a", "text").integer("Net/DoubleClickTime", 250);
    for (std::size_t size = 0; size < settings.bytes.size(); ++size) {
        EXPECT_EQ(xSetting(std::span(settings.bytes.data(), size), "Net/DoubleClickTime"), std::nullopt) << size;
    }
    // A text that says that it is longer than all there is.
    settings.bytes[12 + 4 + 4 + 4] = 0xFF;
    settings.bytes[12 + 4 + 4 + 7] = 0xFF;
    EXPECT_EQ(xSetting(settings.bytes, "Net/DoubleClickTime"), std::nullopt);
    const std::vector<std::uint8_t> many{0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(xSetting(many, "x"), std::nullopt);
}

TEST(XResources, AreFoundByTheirLastComponent) {
    EXPECT_EQ(xResource("*multiClickTime:\t300\n", "multiClickTime"), 300);
    EXPECT_EQ(xResource("a: 1\nXterm*multiClickTime: 20 \nmultiClickTime:250", "multiClickTime"), 250);
    EXPECT_EQ(xResource("*myMultiClickTime: 300\n*amultiClickTime: 4", "multiClickTime"), std::nullopt);
    EXPECT_EQ(xResource("*multiClickTime: soon", "multiClickTime"), std::nullopt);
    EXPECT_EQ(xResource("*multiClickTime", "multiClickTime"), std::nullopt);
    EXPECT_EQ(xResource("", "multiClickTime"), std::nullopt);
}

/// On the X server that the environment names, which is this test's own.
class X11DesktopTest : public testing::Test {
protected:
    X11DesktopTest() {
        run("xrandr --delmonitor LEFT; xrandr --delmonitor RIGHT; xrdb -remove");
        desktop = openX11Desktop(loop, [this] { ++changes; });
    }
    ~X11DesktopTest() override { run("xrandr --delmonitor LEFT; xrandr --delmonitor RIGHT; xrdb -remove"); }

    /// For the server's sake alone: what was not there is no fault.
    static void run(const std::string& commands) { (void)!std::system(("(" + commands + ") >/dev/null 2>&1").c_str()); }

    template <typename Condition>
    void await(const Condition& holds) {
        loop.runUntil(holds, 20.0);
        EXPECT_TRUE(holds());
    }
    [[nodiscard]] const Surroundings& now() const { return desktop->surroundings(); }

    PollRunLoop loop;
    int changes = 0;
    std::unique_ptr<touch::DesktopWatch> desktop;
};

TEST_F(X11DesktopTest, OneMonitorIsTheWholeDesktop) {
    ASSERT_TRUE(desktop);
    ASSERT_EQ(now().monitors.size(), 1U);
    EXPECT_EQ(now().monitors[0].name, "screen");
    EXPECT_EQ(now().monitors[0].place, Region());
    EXPECT_EQ(now().monitors[0].turns, 0);
    EXPECT_FALSE(now().turnsTouches);
    EXPECT_EQ(now().doubleClickInterval, std::nullopt);
    EXPECT_TRUE(now().naturalTouchpads.empty());
}

TEST_F(X11DesktopTest, MonitorsAreFollowedAsTheyComeAndGo) {
    ASSERT_TRUE(desktop);
    run("xrandr --setmonitor LEFT 960/508x1080/286+0+0 screen && xrandr --setmonitor RIGHT 960/254x540/143+960+540 "
        "none");
    await([&] { return now().monitors.size() == 2; });
    EXPECT_GT(changes, 0);
    const Monitor* right = touch::monitorOf(now().monitors, "RIGHT", std::nullopt);
    ASSERT_TRUE(right);
    EXPECT_EQ(right->place, (Region{{0.5, 0.5}, {0.5, 0.5}}));
    EXPECT_EQ(right->millimetres, (touch::Size{254.0, 143.0}));
    const Monitor* left = touch::monitorOf(now().monitors, "LEFT", std::nullopt);
    ASSERT_TRUE(left);
    EXPECT_EQ(left->place, (Region{{0.0, 0.0}, {0.5, 1.0}}));
    run("xrandr --delmonitor RIGHT");
    await([&] { return now().monitors.size() == 1; });
}

TEST_F(X11DesktopTest, TheDoubleClickOfTheResourcesIsFollowed) {
    ASSERT_TRUE(desktop);
    run("echo '*multiClickTime: 640' | xrdb -merge");
    await([&] { return now().doubleClickInterval == 640ms; });
    run("xrdb -remove");
    await([&] { return !now().doubleClickInterval; });
}

/// The program that gives X clients the desktop's settings.
class SettingsManager {
public:
    SettingsManager() : connection_(xcb_connect(nullptr, nullptr)) {
        const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
        window_ = xcb_generate_id(connection_);
        xcb_create_window(connection_, 0, window_, screen->root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                          screen->root_visual, 0, nullptr);
        give(0);
        xcb_set_selection_owner(connection_, window_, atom("_XSETTINGS_S0"), XCB_CURRENT_TIME);
        xcb_client_message_event_t told{};
        told.response_type = XCB_CLIENT_MESSAGE;
        told.format = 32;
        told.window = screen->root;
        told.type = atom("MANAGER");
        told.data.data32[1] = atom("_XSETTINGS_S0");
        told.data.data32[2] = window_;
        xcb_send_event(connection_, 0, screen->root, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&told));
        xcb_flush(connection_);
    }
    ~SettingsManager() { xcb_disconnect(connection_); }
    SettingsManager(const SettingsManager&) = delete;
    SettingsManager& operator=(const SettingsManager&) = delete;

    void give(std::int32_t milliseconds) {
        Settings settings(false);
        settings.count(2).integer("Net/DoubleClickTime", milliseconds).integer("Net/DoubleClickDistance", 9);
        const xcb_atom_t property = atom("_XSETTINGS_SETTINGS");
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, property, property, 8,
                            static_cast<std::uint32_t>(settings.bytes.size()), settings.bytes.data());
        xcb_flush(connection_);
    }

private:
    [[nodiscard]] xcb_atom_t atom(const std::string& name) {
        auto* reply = xcb_intern_atom_reply(
            connection_, xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.c_str()),
            nullptr);
        const xcb_atom_t found = reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
        std::free(reply);
        return found;
    }

    xcb_connection_t* connection_;
    xcb_window_t window_ = 0;
};

TEST_F(X11DesktopTest, TheDesktopsOwnDoubleClickComesBeforeTheResourcesAndIsFollowed) {
    ASSERT_TRUE(desktop);
    run("echo '*multiClickTime: 640' | xrdb -merge");
    {
        SettingsManager manager;
        manager.give(300);
        await([&] { return now().doubleClickInterval == 300ms; });
        EXPECT_EQ(now().doubleClickDistance, 9.0);
        manager.give(500);
        await([&] { return now().doubleClickInterval == 500ms; });
    }
    await([&] { return now().doubleClickInterval == 640ms; });
    EXPECT_EQ(now().doubleClickDistance, std::nullopt);
}

TEST_F(X11DesktopTest, TheDesktopIsThatOfTheServerWhereNoCompositorAnswers) {
    const EnvironmentVariable nowhere("WAYLAND_DISPLAY", "no-such-compositor");
    desktop = openDesktop(loop, [] {});
    ASSERT_TRUE(desktop);
    EXPECT_FALSE(desktop->surroundings().turnsTouches);
}

TEST_F(X11DesktopTest, WithoutAServerThereIsNoSuchDesktop) {
    const EnvironmentVariable nowhere("DISPLAY", ":4711");
    EXPECT_FALSE(openX11Desktop(loop, [] {}));
    const EnvironmentVariable none("DISPLAY", "");
    EXPECT_FALSE(openX11Desktop(loop, [] {}));
}

} // namespace

} // namespace kelvo
