#include "qt/ToolkitPlatform.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QScrollBar>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <limits>
#include <memory>
#include <stdexcept>

#include <unistd.h>

namespace kelvo {

namespace {

using testing::ElementsAre;

/// Longer than anything here takes; reaching it is a failure.
constexpr double kLongSeconds = 20.0;

class Pipe {
public:
    Pipe() {
        if (pipe(ends_.data()) != 0) throw std::runtime_error("no pipe");
    }
    ~Pipe() {
        close(ends_[0]);
        close(ends_[1]);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    [[nodiscard]] int readEnd() const { return ends_[0]; }
    [[nodiscard]] int writeEnd() const { return ends_[1]; }
    void put() const { ASSERT_EQ(write(ends_[1], "x", 1), 1); }
    void take() const {
        char taken = 0;
        ASSERT_EQ(read(ends_[0], &taken, 1), 1);
    }

private:
    std::array<int, 2> ends_{};
};

class QtRunLoopTest : public testing::Test {
protected:
    /// Runs until `done`, which has to come true.
    void runUntil(const std::function<bool()>& done) {
        loop_.runUntil(done, kLongSeconds);
        ASSERT_TRUE(done());
    }

    /// Runs whatever is due by now.
    void runDueEvents() {
        loop_.runUntil([] { return false; }, 0.0);
    }

    /// Whether the toolkit's loop turns once more by itself, though there is nothing left that would make it.
    static bool loopTurns() {
        QTimer patience;
        patience.setSingleShot(true);
        patience.start(
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::duration<double>(kLongSeconds)));
        QEventLoop().processEvents(QEventLoop::WaitForMoreEvents);
        return patience.isActive();
    }

    ToolkitPlatform platform_;
    QtRunLoop& loop_ = platform_.runLoop;
};

TEST_F(QtRunLoopTest, TimersFireOnceInTheOrderOfTheirTimes) {
    std::vector<int> fired;
    loop_.scheduleTimer(0.02, [&] { fired.push_back(2); });
    loop_.scheduleTimer(0.0, [&] { fired.push_back(1); });
    loop_.scheduleTimer(0.04, [&] { fired.push_back(3); });
    runUntil([&] { return fired.size() == 3; });
    EXPECT_THAT(fired, ElementsAre(1, 2, 3));
}

TEST_F(QtRunLoopTest, TimerThatWasInvalidatedDoesNotFire) {
    bool fired = false;
    bool later = false;
    const auto timer = loop_.scheduleTimer(0.0, [&] { fired = true; });
    loop_.scheduleTimer(0.02, [&] { later = true; });
    timer->invalidate();
    runUntil([&] { return later; });
    EXPECT_FALSE(fired);
}

TEST_F(QtRunLoopTest, TimerMayInvalidateItselfAndScheduleAnotherWhileItFires) {
    int fired = 0;
    std::shared_ptr<platform::NSTimer> timer;
    timer = loop_.scheduleTimer(0.0, [&] {
        ++fired;
        timer->invalidate();
        timer = loop_.scheduleTimer(0.0, [&] { ++fired; });
    });
    runUntil([&] { return fired == 2; });
}

TEST_F(QtRunLoopTest, TimerLetsGoOfItsActionWhenItHasFiredOrWasInvalidated) {
    const auto held = std::make_shared<int>();
    bool fired = false;
    const auto firing = loop_.scheduleTimer(0.0, [held, &fired] { fired = true; });
    const auto invalidated = loop_.scheduleTimer(0.0, [held] {});
    invalidated->invalidate();
    runUntil([&] { return fired; });
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(QtRunLoopTest, TimesThatAreNoTimesAreNow) {
    int fired = 0;
    loop_.scheduleTimer(-1.0, [&] { ++fired; });
    loop_.scheduleTimer(std::numeric_limits<double>::quiet_NaN(), [&] { ++fired; });
    const auto never = loop_.scheduleTimer(std::numeric_limits<double>::infinity(), [&] { ++fired; });
    runUntil([&] { return fired == 2; });
    never->invalidate();
}

TEST_F(QtRunLoopTest, ActionThatThrowsIsLogged) {
    loop_.scheduleTimer(0.0, [] { throw std::runtime_error("bad luck"); });
    runUntil([&] { return !platform_.log.lines.empty(); });
    EXPECT_THAT(platform_.log.lines, ElementsAre("Unexpected error: bad luck"));
}

TEST_F(QtRunLoopTest, WatchCallsWhileTheDescriptorIsReadable) {
    const Pipe pipe;
    int calls = 0;
    const auto watch = loop_.watch(pipe.readEnd(), [&] {
        ++calls;
        pipe.take();
    });
    pipe.put();
    pipe.put();
    runUntil([&] { return calls == 2; });
    runDueEvents();
    EXPECT_EQ(calls, 2);
}

TEST_F(QtRunLoopTest, WatchCallsForWritingOnlyWhenAskedTo) {
    const Pipe pipe;
    int calls = 0;
    const auto watch = loop_.watch(pipe.writeEnd(), [&] { ++calls; });
    runDueEvents();
    EXPECT_EQ(calls, 0);

    watch->enableCallBacks(false, true);
    runUntil([&] { return calls > 0; });
}

TEST_F(QtRunLoopTest, WatchMayEndWithinItsOwnCall) {
    const Pipe pipe;
    int calls = 0;
    std::unique_ptr<platform::CFFileDescriptor> watch;
    watch = loop_.watch(pipe.readEnd(), [&] {
        watch.reset();
        ++calls;
    });
    pipe.put();
    runUntil([&] { return calls == 1; });
    runDueEvents();
    EXPECT_EQ(calls, 1);
}

TEST_F(QtRunLoopTest, RunUntilEndsAtItsDeadline) {
    const double seconds = 0.02;
    QElapsedTimer clock;
    clock.start();
    loop_.runUntil([] { return false; }, seconds);
    EXPECT_GE(static_cast<double>(clock.nsecsElapsed()) * 1e-9, seconds);
}

TEST_F(QtRunLoopTest, RunUntilReturnsAtOnceWhenItIsDoneAlready) {
    bool fired = false;
    const auto timer = loop_.scheduleTimer(0.0, [&] { fired = true; });
    loop_.runUntil([] { return true; }, kLongSeconds);
    EXPECT_FALSE(fired);
    timer->invalidate();
}

TEST_F(QtRunLoopTest, RunUntilNestsInWhatTheLoopDelivers) {
    std::vector<std::string> story;
    bool innerIsDone = false;
    loop_.scheduleTimer(0.0, [&] {
        story.emplace_back("outer begins");
        loop_.runUntil([&] { return innerIsDone; }, kLongSeconds);
        story.emplace_back("outer ends");
    });
    loop_.scheduleTimer(0.02, [&] {
        story.emplace_back("inner");
        innerIsDone = true;
    });
    runUntil([&] { return story.size() == 3; });
    EXPECT_THAT(story, ElementsAre("outer begins", "inner", "outer ends"));
}

TEST_F(QtRunLoopTest, LoopLooksForTheInputThatWaitedWhenRunUntilEnds) {
    for (const bool isDone : {true, false}) {
        bool fired = false;
        loop_.scheduleTimer(0.0, [&] { fired = true; });
        loop_.runUntil([&] { return fired && isDone; }, isDone ? kLongSeconds : 0.01);
        EXPECT_TRUE(fired);
        EXPECT_TRUE(loopTurns());
    }
}

TEST_F(QtRunLoopTest, LoopLooksForTheInputThatWaitedWhenTheOutermostRunUntilEnds) {
    bool innerIsDone = false;
    loop_.scheduleTimer(0.0, [&] {
        bool fired = false;
        loop_.scheduleTimer(0.0, [&] { fired = true; });
        loop_.runUntil([&] { return fired; }, kLongSeconds);
        innerIsDone = true;
    });
    runUntil([&] { return innerIsDone; });
    EXPECT_TRUE(loopTurns());
}

TEST_F(QtRunLoopTest, WhatIsHeldDoesNotGoOnByItselfDuringRunUntil) {
    QScrollBar held(Qt::Vertical);
    held.setRange(0, 1000);
    held.resize(20, 400);
    held.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&held));
    const QPoint belowTheHandle(10, 300);
    QTest::mousePress(&held, Qt::LeftButton, {}, belowTheHandle);
    const int pressed = held.value();
    ASSERT_TRUE(QTest::qWaitFor([&] { return held.value() > pressed; }));

