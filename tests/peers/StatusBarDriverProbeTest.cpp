#include "peers/status-bar/DriverProbe.h"

#include "TDNames.h"
#include "linux/BusMessagePorts.h"
#include "linux/PollRunLoop.h"
#include "support/FakePlatform.h"
#include "support/PrivateBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace kelvo {

namespace {

using testing::ElementsAre;

/// Longer than anything here takes; reaching it is a failure.
constexpr double kLongSeconds = 20.0;

/// A platform of which only the loop and the ports are in use.
class BusPlatform {
public:
    explicit BusPlatform(const std::string& address) : ports(loop, address) {}

    PollRunLoop loop;
    BusMessagePorts ports;

private:
    support::RecordedLog log_;
    support::MemoryFileManager files_;
    PlistCoder propertyLists_;
    support::MemoryBundle bundle_;
    support::ScriptedRunLoop clockLoop_;
    support::ScriptedClock clock_{clockLoop_};
    support::ScriptedSystemVersion version_;
    platform::Platform platform_{.log = log_,
                                 .fileManager = files_,
                                 .propertyLists = propertyLists_,
                                 .bundles = bundle_,
                                 .messagePorts = ports,
                                 .runLoop = loop,
                                 .clock = clock_,
                                 .systemVersion = version_};
    const platform::PlatformInUse inUse_{platform_};
};

class DriverProbeTest : public testing::Test {
protected:
    void ask() {
        probe_.ask([this](DriverAnswer answer) { answers_.push_back(answer); });
    }

    /// The one answer to one question.
    DriverAnswer answer() {
        answers_.clear();
        ask();
        platform_.loop.runUntil([this] { return !answers_.empty(); }, kLongSeconds);
        return answers_.at(0);
    }

    /// Whether the answer comes to that. A machine that is slow for half a second gets another chance.
    bool comesTo(DriverAnswer expected) {
        constexpr int kChances = 40;
        for (int i = 0; i < kChances; ++i) {
            const DriverAnswer given = answer();
            if (given == expected) return true;
            if (given != DriverAnswer::NotAnswering) return false;
        }
        return false;
    }

    PrivateBus bus_;
    BusPlatform platform_{bus_.address()};
    std::vector<DriverAnswer> answers_;
    DriverProbe probe_{bus_.address()};
};

TEST_F(DriverProbeTest, DriverThatHasItsPortAnswersAndReceivesNoMessage) {
    int received = 0;
    const auto port = platform_.ports.createLocal(kTouchDisplayDriverPortName, [&](auto&&...) { ++received; });
    ASSERT_TRUE(port);
    const auto source = port->createRunLoopSource();
    platform_.loop.addSource(*source);

    EXPECT_TRUE(comesTo(DriverAnswer::Answering));
    EXPECT_EQ(received, 0);
}

TEST_F(DriverProbeTest, PortThatNobodyHasIsADriverThatDoesNotRunAndStartsNobody) {
    bus_.addActivatableService("com.kelvo.TouchDisplay.TouchDisplayDriverMessagePort",
                               "/usr/bin/touch " + (bus_.folder() / "started").string());
    bus_.kill();
    bus_.start();

    EXPECT_TRUE(comesTo(DriverAnswer::NotRunning));
    EXPECT_FALSE(std::filesystem::exists(bus_.folder() / "started"));
}

TEST_F(DriverProbeTest, DriverThatHangsDoesNotAnswer) {
    // Nothing ever serves this connection.
    sd_bus* created = nullptr;
    ASSERT_GE(sd_bus_new(&created), 0);
    const Bus hung(created);
    ASSERT_GE(sd_bus_set_address(created, bus_.address().c_str()), 0);
    ASSERT_GE(sd_bus_set_bus_client(created, 1), 0);
    ASSERT_GE(sd_bus_start(created), 0);
    ASSERT_GE(sd_bus_request_name(created, "com.kelvo.TouchDisplay.TouchDisplayDriverMessagePort", 0), 0);

    EXPECT_EQ(answer(), DriverAnswer::NotAnswering);
}

TEST_F(DriverProbeTest, BusThatHangsIsADriverThatDoesNotAnswer) {
    bus_.hang();
    EXPECT_EQ(answer(), DriverAnswer::NotAnswering);
    bus_.resume();
}

TEST_F(DriverProbeTest, WithoutABusNoDriverRuns) {
    bus_.kill();
    EXPECT_TRUE(comesTo(DriverAnswer::NotRunning));
}

TEST_F(DriverProbeTest, BusThatGoesAwayMeanwhileTakesTheDriverWithIt) {
    bus_.hang();
    ask();
    EXPECT_THAT(answers_, ElementsAre());
    bus_.kill();
    platform_.loop.runUntil([this] { return !answers_.empty(); }, kLongSeconds);
    EXPECT_THAT(answers_, ElementsAre(DriverAnswer::NotRunning));
}

TEST_F(DriverProbeTest, AskedAgainBeforeItsAnswerTellsOnlyTheLaterOne) {
    std::vector<std::string> story;
    // A bus that stands still cannot answer the first before the second is asked.
    bus_.hang();
    probe_.ask([&](DriverAnswer) { story.emplace_back("first"); });
    probe_.ask([&](DriverAnswer) { story.emplace_back("second"); });
    bus_.resume();
    platform_.loop.runUntil([&] { return !story.empty(); }, kLongSeconds);
    // All that the first could still have brought would come before this.
    EXPECT_TRUE(comesTo(DriverAnswer::NotRunning));
    EXPECT_THAT(story, ElementsAre("second"));
}

} // namespace

} // namespace kelvo
