#include "linux/VirtualDevices.h"

#include "linux/UinputDevice.h"
#include "support/EventNode.h"
#include "touch/Actions.h"
#include "touch/TouchDisplay.h"

#include <gtest/gtest.h>
#include <libevdev/libevdev.h>

#include <algorithm>
#include <array>
#include <memory>
#include <set>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace {

using kelvo::VirtualDescription;
using support::EventNode;
using touch::Output;
using Kind = Output::Kind;

/// 200 by 100 mm in tenths, from 0 on.
touch::PanelDescription panel() {
    return {.name = "Panel",
            .bus = 3,
            .vendor = 0x04f3,
            .product = 0x0732,
            .version = 0x0110,
            .x = {0, 2000, 10},
            .y = {0, 1000, 10},
            .slots = 10};
}

/// Four nodes that keep what is written to them.
class VirtualDevicesTest : public testing::Test {
protected:
    VirtualDevicesTest() : devices(openNodes(), panel()) {}

    kelvo::VirtualNodes openNodes() {
        kelvo::VirtualNodes opened;
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            nodes.at(i) = std::make_unique<EventNode>(EventNode::Device{});
            opened.at(i) = kelvo::Descriptor(nodes.at(i)->open());
        }
        return opened;
    }

    void give(Kind kind, std::int32_t number = 0, touch::Point at = {}, bool endsFrame = true) {
        Output output;
        output.kind = kind;
        output.number = number;
        output.at = at;
        output.endsFrame = endsFrame;
        devices.give(output, touch::Time(0));
    }

    /// What was written to a device, a write a line, each event as "CODE=VALUE"; forgotten then.
    std::string written(touch::Road road) {
        EventNode& node = *nodes.at(static_cast<std::size_t>(road));
        std::string text;
        for (const auto& frame : std::exchange(node.written, {})) {
            for (const input_event& event : frame) {
                text.append(libevdev_event_code_get_name(event.type, event.code));
                if (event.type != EV_SYN) text.append("=").append(std::to_string(event.value));
                text.append(" ");
            }
            text.back() = '\n';
        }
        return text;
    }

    std::array<std::unique_ptr<EventNode>, kelvo::kVirtualDevices> nodes;
    kelvo::VirtualDevices devices;
};

TEST_F(VirtualDevicesTest, ATouchLandsMovesAndIsLifted) {
    give(Kind::TouchDown, 0, {0.5, 0.5});
    give(Kind::TouchMove, 0, {0.75, 0.5});
    give(Kind::TouchUp, 0);
    EXPECT_EQ(written(touch::Road::TouchScreen),
              "ABS_MT_SLOT=0 ABS_MT_TOOL_TYPE=0 ABS_MT_TRACKING_ID=0 ABS_MT_POSITION_X=1000 ABS_MT_POSITION_Y=500 "
              "BTN_TOUCH=1 ABS_X=1000 ABS_Y=500 SYN_REPORT\n"
              "ABS_MT_SLOT=0 ABS_MT_POSITION_X=1500 ABS_MT_POSITION_Y=500 ABS_X=1500 ABS_Y=500 SYN_REPORT\n"
              "ABS_MT_SLOT=0 ABS_MT_TRACKING_ID=-1 BTN_TOUCH=0 SYN_REPORT\n");
}

TEST_F(VirtualDevicesTest, StepsOfOneFrameAreOneWrite) {
    give(Kind::TouchDown, 0, {0.0, 0.0}, false);
    EXPECT_EQ(written(touch::Road::TouchScreen), "");
    give(Kind::TouchDown, 1, {1.0, 1.0});
    EXPECT_EQ(written(touch::Road::TouchScreen),
              "ABS_MT_SLOT=0 ABS_MT_TOOL_TYPE=0 ABS_MT_TRACKING_ID=0 ABS_MT_POSITION_X=0 ABS_MT_POSITION_Y=0 "
              "ABS_MT_SLOT=1 ABS_MT_TOOL_TYPE=0 ABS_MT_TRACKING_ID=1 ABS_MT_POSITION_X=2000 ABS_MT_POSITION_Y=1000 "
              "BTN_TOUCH=1 ABS_X=0 ABS_Y=0 SYN_REPORT\n");
}

