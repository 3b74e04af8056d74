#include "peers/driver/TouchDriver.h"

#include "linux/PollRunLoop.h"
#include "peers/DriverCommand.h"
#include "peers/JsonLine.h"
#include "peers/PeerPlatform.h"
#include "peers/driver/DoubleClickCommand.h"
#include "support/EnvironmentVariable.h"
#include "support/EventNode.h"
#include "support/PrivateBus.h"
#include "support/TemporaryDirectory.h"
#include "touch/Recording.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using support::EventNode;

std::int64_t now() {
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// What the running driver answers on the bus.
std::string states() { return kelvo::performAndWait(platform::CFRunLoop::getCurrent(), {"states"}).text; }

/// A source that tells what a test says.
class ScriptedSource final : public kelvo::DisplaySource {
public:
    explicit ScriptedSource(Handlers& handlers) : handlers_(handlers) {}
    void begin(Handlers handlers) override { handlers_ = std::move(handlers); }

private:
    Handlers& handlers_;
};

/// A panel and its four virtual devices.
struct Machine {
    EventNode panel;
    std::array<std::unique_ptr<EventNode>, kelvo::kVirtualDevices> devices;

    explicit Machine(const EventNode::Device& device = EventNode::panel()) : panel(device) {
        for (auto& each : devices) each = std::make_unique<EventNode>(EventNode::Device{});
    }

    kelvo::FoundDisplay found(std::uint32_t id, const std::string& identity = "") {
        kelvo::FoundDisplay display{
            .id = id, .name = "Panel", .identity = identity, .file = {}, .nodes = {}, .devices = {}};
        display.file = kelvo::Descriptor(panel.open());
        for (std::size_t i = 0; i < devices.size(); ++i) {
            display.nodes.at(i) = kelvo::Descriptor(devices.at(i)->open());
        }
        return display;
    }
    [[nodiscard]] const std::vector<std::vector<input_event>>& touches() const { return devices[0]->written; }
    [[nodiscard]] const std::vector<std::vector<input_event>>& keys() const { return devices[3]->written; }
};

/// A desktop that is as a test says.
struct FakeDesktop {
    touch::Surroundings seen;
    std::function<void()> changed;
    int opened = 0;

    kelvo::TouchDriver::OpenDesktop opener() {
        return [this](std::function<void()> tell) {
            ++opened;
            changed = std::move(tell);
            return std::make_unique<Watch>(*this);
        };
    }

private:
    class Watch final : public touch::DesktopWatch {
    public:
        explicit Watch(const FakeDesktop& desktop) : desktop_(desktop) {}
        [[nodiscard]] const touch::Surroundings& surroundings() const override { return desktop_.seen; }

    private:
        const FakeDesktop& desktop_;
    };
};

class TouchDriverTest : public testing::Test {
protected:
    TouchDriverTest() {
        EXPECT_TRUE(driver.start());
        driver.use(std::make_unique<ScriptedSource>(tell));
    }

    void serve() {
        bool isOver = false;
        loop.scheduleTimer(0.0, [&] { loop.scheduleTimer(0.0, [&] { isOver = true; }); });
        loop.runUntil([&] { return isOver; }, 20.0);
    }
    void come(kelvo::FoundDisplay found) {
        tell.came(std::move(found));
        serve();
    }
    void drag(Machine& on) {
        for (std::int32_t x = 1000; x < 1400; x += 20) {
            on.panel.touch(0, 5, x, 500);
            on.panel.report(now());
            serve();
        }
    }
    void tapWithThree() {
        for (const int slot : {0, 1, 2}) machine.panel.touch(slot, 10 + slot, 900 + 200 * slot, 500);
        machine.panel.report(now());
        serve();
        for (const int slot : {0, 1, 2}) machine.panel.lift(slot);
        machine.panel.report(now());
        serve();
    }
    void setLookUp(const std::string& action) {
        home.write("Library/Preferences/KelvoTouchDisplay/Actions.plist",
                   "<plist version=\"1.0\"><dict><key>LookUp</key><dict>" + action + "</dict></dict></plist>");
    }
    void lift(Machine& on) {
        on.panel.lift(0);
        on.panel.report(now());
        serve();
    }

    TemporaryDirectory home;
    PrivateBus bus;
    EnvironmentVariable homeVariable{"HOME", home.path()};
    EnvironmentVariable libraryVariable{"KELVO_LOCAL_LIBRARY", home.path("machine")};
    EnvironmentVariable busVariable{"DBUS_SESSION_BUS_ADDRESS", bus.address()};
    kelvo::PollRunLoop loop;
    kelvo::PeerPlatform services{"touch-driver-test", loop};
    Machine machine;
    kelvo::DisplaySource::Handlers tell;
    std::vector<std::size_t> counts;
    FakeDesktop desktop;
    kelvo::TouchDriver driver{loop, [this](std::size_t count) { counts.push_back(count); }};
};

TEST_F(TouchDriverTest, ADisplayThatComesIsConnectedAndHeld) {
    come(machine.found(1));
    EXPECT_EQ(driver.core().status(), R"({"devices": ["Panel"], "enabled": true})");
    EXPECT_GE(machine.panel.grabber(), 0);
    EXPECT_EQ(counts, std::vector<std::size_t>{1});
}

TEST_F(TouchDriverTest, AFingerThatDragsIsATouchOnTheVirtualScreen) {
    come(machine.found(1));
    drag(machine);
    lift(machine);
    ASSERT_FALSE(machine.touches().empty());
    const input_event& last = machine.touches().back()[1];
    EXPECT_EQ(last.code, ABS_MT_TRACKING_ID);
    EXPECT_EQ(last.value, -1);
}

TEST_F(TouchDriverTest, ADisplayThatIsUnpluggedUnderAFingerLeavesNothingDown) {
    come(machine.found(1));
    drag(machine);
    machine.panel.unplug();
    tell.went(1);
    serve();
    EXPECT_EQ(driver.core().status(), R"({"devices": [], "enabled": true})");
    EXPECT_EQ(machine.touches().back()[1].value, -1);
    EXPECT_EQ(counts, (std::vector<std::size_t>{1, 0}));
}

TEST_F(TouchDriverTest, ADisplayThatComesAgainHasItsNameAgain) {
    come(machine.found(1, "Maker_1"));
    tell.went(1);
    serve();
    come(machine.found(2, "Maker_1"));
    EXPECT_EQ(driver.core().status(), R"({"devices": ["Panel"], "enabled": true})");
}

TEST_F(TouchDriverTest, ASecondDisplayLikeTheFirstHasANameOfItsOwn) {
    Machine second;
    come(machine.found(1, "Maker_1"));
    come(second.found(2, "Maker_2"));
    EXPECT_EQ(driver.core().status(), R"({"devices": ["Panel", "Panel 2"], "enabled": true})");
    drag(second);
    EXPECT_FALSE(second.touches().empty());
    EXPECT_TRUE(machine.touches().empty());
}

/// How many frames a finger that goes 1.5 % of the glass leads to.
class APanelWithoutASize : public TouchDriverTest {
protected:
    static EventNode::Device device() {
        auto device = EventNode::panel();
        for (auto& [code, axis] : device.axes) axis.resolution = 0;
        return device;
    }
    std::size_t framesOfALittleMovement() {
        Machine small(device());
        come(small.found(7));
        for (std::int32_t x = 1000; x <= 1030; x += 10) {
            small.panel.touch(0, 5, x, 500);
            small.panel.report(now());
            serve();
        }
        lift(small);
        const std::size_t frames = small.touches().size();
        tell.went(7);
        serve();
        return frames;
    }
    void know(const std::string& entry) {
        home.write("machine/Preferences/KelvoTouchDisplay/DeviceList.plist",
                   R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict><key>04f3:0732</key><dict>)" +
                       entry + "</dict></dict></plist>");
    }
};

