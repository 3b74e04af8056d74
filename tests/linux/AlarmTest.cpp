#include "linux/Alarm.h"

#include "linux/PollRunLoop.h"

#include <gtest/gtest.h>

#include <chrono>

namespace kelvo {

namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

/// Longer than anything here takes; reaching it is a failure.
constexpr double kLongSeconds = 20.0;

microseconds now() {
    return std::chrono::duration_cast<microseconds>(std::chrono::steady_clock::now().time_since_epoch());
}

class AlarmTest : public testing::Test {
protected:
    void await(int times) {
        loop.runUntil([&] { return rings >= times; }, kLongSeconds);
        EXPECT_EQ(rings, times);
    }
    /// What is due already comes first.
    void letPass(double seconds) {
        loop.runUntil([] { return false; }, seconds);
    }

    PollRunLoop loop;
    int rings = 0;
    microseconds rangAt{0};
    microseconds next{0};
    Alarm alarm{loop, [this] {
                    ++rings;
                    rangAt = now();
                    if (next.count() > 0) alarm.setTo(std::exchange(next, microseconds(0)));
                }};
};

TEST_F(AlarmTest, RingsOnceAndNotBeforeItsTime) {
    const microseconds due = now() + milliseconds(30);
    alarm.setTo(due);
    await(1);
    EXPECT_GE(rangAt, due);
    letPass(0.05);
    EXPECT_EQ(rings, 1);
}

TEST_F(AlarmTest, OneThatIsOverRingsAtOnce) {
    alarm.setTo(now() - milliseconds(5));
    await(1);
    alarm.setTo(microseconds(0));
    await(2);
    alarm.setTo(microseconds(-7));
    await(3);
}

TEST_F(AlarmTest, OneThatIsSetAnewRingsThenAlone) {
    alarm.setTo(now() + milliseconds(10));
    const microseconds due = now() + milliseconds(40);
    alarm.setTo(due);
    await(1);
    EXPECT_GE(rangAt, due);
}

TEST_F(AlarmTest, OneThatIsClearedDoesNotRing) {
    alarm.setTo(now() + milliseconds(10));
    alarm.clear();
    letPass(0.05);
    EXPECT_EQ(rings, 0);
    alarm.setTo(now());
    await(1);
}

TEST_F(AlarmTest, CanBeSetAgainWhileItRings) {
    next = now() + milliseconds(20);
    const microseconds second = next;
    alarm.setTo(now());
    await(2);
    EXPECT_GE(rangAt, second);
}

} // namespace

} // namespace kelvo