    const int before = held.value();
    loop_.runUntil([] { return false; }, 0.3);
    EXPECT_EQ(held.value(), before);

    EXPECT_TRUE(QTest::qWaitFor([&] { return held.value() > before; }));
    QTest::mouseRelease(&held, Qt::LeftButton, {}, belowTheHandle);
}

TEST_F(QtRunLoopTest, WhenNothingWaitsIsAtOnceWhereNothingDoes) {
    bool performed = false;
    loop_.whenNothingWaits([&] { performed = true; });
    EXPECT_TRUE(performed);
}

TEST_F(QtRunLoopTest, WhenNothingWaitsIsAfterAllWaitsOfOneAct) {
    std::vector<std::string> story;
    loop_.scheduleTimer(0.0, [&] {
        loop_.scheduleTimer(0.0, [&] {
            loop_.whenNothingWaits([&] { story.emplace_back("nothing waits"); });
            story.emplace_back("postponed");
        });
        loop_.runUntil([&] { return !story.empty(); }, kLongSeconds);
        bool isOver = false;
        loop_.scheduleTimer(0.02, [&] { isOver = true; });
        loop_.runUntil([&] { return isOver; }, kLongSeconds);
        story.emplace_back("act ends");
    });
    EXPECT_TRUE(QTest::qWaitFor([&] { return story.size() == 3; }));
    EXPECT_THAT(story, ElementsAre("postponed", "act ends", "nothing waits"));
}

TEST_F(QtRunLoopTest, WhatIsPostponedMayDestroyTheLoop) {
    auto loop = std::make_shared<QtRunLoop>();
    const std::weak_ptr<QtRunLoop> gone = loop;
    loop->scheduleTimer(0.0, [&] {
        QtRunLoop& waiting = *loop;
        waiting.whenNothingWaits([] {});
        waiting.scheduleTimer(0.0, [&] { waiting.whenNothingWaits([kept = std::move(loop)] {}); });
        waiting.runUntil([&] { return !loop; }, kLongSeconds);
    });
    EXPECT_TRUE(QTest::qWaitFor([&] { return gone.expired(); }));
}

} // namespace

} // namespace kelvo