TEST_F(APanelWithoutASize, HasTheSizeThatTheMachinesListSays) {
    constexpr std::size_t kTap = 2;
    know("<key>Width</key><integer>100</integer><key>Height</key><integer>50</integer>");
    EXPECT_EQ(framesOfALittleMovement(), kTap);
    know("<key>Width</key><integer>1000</integer><key>Height</key><integer>500</integer>");
    EXPECT_GT(framesOfALittleMovement(), kTap);
}

TEST_F(APanelWithoutASize, HasTheNameThatTheMachinesListSays) {
    know("<key>Name</key><string>Kelvo/15</string>");
    come(machine.found(1));
    EXPECT_EQ(driver.core().status(), R"({"devices": ["Kelvo 15"], "enabled": true})");
}

TEST_F(TouchDriverTest, ThePanelsOwnResolutionIsStoredWithItsSettings) {
    home.write("machine/Preferences/KelvoTouchDisplay/SupportResolutionList.plist",
               R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict><key>04F3:0732</key><dict>)"
               "<key>Width</key><integer>1920</integer><key>Height</key><integer>1080</integer></dict></dict></plist>");
    come(machine.found(1));
    const auto settings = platform::NSMutableDictionary::dictionaryWithContentsOfFile(
        home.path("Library/Preferences/KelvoTouchDisplay/Settings_Panel.plist"));
    EXPECT_EQ(settings.objectForKey("NativeWidth").longLongValue(), 1920);
    EXPECT_EQ(settings.objectForKey("NativeHeight").longLongValue(), 1080);
    EXPECT_TRUE(settings.objectForKey("DriverVersion").string());
}

