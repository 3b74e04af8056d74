#include "linux/EvdevDisplay.h"
#include "linux/PollRunLoop.h"
#include "linux/VirtualDevices.h"
#include "peers/PeerPlatform.h"
#include "peers/driver/PanelDisplay.h"
#include "support/CountedAllocations.h"
#include "support/EventNode.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>

namespace {

using kelvo::PanelDisplay;

std::int64_t now() {
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// A display on the road that the driver has: from the event node by the loop to the files of the virtual devices.
class TouchDriverAllocation : public testing::Test {
protected:
    TouchDriverAllocation() {
        kelvo::VirtualNodes nodes;
        for (kelvo::Descriptor& each : nodes) each = kelvo::Descriptor(::open("/dev/null", O_WRONLY | O_CLOEXEC));
        kelvo::Descriptor file(node.open());
        const kelvo::Evdev device = kelvo::evdevOf(file.number());
        auto out = std::make_unique<kelvo::VirtualDevices>(std::move(nodes), kelvo::panelDescriptionOf(device.get()));
        display = PanelDisplay::open(
            [&](touch::Panel::Listener& listener) {
                return kelvo::EvdevDisplay::open(loop, std::move(file), listener);
            },
            std::move(out),
            {[this] { ++hands; }, [](const kelvo::ContactFrame&) {}, [](touch::Gesture, touch::Direction) {}, [] {}});
        touch::Settings settings;
        settings.longPress = std::chrono::milliseconds(300);
        display->setSettings(settings);
        display->setEnabled(true);
        EXPECT_EQ(display->state(), PanelDisplay::State::Held);
    }

    /// So many turns of the loop as a frame may need, and what they allocate.
    std::size_t serve() {
        const std::size_t before = support::allocations();
        for (int i = 0; i < 4; ++i) loop.runUntil([] { return false; }, 0.0005);
        return support::allocations() - before;
    }

    /// A hand lands, goes and lifts; what the driver allocates meanwhile.
    std::size_t playHand(std::int32_t fingers) {
        std::size_t allocated = 0;
        for (std::int32_t step = 0; step < 25; ++step) {
            for (std::int32_t i = 0; i < fingers; ++i) node.touch(i, 10 + i, 300 + 150 * i, 200 + 20 * step);
            node.report(now());
            allocated += serve();
        }
        for (std::int32_t i = 0; i < fingers; ++i) node.lift(i);
        node.report(now());
        return allocated + serve();
    }

    kelvo::PollRunLoop loop;
    kelvo::PeerPlatform services{"touch-driver-allocation", loop};
    support::EventNode node{support::EventNode::panel()};
    std::unique_ptr<PanelDisplay> display;
    int hands = 0;
};

TEST_F(TouchDriverAllocation, HappensAtNoFrameAndAtNoTimeoutOnceTheDriverHasBegun) {
    (void)playHand(2);
    std::size_t allocated = 0;
    for (std::int32_t fingers = 1; fingers <= 6; ++fingers) allocated += playHand(fingers);
    // A finger that rests until it is a right click.
    node.touch(0, 99, 1000, 500);
    node.report(now());
    for (int i = 0; i < 400; ++i) allocated += serve();
    node.lift(0);
    node.report(now());
    allocated += serve();
    EXPECT_EQ(allocated, 0U);
    EXPECT_EQ(hands, 8);
    // So that this test can fail at all.
    const std::size_t before = support::allocations();
    delete new int;
    EXPECT_GT(support::allocations(), before);
}

} // namespace
