#include "linux/BusProcesses.h"

#include "linux/BusMessagePorts.h"
#include "linux/PollRunLoop.h"
#include "support/PrivateBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;
using Processes = std::vector<std::optional<std::uint32_t>>;

constexpr double kLongTime = 30.0;

class BusProcessesTest : public testing::Test {
protected:
    Processes answerTo(const std::vector<std::string>& names, kelvo::BusProcesses& processes) {
        std::optional<Processes> answer;
        processes.ask(names, [&](const Processes& told) { answer = told; });
        loop_.runUntil([&] { return answer.has_value(); }, kLongTime);
        return answer.value_or(Processes());
    }

    static std::optional<std::uint32_t> ownProcess() { return static_cast<std::uint32_t>(getpid()); }

    PrivateBus bus_;
    kelvo::PollRunLoop loop_;
    kelvo::BusMessagePorts ports_{loop_, bus_.address()};
    kelvo::BusProcesses processes_{loop_, bus_.address()};
};

TEST_F(BusProcessesTest, EachNameHasTheProcessThatOwnsItOrNone) {
    const auto port = ports_.createLocal("Port", [](auto&, auto, auto) {});
    ASSERT_TRUE(port);
    EXPECT_THAT(answerTo({"com.kelvo.TouchDisplay.Port", "com.kelvo.TouchDisplay.Nobody", "", ":1.99"}, processes_),
                ElementsAre(ownProcess(), std::nullopt, std::nullopt, std::nullopt));
    EXPECT_THAT(answerTo({}, processes_), ElementsAre());
}

TEST_F(BusProcessesTest, WithoutABusNobodyHasAName) {
    kelvo::BusProcesses processes(loop_, "unix:path=" + bus_.folder().string() + "/nowhere");
    EXPECT_THAT(answerTo({"com.kelvo.TouchDisplay.Port"}, processes), ElementsAre(std::nullopt));
}

TEST_F(BusProcessesTest, ABusThatWentAwayAndCameBackIsAskedAgain) {
    EXPECT_THAT(answerTo({"org.freedesktop.DBus.Nobody"}, processes_), ElementsAre(std::nullopt));
    bus_.hang();
    Processes answer;
    int told = 0;
    processes_.ask({"org.freedesktop.DBus"}, [&](const Processes& processes) {
        answer = processes;
        ++told;
    });
    bus_.kill();
    loop_.runUntil([&] { return told > 0; }, kLongTime);
    EXPECT_EQ(told, 1);
    EXPECT_THAT(answer, ElementsAre(std::nullopt));

    // The loop gets no turn in which it could find out more of the bus that is gone.
    bus_.start();
    kelvo::PollRunLoop other;
    kelvo::BusMessagePorts ports(other, bus_.address());
    const auto port = ports.createLocal("Port", [](auto&, auto, auto) {});
    ASSERT_TRUE(port);
    EXPECT_THAT(answerTo({"com.kelvo.TouchDisplay.Port"}, processes_), ElementsAre(ownProcess()));
}

TEST_F(BusProcessesTest, AskingMayGoOnWhileAnAnswerIsTold) {
    std::vector<int> told;
    processes_.ask({"a.b"}, [&](const Processes&) {
        processes_.ask({"a.c"}, [&](const Processes&) { told.push_back(2); });
        told.push_back(1);
    });
    loop_.runUntil([&] { return told.size() == 2; }, kLongTime);
    EXPECT_THAT(told, UnorderedElementsAre(1, 2));
}

TEST_F(BusProcessesTest, AMessageBearsTheNameOfItsSendersConnection) {
    std::string sender;
    const auto port =
        ports_.createLocal("Port", [&](platform::CFMessagePort& local, auto, auto) { sender = local.sender(); });
    ASSERT_TRUE(port);
    const auto source = port->createRunLoopSource();
    source->schedule(loop_);
    platform::NSData reply;
    ports_.createRemote("Port")->sendRequest(1, {}, 1.0, 1.0, reply);
    loop_.runUntil([&] { return !sender.empty(); }, kLongTime);
    EXPECT_EQ(port->sender(), "") << "nothing is being handled";
    EXPECT_THAT(answerTo({sender}, processes_), ElementsAre(ownProcess()));
}

TEST_F(BusProcessesTest, AMessageHandledWithinAnotherLeavesThatOneItsSender) {
    std::vector<std::string> senders;
    kelvo::BusMessagePorts others(loop_, bus_.address());
    const auto port = ports_.createLocal("Port", [&](platform::CFMessagePort& local, std::int32_t id, auto) {
        senders.push_back(local.sender());
        if (id != 1) return;
        platform::NSData reply;
        others.createRemote("Port")->sendRequest(2, {}, 1.0, 1.0, reply);
        loop_.runUntil([&] { return senders.size() == 2; }, kLongTime);
        senders.push_back(local.sender());
    });
    ASSERT_TRUE(port);
    const auto source = port->createRunLoopSource();
    source->schedule(loop_);
    platform::NSData reply;
    ports_.createRemote("Port")->sendRequest(1, {}, 1.0, 1.0, reply);
    loop_.runUntil([&] { return senders.size() == 3; }, kLongTime);
    ASSERT_EQ(senders.size(), 3U);
    EXPECT_NE(senders[0], senders[1]);
    EXPECT_EQ(senders[0], senders[2]);
}

} // namespace
