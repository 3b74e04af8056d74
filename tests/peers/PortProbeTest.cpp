#include "peers/PortProbe.h"

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

class PortProbeTest : public testing::Test {
protected:
    void ask() {
        probe_.ask([this](PortAnswer answer) { answers_.push_back(answer); });
    }

    /// The one answer to one question.
    PortAnswer answer() {
        answers_.clear();
        ask();
        platform_.loop.runUntil([this] { return !answers_.empty(); }, kLongSeconds);
        return answers_.at(0);
    }

    /// Whether the answer comes to that. A machine that is slow for half a second gets another chance.
    bool comesTo(PortAnswer expected) {
        constexpr int kChances = 40;
        for (int i = 0; i < kChances; ++i) {
            const PortAnswer given = answer();
            if (given == expected) return true;
            if (given != PortAnswer::NotAnswering) return false;
        }
        return false;
    }

    PrivateBus bus_;
    BusPlatform platform_{bus_.address()};
    std::vector<PortAnswer> answers_;
    PortProbe probe_{kTouchDisplayDriverPortName, bus_.address()};
};

TEST_F(PortProbeTest, DriverThatHasItsPortAnswersAndReceivesNoMessage) {
    int received = 0;
    const auto port = platform_.ports.createLocal(kTouchDisplayDriverPortName, [&](auto&&...) { ++received; });
    ASSERT_TRUE(port);
    const auto source = port->createRunLoopSource();
    platform_.loop.addSource(*source);

    EXPECT_TRUE(comesTo(PortAnswer::Answering));
    EXPECT_EQ(received, 0);
}

TEST_F(PortProbeTest, PortThatNobodyHasIsADriverThatDoesNotRunAndStartsNobody) {
    bus_.addActivatableService("com.kelvo.TouchDisplay.TouchDisplayDriverMessagePort",
                               "/usr/bin/touch " + (bus_.folder() / "started").string());
    bus_.kill();
    bus_.start();

    EXPECT_TRUE(comesTo(PortAnswer::NotRunning));
    EXPECT_FALSE(std::filesystem::exists(bus_.folder() / "started"));
}

TEST_F(PortProbeTest, DriverThatHangsDoesNotAnswer) {
    // Nothing ever serves this connection.
    sd_bus* created = nullptr;
    ASSERT_GE(sd_bus_new(&created), 0);
    const Bus hung(created);
    ASSERT_GE(sd_bus_set_address(created, bus_.address().c_str()), 0);
    ASSERT_GE(sd_bus_set_bus_client(created, 1), 0);
    ASSERT_GE(sd_bus_start(created), 0);
    ASSERT_GE(sd_bus_request_name(created, "com.kelvo.TouchDisplay.TouchDisplayDriverMessagePort", 0), 0);

    EXPECT_EQ(answer(), PortAnswer::NotAnswering);
}

TEST_F(PortProbeTest, BusThatHangsIsADriverThatDoesNotAnswer) {
    bus_.hang();
    EXPECT_EQ(answer(), PortAnswer::NotAnswering);
    bus_.resume();
}

TEST_F(PortProbeTest, WithoutABusNoDriverRuns) {
    bus_.kill();
    EXPECT_TRUE(comesTo(PortAnswer::NotRunning));
}

TEST_F(PortProbeTest, BusThatGoesAwayMeanwhileTakesTheDriverWithIt) {
    bus_.hang();
    ask();
    EXPECT_THAT(answers_, ElementsAre());
    bus_.kill();
    platform_.loop.runUntil([this] { return !answers_.empty(); }, kLongSeconds);
    EXPECT_THAT(answers_, ElementsAre(PortAnswer::NotRunning));
}

TEST_F(PortProbeTest, AskedAgainBeforeItsAnswerTellsOnlyTheLaterOne) {
    std::vector<std::string> story;
    // A bus that stands still cannot answer the first before the second is asked.
    bus_.hang();
    probe_.ask([&](PortAnswer) { story.emplace_back("first"); });
    probe_.ask([&](PortAnswer) { story.emplace_back("second"); });
    bus_.resume();
    platform_.loop.runUntil([&] { return !story.empty(); }, kLongSeconds);
    // All that the first could still have brought would come before this.
    EXPECT_TRUE(comesTo(PortAnswer::NotRunning));
    EXPECT_THAT(story, ElementsAre("second"));
}

} // namespace

} // namespace kelvo
