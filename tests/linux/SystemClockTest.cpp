#include "linux/SystemClock.h"

#include "support/EnvironmentVariable.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <limits>
#include <optional>
#include <string>

#include <sys/time.h>

namespace {

using kelvo::dateOf;
using kelvo::SystemClock;
using platform::gestaltSystemVersion;

constexpr char kVariable[] = "KELVO_SYSTEM_VERSION";

/// Interrupts this process again and again with a signal that it handles.
class Interruptions {
public:
    Interruptions() {
        struct sigaction action {};
        action.sa_handler = [](int) { count_ = count_ + 1; };
        ::sigaction(SIGALRM, &action, &previous_);
        setPeriod(50'000);
    }
    Interruptions(const Interruptions&) = delete;
    Interruptions& operator=(const Interruptions&) = delete;
    ~Interruptions() {
        setPeriod(0);
        ::sigaction(SIGALRM, &previous_, nullptr);
    }

    [[nodiscard]] static int count() { return count_; }

private:
    static void setPeriod(suseconds_t microseconds) {
        const itimerval period{{0, microseconds}, {0, microseconds}};
        ::setitimer(ITIMER_REAL, &period, nullptr);
    }

    static inline volatile std::sig_atomic_t count_ = 0;
    struct sigaction previous_ {};
};

std::int32_t versionFor(const std::optional<std::string>& variable) {
    const EnvironmentVariable version(kVariable, variable);
    return SystemClock().gestalt(gestaltSystemVersion);
}

TEST(SystemClock, DatesCountFromTheStartOf2001) {
    EXPECT_EQ(dateOf({978'307'200, 0}).timeIntervalSinceReferenceDate, 0.0);
    EXPECT_EQ(dateOf({978'307'201, 500'000'000}).timeIntervalSinceReferenceDate, 1.5);
    EXPECT_EQ(dateOf({0, 0}).timeIntervalSinceReferenceDate, -978'307'200.0);
}

TEST(SystemClock, NoMomentIsTooFarForADate) {
    using Seconds = std::numeric_limits<time_t>;
    EXPECT_EQ(dateOf({Seconds::max(), 0}).timeIntervalSinceReferenceDate, 9'223'372'035'876'468'608.0);
    EXPECT_EQ(dateOf({Seconds::min(), 0}).timeIntervalSinceReferenceDate, -9'223'372'037'833'083'008.0);
}

TEST(SystemClock, DateIsTheRealTimeClocks) {
    const std::chrono::sys_days reference = std::chrono::year(2001) / std::chrono::January / 1;
    const auto now = [&] {
        return std::chrono::duration<double>(std::chrono::system_clock::now() - reference).count();
    };
    // A number of this size is exact to less than a microsecond.
    const double before = now() - 1e-6;
    const double date = SystemClock().date().timeIntervalSinceReferenceDate;
    EXPECT_LE(before, date);
    EXPECT_LE(date, now() + 1e-6);
}

TEST(SystemClock, TicksAreSixtiethsOfASecondOfTheMonotonicClock) {
    const auto now = [] {
        const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
        return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::microseconds>(sinceStart).count() *
                                          60 / 1'000'000);
    };
    const std::uint32_t before = now();
    const std::uint32_t ticks = SystemClock().tickCount();
    // As differences, which stay right when the count wraps around.
    EXPECT_LE(ticks - before, now() - before);
}

TEST(SystemClock, SleepIsWholeThoughSignalsInterruptIt) {
    const Interruptions interruptions;
    const auto start = std::chrono::steady_clock::now();
    SystemClock().sleep(1);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_GT(Interruptions::count(), 0);
}

TEST(SystemClock, SystemVersionIsTheVariableInHexadecimal) {
    EXPECT_EQ(versionFor("1068"), 0x1068);
    EXPECT_EQ(versionFor("0x1074"), 0x1074);
    EXPECT_EQ(versionFor("0X107F"), 0x107F);
    EXPECT_EQ(versionFor("107f"), 0x107F);
    EXPECT_EQ(versionFor("0"), 0);
    EXPECT_EQ(versionFor("7fffffff"), 0x7FFFFFFF);
}

TEST(SystemClock, SystemVersionIs1090WithoutAVariableThatIsANumber) {
    EXPECT_EQ(versionFor(std::nullopt), 0x1090);
    for (const char* text : {"", "0x", "0x0x1068", "10.6.8", "1068 ", " 1068", "-1068", "+1068", "80000000",
                             "100001068", "Snow Leopard"}) {
        EXPECT_EQ(versionFor(text), 0x1090) << '"' << text << '"';
    }
}

TEST(SystemClock, SystemVersionIsAskedForAfresh) {
    SystemClock system;
    const EnvironmentVariable first(kVariable, "1068");
    EXPECT_EQ(system.gestalt(gestaltSystemVersion), 0x1068);
    const EnvironmentVariable second(kVariable, "1070");
    EXPECT_EQ(system.gestalt(gestaltSystemVersion), 0x1070);
}

TEST(SystemClock, OtherSelectorsAreUnknown) {
    const EnvironmentVariable version(kVariable, "1068");
    EXPECT_EQ(SystemClock().gestalt(0), 0);
    EXPECT_EQ(SystemClock().gestalt(gestaltSystemVersion + 1), 0);
}

} // namespace
