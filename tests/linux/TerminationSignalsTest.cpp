#include "linux/TerminationSignals.h"

#include "linux/PollRunLoop.h"

#include <gtest/gtest.h>

#include <csignal>
#include <optional>

namespace kelvo {

namespace {

/// Longer than anything here takes; reaching it is a failure.
constexpr double kLongSeconds = 20.0;

TEST(TerminationSignals, EachSignalReachesTheMainLoop) {
    PollRunLoop runLoop;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        int terminations = 0;
        const TerminationSignals signals(runLoop, [&] { ++terminations; });
        std::raise(signal);
        EXPECT_EQ(terminations, 0);
        runLoop.runUntil([&] { return terminations > 0; }, kLongSeconds);
        EXPECT_EQ(terminations, 1);
    }
}

TEST(TerminationSignals, ManySignalsAtOnceAreOneTermination) {
    PollRunLoop runLoop;
    int terminations = 0;
    const TerminationSignals signals(runLoop, [&] { ++terminations; });
    for (int i = 0; i < 5; ++i) std::raise(SIGTERM);
    runLoop.runUntil([&] { return terminations > 0; }, kLongSeconds);
    runLoop.runUntil([] { return false; }, 0.0);
    EXPECT_EQ(terminations, 1);
}

TEST(TerminationSignals, AProgramThatIsToOutliveItsTerminalDoes) {
    PollRunLoop runLoop;
    struct sigaction before = {};
    struct sigaction ignore = {};
    ignore.sa_handler = SIG_IGN;
    ASSERT_EQ(sigaction(SIGHUP, &ignore, &before), 0);
    int terminations = 0;
    {
        const TerminationSignals signals(runLoop, [&] { ++terminations; });
        std::raise(SIGHUP);
        runLoop.runUntil([] { return false; }, 0.0);
    }
    EXPECT_EQ(terminations, 0);
    sigaction(SIGHUP, &before, nullptr);
}

TEST(TerminationSignals, SignalsHaveTheirOldMeaningAfterwards) {
    PollRunLoop runLoop;
    struct sigaction before = {};
    ASSERT_EQ(sigaction(SIGTERM, nullptr, &before), 0);
    std::optional<TerminationSignals> signals(std::in_place, runLoop, [] {});

    signals.reset();

    struct sigaction after = {};
    ASSERT_EQ(sigaction(SIGTERM, nullptr, &after), 0);
    EXPECT_EQ(after.sa_handler, before.sa_handler);
}

} // namespace

} // namespace kelvo
