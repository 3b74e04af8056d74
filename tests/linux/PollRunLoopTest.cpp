#include "linux/PollRunLoop.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

using kelvo::PollRunLoop;

/// Long enough never to be reached by a test that succeeds.
constexpr double longTime = 30.0;

bool never() { return false; }

/// Lets the loop look at its timers and descriptors a few times without waiting for any.
void runSomeTurns(PollRunLoop& loop) {
    int turns = 0;
    std::function<void()> renew = [&] {
        if (++turns < 5) loop.scheduleTimer(0.0, renew);
    };
    renew();
    loop.runUntil([&] { return turns == 5; }, longTime);
}

/// A pipe whose reading end is watched in the tests.
class Pipe {
public:
    Pipe() { EXPECT_EQ(pipe2(ends_.data(), O_CLOEXEC | O_NONBLOCK), 0); }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe() {
        close(ends_[0]);
        if (ends_[1] >= 0) close(ends_[1]);
    }

    [[nodiscard]] int readingEnd() const { return ends_[0]; }
    [[nodiscard]] int writingEnd() const { return ends_[1]; }
    void put(char byte) { EXPECT_EQ(write(ends_[1], &byte, 1), 1); }
    char take() {
        char byte = 0;
        EXPECT_EQ(read(ends_[0], &byte, 1), 1);
        return byte;
    }
    void hangUp() {
        close(ends_[1]);
        ends_[1] = -1;
    }

private:
    std::array<int, 2> ends_{-1, -1};
};

TEST(PollRunLoop, FiresTimersInTheOrderOfTheirTimeThenOfScheduling) {
    PollRunLoop loop;
    std::string fired;
    loop.scheduleTimer(0.02, [&] { fired += 'd'; });
    loop.scheduleTimer(0.01, [&] { fired += 'c'; });
    loop.scheduleTimer(-1.0, [&] { fired += 'a'; });
    loop.scheduleTimer(0.0, [&] { fired += 'b'; });

    loop.runUntil([&] { return fired.size() == 4; }, longTime);

    EXPECT_EQ(fired, "abcd");
}

TEST(PollRunLoop, FiresATimerNotBeforeItsTimeAndOnce) {
    PollRunLoop loop;
    int fired = 0;
    const auto start = std::chrono::steady_clock::now();
    std::chrono::steady_clock::duration elapsed{};
    loop.scheduleTimer(0.05, [&] {
        ++fired;
        elapsed = std::chrono::steady_clock::now() - start;
    });

    loop.runUntil([&] { return fired > 0; }, longTime);
    runSomeTurns(loop);

    EXPECT_EQ(fired, 1);
    EXPECT_GE(elapsed, std::chrono::milliseconds(50));
}

TEST(PollRunLoop, AnInvalidatedTimerNeverFires) {
    PollRunLoop loop;
    bool fired = false;
    std::shared_ptr<platform::NSTimer> second;
    loop.scheduleTimer(0.0, [&] { second->invalidate(); });
    second = loop.scheduleTimer(0.0, [&] { fired = true; });

    runSomeTurns(loop);

    EXPECT_FALSE(fired);
}

TEST(PollRunLoop, ATimerMayInvalidateItselfWhileItFires) {
    PollRunLoop loop;
    std::shared_ptr<platform::NSTimer> timer;
    const auto kept = std::make_shared<int>(7);
    int seen = 0;
    timer = loop.scheduleTimer(0.0, [&, kept] {
        timer->invalidate();
        timer.reset();
        seen = *kept;
    });

    loop.runUntil([&] { return seen != 0; }, longTime);

    EXPECT_EQ(seen, 7);
    EXPECT_EQ(kept.use_count(), 1);
}

TEST(PollRunLoop, AnInvalidatedTimerLetsGoOfItsActionAtOnce) {
    PollRunLoop loop;
    const auto held = std::make_shared<int>();
    const auto timer = loop.scheduleTimer(longTime, [held] {});

    timer->invalidate();

    EXPECT_EQ(held.use_count(), 1);
}

