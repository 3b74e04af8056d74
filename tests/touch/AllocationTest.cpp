#include "support/CountedAllocations.h"
#include "tests/touch/Script.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;

class Counter final : public touch::Outputs {
public:
    void give(const touch::Output& /*output*/, touch::Time /*now*/) override { ++steps; }
    std::size_t steps = 0;
};

/// Ten hands of so many fingers, each of which lands, goes somewhere and lifts.
void playHands(touch::TouchDisplay& display, std::int32_t fingers, touch::Time from) {
    for (std::int32_t hand = 0; hand < 10; ++hand) {
        const touch::Time start = from + 2s * hand;
        for (std::int32_t step = 0; step < 60; ++step) {
            touch::Frame frame{.time = start + 8ms * step, .contacts = {}};
            for (std::int32_t i = 0; i < fingers; ++i) {
                frame.contacts.add({hand * 100 + i, {10.0 + 11.0 * i, 30.0 + hand % 3 * step}, false});
            }
            display.frame(frame);
        }
        display.frame({.time = start + 500ms, .contacts = {}});
        while (display.deadline()) display.timeout(*display.deadline());
    }
}

TEST(Allocation, HappensAtNoFrameOnceTheSettingsAreInForce) {
    touching::Stage stage;
    stage.settings.longPress = 300ms;
    Counter counter;
    touch::TouchDisplay display(stage.glass, counter, [](touch::Fault fault) { ADD_FAILURE() << nameOf(fault); });
    display.setSettings(stage.settings);
    playHands(display, 1, 0s);
    const std::size_t before = support::allocations();
    for (std::int32_t fingers = 1; fingers <= 16; ++fingers) playHands(display, fingers, 100s * fingers);
    EXPECT_EQ(support::allocations(), before);
    EXPECT_GT(counter.steps, 1000U);
    // So that this test can fail at all.
    delete new int;
    EXPECT_GT(support::allocations(), before);
}

} // namespace