/// One finger is the pointer, on a desktop of two monitors.
class ADriverThatSeesTheDesktop : public TouchDriverTest {
protected:
    ADriverThatSeesTheDesktop() {
        home.write("Library/Preferences/KelvoTouchDisplay/Settings_Panel.plist", settings("<key>FingerMode</key>"
                                                                                          "<string>pointer</string>"));
        // The glass is 200 by 100 mm.
        desktop.seen.monitors = {monitor("HDMI-1", {200.0, 100.0}, {{0.0, 0.5}, {0.5, 0.5}}),
                                 monitor("DP-1", {600.0, 340.0}, {{0.5, 0.0}, {0.5, 1.0}})};
        driver.seeDesktopBy(desktop.opener());
    }

    static std::string settings(const std::string& entries) {
        return R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>)" + entries + "</dict></plist>";
    }
    static touch::Monitor monitor(const std::string& name, touch::Size millimetres, touch::Region place) {
        touch::Monitor made;
        made.name = name;
        made.millimetres = millimetres;
        made.place = place;
        return made;
    }

    /// Where the pointer goes for a tap a quarter from the left and a tenth from the top, as shares of the desktop.
    touch::Point pointerOfATap() {
        auto& written = machine.devices[1]->written;
        written.clear();
        machine.panel.touch(0, 5, 500, 100);
        machine.panel.report(now());
        serve();
        lift(machine);
        touch::Point place{-1.0, -1.0};
        for (const auto& frame : written) {
            for (const input_event& event : frame) {
                if (event.type == EV_ABS && event.code == ABS_X) place.x = event.value / 65535.0;
                if (event.type == EV_ABS && event.code == ABS_Y) place.y = event.value / 65535.0;
            }
        }
        return place;
    }
    void expectTapAt(double x, double y) {
        const touch::Point place = pointerOfATap();
        EXPECT_NEAR(place.x, x, 1e-4);
        EXPECT_NEAR(place.y, y, 1e-4);
    }
    [[nodiscard]] std::int64_t stored(const std::string& key) const {
        return platform::NSMutableDictionary::dictionaryWithContentsOfFile(
                   home.path("Library/Preferences/KelvoTouchDisplay/Settings_Panel.plist"))
            .objectForKey(key)
            .longLongValue();
    }
};