TEST(PollRunLoop, ATimerThatRenewsItselfLeavesRoomForDescriptors) {
    PollRunLoop loop;
    Pipe pipe;
    std::function<void()> renew = [&] { loop.scheduleTimer(0.0, renew); };
    renew();
    char taken = 0;
    const auto watch = loop.watch(pipe.readingEnd(), [&] { taken = pipe.take(); });
    pipe.put('x');

    loop.runUntil([&] { return taken != 0; }, longTime);

    EXPECT_EQ(taken, 'x');
}

TEST(PollRunLoop, IntervalsBeyondAllBoundsAreTakenAsTheBounds) {
    PollRunLoop loop;
    std::string fired;
    loop.scheduleTimer(std::numeric_limits<double>::infinity(), [&] { fired += 'i'; });
    loop.scheduleTimer(std::numeric_limits<double>::quiet_NaN(), [&] { fired += 'n'; });
    loop.scheduleTimer(0.0, [&] { fired += '0'; });

    loop.runUntil([&] { return fired.size() == 2; }, std::numeric_limits<double>::infinity());

    EXPECT_EQ(fired, "n0");
}

TEST(PollRunLoop, RunUntilReturnsWhenTheTimeIsOver) {
    PollRunLoop loop;
    const auto start = std::chrono::steady_clock::now();

    loop.runUntil(never, 0.05);

    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
}

TEST(PollRunLoop, RunUntilDeliversNothingWhenItIsDoneAlready) {
    PollRunLoop loop;
    bool fired = false;
    loop.scheduleTimer(0.0, [&] { fired = true; });

    loop.runUntil([] { return true; }, longTime);

    EXPECT_FALSE(fired);
}

TEST(PollRunLoop, StopEndsRunAndLeavesANestedRunUntilToItsOwnCondition) {
    PollRunLoop loop;
    std::vector<std::string> story;
    bool done = false;
    loop.scheduleTimer(0.0, [&] {
        loop.scheduleTimer(0.0, [&] {
            story.emplace_back("stop");
            loop.stop();
        });
        loop.scheduleTimer(0.0, [&] { done = true; });
        loop.runUntil([&] { return done; }, longTime);
        story.emplace_back(done ? "nested loop done" : "nested loop cut short");
    });

    loop.run();
    story.emplace_back("run returned");

    EXPECT_EQ(story, (std::vector<std::string>{"stop", "nested loop done", "run returned"}));
}

TEST(PollRunLoop, StoppedBeforeItRunsReturnsAtOnceAndRunsTheNextTime) {
    PollRunLoop loop;
    int fired = 0;
    loop.scheduleTimer(0.0, [&] {
        ++fired;
        loop.stop();
    });

    loop.stop();
    loop.run();
    EXPECT_EQ(fired, 0);
    loop.run();
    EXPECT_EQ(fired, 1);
}

TEST(PollRunLoop, ANestedLoopDeliversWhatIsDueInOrder) {
    PollRunLoop loop;
    std::string fired;
    loop.scheduleTimer(0.0, [&] {
        fired += 'a';
        loop.runUntil([&] { return fired.find('c') != std::string::npos; }, longTime);
        fired += 'd';
    });
    loop.scheduleTimer(0.0, [&] { fired += 'b'; });
    loop.scheduleTimer(0.0, [&] { fired += 'c'; });

    loop.runUntil([&] { return fired.size() == 4; }, longTime);

    EXPECT_EQ(fired, "abcd");
}

TEST(PollRunLoop, CallsAWatchForReadingUntilTheBytesAreTaken) {
    PollRunLoop loop;
    Pipe pipe;
    std::string taken;
    const auto watch = loop.watch(pipe.readingEnd(), [&] { taken += pipe.take(); });
    pipe.put('1');
    pipe.put('2');
    pipe.put('3');

    loop.runUntil([&] { return taken.size() == 3; }, longTime);

    EXPECT_EQ(taken, "123");
}

