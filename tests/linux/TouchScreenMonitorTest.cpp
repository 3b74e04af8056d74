#include "linux/TouchScreenMonitor.h"

#include "linux/PollRunLoop.h"

#include <gtest/gtest.h>
#include <umockdev.h>

#include <memory>
#include <string>
#include <vector>

namespace {

struct TestbedReleaser {
    void operator()(UMockdevTestbed* testbed) const { g_object_unref(testbed); }
};

/// An input device of the testbed, which stands in for the kernel's and udev's folders and messages.
struct Traits {
    std::string properties = "2";
    std::string axes = "260800000000003";
    std::string phys = "usb-1/input0";
    std::string isTouchScreen = "1";
    std::string seat;
    std::string serial = "Maker_Panel_1";
};

class TouchScreenMonitorTest : public testing::Test {
protected:
    /// Plugs in an input device with one event node, and gives that one's folder.
    std::string plug(const std::string& number, const Traits& traits = {}) {
        const std::vector<const char*> attributes{"name",
                                                  "Panel",
                                                  "phys",
                                                  traits.phys.c_str(),
                                                  "properties",
                                                  traits.properties.c_str(),
                                                  "capabilities/abs",
                                                  traits.axes.c_str(),
                                                  nullptr};
        const std::vector<const char*> none{nullptr};
        gchar* input =
            umockdev_testbed_add_devicev(testbed.get(), "input", ("input" + number).c_str(), nullptr,
                                         const_cast<gchar**>(attributes.data()), const_cast<gchar**>(none.data()));
        const std::string name = "input/event" + number;
        std::vector<const char*> properties{"DEVNAME",
                                            name.c_str(),
                                            "ID_INPUT_TOUCHSCREEN",
                                            traits.isTouchScreen.c_str(),
                                            "ID_SERIAL",
                                            traits.serial.c_str(),
                                            "ID_PATH",
                                            "pci-1-usb-2"};
        if (!traits.seat.empty()) properties.insert(properties.end(), {"ID_SEAT", traits.seat.c_str()});
        properties.push_back(nullptr);
        gchar* event =
            umockdev_testbed_add_devicev(testbed.get(), "input", ("event" + number).c_str(), input,
                                         const_cast<gchar**>(none.data()), const_cast<gchar**>(properties.data()));
        const std::string folder = event ? event : "";
        g_free(input);
        g_free(event);
        return folder;
    }

    void open() {
        monitor = kelvo::TouchScreenMonitor::open(loop, {[this](const kelvo::TouchScreen& screen) {
                                                             came.push_back(screen);
                                                             seen += "+" + screen.node;
                                                         },
                                                         [this](const std::string& node) { seen += "-" + node; }});
        ASSERT_TRUE(monitor);
        monitor->begin();
    }

    /// Lets the loop run until this was seen.
    void await(const std::string& expected) {
        loop.runUntil([&] { return seen == expected; }, 20.0);
        EXPECT_EQ(seen, expected);
    }

    std::unique_ptr<UMockdevTestbed, TestbedReleaser> testbed{umockdev_testbed_new()};
    kelvo::PollRunLoop loop;
    std::unique_ptr<kelvo::TouchScreenMonitor> monitor;
    std::vector<kelvo::TouchScreen> came;
    std::string seen;
};

TEST_F(TouchScreenMonitorTest, ADisplayThatIsThereIsToldOf) {
    plug("5");
    open();
    ASSERT_EQ(came.size(), 1U);
    EXPECT_EQ(came[0], (kelvo::TouchScreen{"/dev/input/event5", "Panel", "seat0", "Maker_Panel_1"}));
}

TEST_F(TouchScreenMonitorTest, ADisplayHasTheSeatThatItIsGiven) {
    Traits traits;
    traits.seat = "seat-desk";
    plug("5", traits);
    open();
    ASSERT_EQ(came.size(), 1U);
    EXPECT_EQ(came[0].seat, "seat-desk");
}

TEST_F(TouchScreenMonitorTest, ADisplayWithoutANumberIsKnownByItsPlace) {
    Traits traits;
    traits.serial = "";
    plug("5", traits);
    open();
    ASSERT_EQ(came.size(), 1U);
    EXPECT_EQ(came[0].identity, "pci-1-usb-2");
}

TEST_F(TouchScreenMonitorTest, OfTheNodesOfADisplayTheOneWithSlotsIsIt) {
    Traits mouse;
    mouse.properties = "0";
    mouse.axes = "3";
    mouse.isTouchScreen = "0";
    Traits single;
    single.axes = "3";
    plug("4", mouse);
    plug("5", single);
    plug("6");
    open();
    EXPECT_EQ(seen, "+/dev/input/event6");
}

TEST_F(TouchScreenMonitorTest, ATouchpadIsNoDisplay) {
    Traits traits;
    traits.properties = "1";
    plug("5", traits);
    open();
    EXPECT_EQ(seen, "");
}

TEST_F(TouchScreenMonitorTest, OurOwnVirtualOneIsNoDisplay) {
    Traits traits;
    traits.phys = "kelvo-touch/seat0/1/touch-screen";
    plug("5", traits);
    open();
    EXPECT_EQ(seen, "");
}

TEST_F(TouchScreenMonitorTest, ADisplayComesAndGoesAndComesAgain) {
    open();
    EXPECT_EQ(seen, "");
    const std::string folder = plug("5");
    umockdev_testbed_uevent(testbed.get(), folder.c_str(), "add");
    await("+/dev/input/event5");
    umockdev_testbed_uevent(testbed.get(), folder.c_str(), "remove");
    await("+/dev/input/event5-/dev/input/event5");
    umockdev_testbed_uevent(testbed.get(), folder.c_str(), "add");
    await("+/dev/input/event5-/dev/input/event5+/dev/input/event5");
}

TEST_F(TouchScreenMonitorTest, ADisplayThatIsToldOfTwiceCountsOnce) {
    const std::string folder = plug("5");
    open();
    umockdev_testbed_uevent(testbed.get(), folder.c_str(), "add");
    umockdev_testbed_uevent(testbed.get(), folder.c_str(), "remove");
    await("+/dev/input/event5-/dev/input/event5");
}

TEST_F(TouchScreenMonitorTest, WhatIsNoDisplayMayGoToo) {
    Traits traits;
    traits.isTouchScreen = "0";
    const std::string mouse = plug("4", traits);
    const std::string display = plug("5");
    open();
    umockdev_testbed_uevent(testbed.get(), mouse.c_str(), "remove");
    umockdev_testbed_uevent(testbed.get(), display.c_str(), "remove");
    await("+/dev/input/event5-/dev/input/event5");
}

TEST(ABitmap, HasTheHighestWordFirst) {
    EXPECT_TRUE(kelvo::hasBit("2", 1));
    EXPECT_FALSE(kelvo::hasBit("2", 0));
    EXPECT_TRUE(kelvo::hasBit("800000000000 0", 64 + 47));
    EXPECT_FALSE(kelvo::hasBit("800000000000 0", 47));
    EXPECT_FALSE(kelvo::hasBit("2", 65));
    EXPECT_FALSE(kelvo::hasBit("", 0));
    EXPECT_FALSE(kelvo::hasBit("nonsense", 0));
}

} // namespace