TEST_F(ADriverThatSeesTheDesktop, LooksAtItOnceADisplayHasCome) {
    EXPECT_EQ(desktop.opened, 0);
    come(machine.found(1));
    EXPECT_EQ(desktop.opened, 1);
    Machine second;
    come(second.found(2));
    EXPECT_EQ(desktop.opened, 1);
}

TEST_F(ADriverThatSeesTheDesktop, PointsAtTheMonitorThatIsAsLargeAsTheGlass) {
    come(machine.found(1));
    expectTapAt(0.125, 0.55);
}

TEST_F(ADriverThatSeesTheDesktop, PointsAtTheMonitorThatCalibrationBoundTheDisplayTo) {
    desktop.seen.monitors[0].millimetres = touch::Size{600.0, 340.0};
    come(machine.found(1));
    // Two that are alike are not guessed among: the pointer spans the desktop.
    expectTapAt(0.25, 0.1);
    touch::Settings bound;
    bound.fingerMode = touch::FingerMode::Pointer;
    bound.monitor = "DP-1";
    driver.setSettings("Panel", bound);
    expectTapAt(0.625, 0.1);
}

TEST_F(ADriverThatSeesTheDesktop, FollowsItsChanges) {
    come(machine.found(1));
    desktop.seen.monitors[0].turns = 1;
    desktop.changed();
    // (y, 1 - x) of the tap, within the monitor.
    expectTapAt(0.05, 0.875);
    desktop.seen.monitors = {monitor("DP-1", {600.0, 340.0}, touch::Region())};
    desktop.changed();
    expectTapAt(0.25, 0.1);
    desktop.seen.monitors.clear();
    desktop.changed();
    expectTapAt(0.25, 0.1);
}

TEST_F(ADriverThatSeesTheDesktop, StoresTheResolutionOfTheDisplaysMonitor) {
    desktop.seen.monitors[0].nativePixels = touch::Size{1280.0, 800.0};
    desktop.seen.monitors[1].nativePixels = touch::Size{3840.0, 2160.0};
    come(machine.found(1));
    EXPECT_EQ(stored("NativeWidth"), 1280);
    EXPECT_EQ(stored("NativeHeight"), 800);
    desktop.seen.monitors[0].nativePixels = touch::Size{1920.0, 1080.0};
    desktop.changed();
    EXPECT_EQ(stored("NativeWidth"), 1920);
    // What is no longer known was so once.
    desktop.seen.monitors.clear();
    desktop.changed();
    EXPECT_EQ(stored("NativeHeight"), 1080);
}

TEST_F(ADriverThatSeesTheDesktop, SaysHowToLengthenADoubleClickThatIsTooShortForADisplay) {
    const EnvironmentVariable variable("XDG_CURRENT_DESKTOP", "pop:GNOME");
    come(machine.found(1));
    const auto slow = [&] { return states().find("slowDoubleClick\": {}") == std::string::npos; };
    EXPECT_FALSE(slow()) << "a desktop that does not say";
    desktop.seen.doubleClickInterval = std::chrono::milliseconds(499);
    desktop.changed();
    EXPECT_NE(states().find("gsettings set org.gnome.desktop.peripherals.mouse double-click 500"), std::string::npos)
        << states();
    desktop.seen.doubleClickInterval = std::chrono::milliseconds(500);
    desktop.changed();
    EXPECT_FALSE(slow());
}