TEST(PollRunLoop, CallsAWatchForWritingOnlyWhenAsked) {
    PollRunLoop loop;
    Pipe pipe;
    int calls = 0;
    const auto watch = loop.watch(pipe.writingEnd(), [&] { ++calls; });
    runSomeTurns(loop);
    const int callsForReading = calls;

    watch->enableCallBacks(false, true);
    loop.runUntil([&] { return calls > 0; }, longTime);

    EXPECT_EQ(callsForReading, 0);
    EXPECT_EQ(calls, 1);
}

TEST(PollRunLoop, CallsAWatchWhenTheOtherEndHangsUp) {
    PollRunLoop loop;
    Pipe pipe;
    bool called = false;
    const auto watch = loop.watch(pipe.readingEnd(), [&] { called = true; });
    pipe.hangUp();

    loop.runUntil([&] { return called; }, longTime);

    EXPECT_TRUE(called);
}

TEST(PollRunLoop, AWatchThatAsksForNothingSleepsThroughAHangUp) {
    PollRunLoop loop;
    Pipe pipe;
    bool called = false;
    const auto watch = loop.watch(pipe.readingEnd(), [&] { called = true; });
    watch->enableCallBacks(false, false);
    pipe.hangUp();
    int turns = 0;

    loop.runUntil(
        [&] {
            ++turns;
            return false;
        },
        0.05);

    EXPECT_FALSE(called);
    // One look before the wait and one after it: the loop was not woken in between.
    EXPECT_EQ(turns, 2);
}

TEST(PollRunLoop, AWatchMayBeDestroyedByItsOwnCall) {
    PollRunLoop loop;
    Pipe pipe;
    int calls = 0;
    std::unique_ptr<platform::CFFileDescriptor> watch;
    const auto kept = std::make_shared<int>(1);
    watch = loop.watch(pipe.readingEnd(), [&, kept] {
        watch.reset();
        calls += *kept;
    });
    pipe.put('x');

    runSomeTurns(loop);

    EXPECT_EQ(calls, 1);
    EXPECT_EQ(kept.use_count(), 1);
}

TEST(PollRunLoop, AWatchDestroyedByAnotherInTheSameTurnIsNotCalled) {
    PollRunLoop loop;
    Pipe first;
    Pipe second;
    int calls = 0;
    std::unique_ptr<platform::CFFileDescriptor> watches[2];
    watches[0] = loop.watch(first.readingEnd(), [&] {
        ++calls;
        first.take();
        watches[1].reset();
    });
    watches[1] = loop.watch(second.readingEnd(), [&] {
        ++calls;
        second.take();
        watches[0].reset();
    });
    first.put('x');
    second.put('x');

    runSomeTurns(loop);

    EXPECT_EQ(calls, 1);
}

TEST(PollRunLoop, BytesThatANestedLoopTookAreNotReportedAgain) {
    PollRunLoop loop;
    Pipe first;
    Pipe second;
    std::string taken;
    const auto firstWatch = loop.watch(first.readingEnd(), [&] {
        taken += first.take();
        loop.runUntil([&] { return taken.size() == 2; }, longTime);
    });
    const auto secondWatch = loop.watch(second.readingEnd(), [&] { taken += second.take(); });
    first.put('1');
    second.put('2');

    runSomeTurns(loop);

    EXPECT_EQ(taken, "12");
}

TEST(PollRunLoop, HandlesMayOutliveTheLoop) {
    Pipe pipe;
    auto loop = std::make_unique<PollRunLoop>();
    bool called = false;
    const auto timer = loop->scheduleTimer(0.0, [&] { called = true; });
    auto watch = loop->watch(pipe.readingEnd(), [&] { called = true; });

    loop.reset();
    timer->invalidate();
    watch->enableCallBacks(true, true);
    watch.reset();

    EXPECT_FALSE(called);
}

} // namespace