TEST_F(VirtualDevicesTest, ATouchThatIsTakenBackWasAPalmAndTheNextInItsSlotIsAFinger) {
    give(Kind::TouchDown, 0, {0.5, 0.5});
    (void)written(touch::Road::TouchScreen);
    give(Kind::TouchCancel, 0);
    EXPECT_EQ(written(touch::Road::TouchScreen),
              "ABS_MT_SLOT=0 ABS_MT_TOOL_TYPE=2 ABS_MT_TRACKING_ID=-1 BTN_TOUCH=0 SYN_REPORT\n");
    give(Kind::TouchDown, 0, {0.5, 0.5});
    EXPECT_TRUE(written(touch::Road::TouchScreen).starts_with("ABS_MT_SLOT=0 ABS_MT_TOOL_TYPE=0 "));
}

TEST_F(VirtualDevicesTest, SixteenTouchesThatLandAtOnceAreAllWritten) {
    for (std::int32_t i = 0; i < 16; ++i) give(Kind::TouchDown, i, {0.5, 0.5}, i == 15);
    const std::string text = written(touch::Road::TouchScreen);
    EXPECT_NE(text.find("ABS_MT_SLOT=15"), std::string::npos);
    EXPECT_TRUE(text.ends_with("SYN_REPORT\n")) << text;
}

TEST_F(VirtualDevicesTest, ThePointerGoesThereAndThenItsButtonGoesDown) {
    give(Kind::PointerMove, 0, {0.0, 1.0}, false);
    give(Kind::ButtonDown, 1, {}, true);
    give(Kind::ButtonUp, 1);
    EXPECT_EQ(written(touch::Road::Pointer), "ABS_X=0 ABS_Y=65535 BTN_RIGHT=1 SYN_REPORT\nBTN_RIGHT=0 SYN_REPORT\n");
}

TEST_F(VirtualDevicesTest, ThePointerIsPutWhereItWasAsWellSinceAnotherDeviceMayHaveMovedIt) {
    give(Kind::PointerMove, 0, {0.5, 0.5});
    give(Kind::PointerMove, 0, {0.5, 0.5});
    EXPECT_EQ(written(touch::Road::Pointer),
              "ABS_X=32768 ABS_Y=32768 SYN_REPORT\nABS_X=32767 SYN_REPORT ABS_X=32768 ABS_Y=32768 SYN_REPORT\n");
}

TEST_F(VirtualDevicesTest, ThePointerIsPutAtTheCornerWhereItsDeviceBegins) {
    give(Kind::PointerMove, 0, {0.0, 0.0});
    EXPECT_EQ(written(touch::Road::Pointer), "ABS_X=1 SYN_REPORT ABS_X=0 ABS_Y=0 SYN_REPORT\n");
}

TEST_F(VirtualDevicesTest, ThePadSaysHowManyFingersAreOnIt) {
    give(Kind::PadDown, 0, {10.0, 10.0}, false);
    give(Kind::PadDown, 1, {20.0, 10.0});
    give(Kind::PadUp, 0, {}, false);
    give(Kind::PadUp, 1);
    EXPECT_EQ(written(touch::Road::Touchpad),
              "ABS_MT_SLOT=0 ABS_MT_TRACKING_ID=0 ABS_MT_POSITION_X=200 ABS_MT_POSITION_Y=200 "
              "ABS_MT_SLOT=1 ABS_MT_TRACKING_ID=1 ABS_MT_POSITION_X=400 ABS_MT_POSITION_Y=200 "
              "BTN_TOUCH=1 BTN_TOOL_DOUBLETAP=1 ABS_X=200 ABS_Y=200 SYN_REPORT\n"
              "ABS_MT_SLOT=0 ABS_MT_TRACKING_ID=-1 ABS_MT_SLOT=1 ABS_MT_TRACKING_ID=-1 "
              "BTN_TOUCH=0 BTN_TOOL_DOUBLETAP=0 SYN_REPORT\n");
}

TEST_F(VirtualDevicesTest, AKeyGoesDownAndUp) {
    give(Kind::KeyDown, KEY_LEFTALT);
    give(Kind::KeyUp, KEY_LEFTALT);
    EXPECT_EQ(written(touch::Road::Keyboard), "KEY_LEFTALT=1 SYN_REPORT\nKEY_LEFTALT=0 SYN_REPORT\n");
}

TEST_F(VirtualDevicesTest, WhatIsForTheListenerIsWrittenNowhere) {
    give(Kind::GestureBegin);
    give(Kind::Call);
    give(Kind::GestureEnd);
    for (const auto& node : nodes) EXPECT_TRUE(node->written.empty());
}

TEST_F(VirtualDevicesTest, DevicesThatAreTakenAwayAreLost) {
    give(Kind::KeyDown, KEY_LEFTALT);
    EXPECT_FALSE(devices.isLost());
    nodes.at(static_cast<std::size_t>(touch::Road::Keyboard))->unplug();
    give(Kind::KeyUp, KEY_LEFTALT);
    EXPECT_TRUE(devices.isLost());
}