TEST(ACommandForDoubleClicks, IsThatOfTheDesktopOrOfTheXServer) {
    const touch::Time interval = std::chrono::microseconds(450'001);
    for (const auto& [name, command] : std::vector<std::pair<const char*, const char*>>{
             {"KDE", "kwriteconfig5 --file kdeglobals --group KDE --key DoubleClickInterval 451"},
             {"ubuntu:GNOME", "gsettings set org.gnome.desktop.peripherals.mouse double-click 451"},
             {"XFCE", "xfconf-query -c xsettings -p /Net/DoubleClickTime -s 451"},
             {"other", "echo '*multiClickTime: 451' | xrdb -merge"},
             {"", "echo '*multiClickTime: 451' | xrdb -merge"}}) {
        const EnvironmentVariable variable("XDG_CURRENT_DESKTOP", name);
        EXPECT_EQ(kelvo::commandForDoubleClick(interval), command);
    }
}

TEST_F(TouchDriverTest, ADriverThatIsSwitchedOffLetsGoOfItsDisplays) {
    come(machine.found(1));
    driver.core().setDriverEnabled(false);
    EXPECT_LT(machine.panel.grabber(), 0);
    drag(machine);
    EXPECT_TRUE(machine.touches().empty());
    lift(machine);
    driver.core().setDriverEnabled(true);
    EXPECT_GE(machine.panel.grabber(), 0);
}

TEST_F(TouchDriverTest, ADisplayThatComesWhileTheDriverIsOffIsLeftAlone) {
    driver.core().setDriverEnabled(false);
    come(machine.found(1));
    EXPECT_EQ(driver.core().status(), R"({"devices": ["Panel"], "enabled": false})");
    EXPECT_EQ(machine.panel.grabs, 0);
}

TEST_F(TouchDriverTest, ADisplayOfAnotherSessionStaysConnectedAndComesBack) {
    come(machine.found(1));
    tell.suspended(1);
    serve();
    EXPECT_EQ(driver.core().status(), R"({"devices": ["Panel"], "enabled": true, "inactive": ["Panel"]})");
    EXPECT_LT(machine.panel.grabber(), 0);
    come(machine.found(1));
    EXPECT_EQ(driver.core().status(), R"({"devices": ["Panel"], "enabled": true})");
    EXPECT_GE(machine.panel.grabber(), 0);
    drag(machine);
    EXPECT_FALSE(machine.touches().empty());
}

TEST_F(TouchDriverTest, ADisplayThatIsRevokedUnderAFingerIsHeldAgainWhenItComesBack) {
    kelvo::FoundDisplay found = machine.found(1);
    const int file = found.file.number();
    come(std::move(found));
    drag(machine);
    ASSERT_EQ(machine.panel.answerIoctl(file, EVIOCREVOKE, nullptr), 0);
    serve();
    EXPECT_EQ(machine.touches().back()[1].value, -1);
    lift(machine);
    come(machine.found(1));
    EXPECT_GE(machine.panel.grabber(), 0);
}

TEST_F(TouchDriverTest, TheEndLetsGoOfEverything) {
    come(machine.found(1));
    drag(machine);
    driver.stop();
    EXPECT_LT(machine.panel.grabber(), 0);
    EXPECT_EQ(machine.touches().back()[1].value, -1);
}

TEST_F(TouchDriverTest, WhatIsNoTouchDisplayIsNotConnected) {
    auto device = EventNode::panel();
    device.properties = {};
    EventNode mouse(device);
    kelvo::FoundDisplay found = machine.found(1);
    found.file = kelvo::Descriptor(mouse.open());
    come(std::move(found));
    EXPECT_EQ(driver.core().status(), R"({"devices": [], "enabled": true})");
}

TEST_F(TouchDriverTest, ARecordingHasWhatThePanelSentAndPlaysTheSameAgain) {
    come(machine.found(1));
    const std::string path = home.path("fingers.events");
    driver.beginRecording("Panel", path);
    drag(machine);
    lift(machine);
    driver.endRecording("Panel");
    const touch::Recording recording = touch::readRecording(home.read("fingers.events"));
    EXPECT_EQ(recording.name, "Panel");
    EXPECT_EQ(recording.vendor, 0x04f3);
    EXPECT_EQ(recording.slots, 10U);
    EXPECT_EQ(recording.x.maximum, 2000);
    EXPECT_EQ(recording.y.resolution, 10);
    std::size_t frames = 0;
    touch::Frame last;
    recording.play(touch::Glass(recording.x, recording.y), [&](const touch::Frame& frame) {
        if (!frame.contacts.empty()) last = frame;
        ++frames;
    });
    EXPECT_EQ(frames, 21U);
    ASSERT_EQ(last.contacts.size(), 1U);
    EXPECT_DOUBLE_EQ(last.contacts[0].place.x, 138.0);
    const std::string text = home.read("fingers.events");
    EXPECT_NE(text.find("# settings: {"), std::string::npos);
    EXPECT_NE(text.find("\"step\": \"down\""), std::string::npos) << text;
}

TEST_F(TouchDriverTest, ARecordingOverwritesNoFile) {
    come(machine.found(1));
    home.write("diary", "mine");
    EXPECT_THROW(driver.beginRecording("Panel", home.path("diary")), std::runtime_error);
    EXPECT_THROW(driver.beginRecording("Panel", "relative"), std::runtime_error);
    EXPECT_THROW(driver.beginRecording("Panel", home.path("no/folder/here")), std::runtime_error);
    EXPECT_EQ(home.read("diary"), "mine");
    EXPECT_THROW(driver.endRecording("Panel"), std::runtime_error);
}

TEST_F(TouchDriverTest, ADisplayIsRecordedOnceAtATime) {
    come(machine.found(1));
    driver.beginRecording("Panel", home.path("one"));
    EXPECT_THROW(driver.beginRecording("Panel", home.path("two")), std::runtime_error);
    driver.endRecording("Panel");
    driver.beginRecording("Panel", home.path("two"));
    tell.went(1);
    serve();
    EXPECT_FALSE(home.read("two").empty());
}

TEST_F(TouchDriverTest, AGestureThatIsACallIsMadeOnTheSessionBus) {
    // One that fails ends the call at once.
    home.write("called.sh", "touch " + home.path("called") + "; exit 1");
    bus.addActivatableService("org.example.Called", "/bin/sh " + home.path("called.sh"));
    come(machine.found(1));
    setLookUp("<key>Kind</key><string>Call</string><key>Service</key><string>org.example.Called</string>"
              "<key>Path</key><string>/</string><key>Interface</key><string>org.example.Called</string>"
              "<key>Method</key><string>Look</string>"
              "<key>Arguments</key><array><string>up</string><true/><integer>3</integer><real>0.5</real></array>");
    tapWithThree();
    loop.runUntil([&] { return std::filesystem::exists(home.path("called")); }, 20.0);
    EXPECT_TRUE(std::filesystem::exists(home.path("called")));
}

TEST_F(TouchDriverTest, ActionsThatChangeCountFromTheNextFingerOn) {
    come(machine.found(1));
    setLookUp("<key>Kind</key><string>Chord</string><key>Keys</key><array><string>F9</string></array>");
    tapWithThree();
    ASSERT_FALSE(machine.keys().empty());
    EXPECT_EQ(machine.keys().front().front().code, KEY_F9);
    const std::size_t written = machine.keys().size();
    setLookUp("<key>Kind</key><string>Nothing</string>");
    tapWithThree();
    EXPECT_EQ(machine.keys().size(), written);
}

TEST_F(TouchDriverTest, WhereOneSourceIsMissingTheNextOneServes) {
    kelvo::DisplaySource::Handlers first;
    kelvo::DisplaySource::Handlers second;
    driver.use(std::make_unique<ScriptedSource>(first), std::make_unique<ScriptedSource>(second));
    first.missing();
    serve();
    ASSERT_TRUE(second.came);
    second.came(machine.found(1));
    serve();
    EXPECT_EQ(driver.core().status(), R"({"devices": ["Panel"], "enabled": true})");
}

} // namespace