TEST(TheVirtualTouchScreen, IsToTheDesktopWhatThePanelIs) {
    const VirtualDescription device = kelvo::virtualDescriptionsOf(panel(), "seat0/1")[0];
    EXPECT_EQ(device.name, "Panel");
    EXPECT_EQ(device.id.bustype, 3);
    EXPECT_EQ(device.id.vendor, 0x04f3);
    EXPECT_EQ(device.id.product, 0x0732);
    EXPECT_EQ(device.rangeOf(ABS_MT_POSITION_X).maximum, 2000);
    EXPECT_EQ(device.rangeOf(ABS_MT_POSITION_Y).resolution, 10);
    EXPECT_EQ(device.rangeOf(ABS_MT_TOOL_TYPE).maximum, MT_TOOL_PALM);
    EXPECT_EQ(device.properties, std::vector<std::uint16_t>{INPUT_PROP_DIRECT});
}

TEST(TheVirtualTouchScreen, HasNoButtonOfAPointer) {
    const VirtualDescription device = kelvo::virtualDescriptionsOf(panel(), "seat0/1")[0];
    EXPECT_EQ(device.keys, std::vector<std::uint16_t>{BTN_TOUCH});
}

TEST(TheVirtualPointer, IsNoTouchScreen) {
    const VirtualDescription device = kelvo::virtualDescriptionsOf(panel(), "seat0/1")[1];
    EXPECT_TRUE(device.properties.empty());
}

TEST(TheVirtualPointer, HasAMiddleButtonSoThatNobodyMakesOneOfTheOthers) {
    const VirtualDescription device = kelvo::virtualDescriptionsOf(panel(), "seat0/1")[1];
    EXPECT_EQ(device.keys, (std::vector<std::uint16_t>{BTN_LEFT, BTN_RIGHT, BTN_MIDDLE}));
}

TEST(TheVirtualTouchpad, IsPluggedInAndBelongsToNoKeyboard) {
    const auto devices = kelvo::virtualDescriptionsOf(panel(), "seat0/1");
    EXPECT_EQ(devices[2].id.bustype, BUS_USB);
    EXPECT_NE(std::pair(devices[2].id.vendor, devices[2].id.product),
              std::pair(devices[3].id.vendor, devices[3].id.product));
}

TEST(TheVirtualKeyboard, HasTheKeysOfChordsAndNoOthers) {
    const VirtualDescription device = kelvo::virtualDescriptionsOf(panel(), "seat0/1")[3];
    std::set<std::uint16_t> chordKeys;
    for (const touch::ChordKey& key : touch::kChordKeys) chordKeys.insert(static_cast<std::uint16_t>(key.code));
    EXPECT_EQ(std::set<std::uint16_t>(device.keys.begin(), device.keys.end()), chordKeys);
    EXPECT_FALSE(chordKeys.contains(KEY_Q));
}

TEST(EachVirtualDevice, IsKnownForOurs) {
    for (const VirtualDescription& device : kelvo::virtualDescriptionsOf(panel(), "seat0/1")) {
        EXPECT_TRUE(device.phys.starts_with("kelvo-touch/seat0/1/")) << device.phys;
    }
}

TEST(AVirtualDevice, IsMadeOfWhatItsDescriptionSays) {
    EventNode maker{EventNode::Device{}};
    const VirtualDescription description{.name = "Panel Pointer",
                                         .phys = "kelvo-touch/seat0/1/pointer",
                                         .id = {BUS_VIRTUAL, 1, 2, 3},
                                         .properties = {INPUT_PROP_POINTER},
                                         .keys = {BTN_LEFT},
                                         .axes = {{ABS_X, {0, 5, 10, 0, 0, 7}}}};
    // There is no such device in sysfs, which comes last.
    EXPECT_ANY_THROW(kelvo::UinputDevice(kelvo::Descriptor(maker.open()), description));
    EXPECT_EQ(maker.made,
              "type 1\nkey 272\ntype 3\naxis 0 from 5 to 10, 7 a unit\nproperty 0\nphys kelvo-touch/seat0/1/pointer\n"
              "6 1 2 3 Panel Pointer\ncreated\n");
}

TEST(AVirtualDevice, ThatTheKernelRefusesIsAnError) {
    EXPECT_THROW(kelvo::UinputDevice(kelvo::Descriptor(), VirtualDescription{}), std::system_error);
}

} // namespace
