#include "linux/BusMessagePorts.h"

#include "linux/PollRunLoop.h"
#include "support/PrivateBus.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <numeric>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace {

using kelvo::BusMessagePorts;
using kelvo::PollRunLoop;
using platform::CFMessagePort;
using platform::CFMessagePortStatus;
using platform::NSData;

/// For what is going to time out.
constexpr double shortTime = 0.2;
/// For what is not: long enough never to be reached by a test that succeeds.
constexpr double longTime = 30.0;

bool never() { return false; }

std::string hexadecimal(std::span<const std::uint8_t> data) {
    constexpr const char* digits = "0123456789abcdef";
    std::string text;
    for (const auto byte : data) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

/// A process of its own, which begins to run its program at the first resume() and ends with this object. It must be
/// made before the test itself has opened a port, whose connection it would otherwise inherit and hold.
class Peer {
public:
    /// The program says its lines by dprintf() to the descriptor that it is given.
    using Program = std::function<void(int output)>;

    explicit Peer(const Program& program) {
        std::array<int, 2> ends{-1, -1};
        EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
        process_ = fork();
        if (process_ == 0) run(program, ends[1]);
        close(ends[1]);
        output_ = ends[0];
        awaitStop();
    }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    ~Peer() {
        kill();
        close(output_);
    }

    void resume() const { ::kill(process_, SIGCONT); }
    void hang() const {
        ::kill(process_, SIGSTOP);
        awaitStop();
    }
    void kill() {
        if (process_ <= 0) return;
        ::kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
        process_ = -1;
    }

    /// What the program says next; empty when it has ended or says nothing for long.
    [[nodiscard]] std::string line() const {
        std::string text;
        pollfd entry{output_, POLLIN, 0};
        char byte = 0;
        while (poll(&entry, 1, static_cast<int>(longTime * 1000)) == 1 && read(output_, &byte, 1) == 1 && byte != '\n')
            text += byte;
        return text;
    }

private:
    [[noreturn]] static void run(const Program& program, int output) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::kill(getpid(), SIGSTOP);
        program(output);
        _exit(0);
    }
    void awaitStop() const {
        int status = 0;
        EXPECT_EQ(waitpid(process_, &status, WUNTRACED), process_);
        EXPECT_TRUE(WIFSTOPPED(status));
    }

    pid_t process_ = -1;
    int output_ = -1;
};

/// Has the port `name`; says "ready", or "taken", and then the id and the bytes of each message.
Peer::Program receiver(const std::string& address, const std::string& name) {
    return [=](int output) {
        PollRunLoop loop;
        BusMessagePorts ports(loop, address);
        const auto port =
            ports.createLocal(name, [=](CFMessagePort&, std::int32_t id, std::span<const std::uint8_t> data) {
                dprintf(output, "%d %s\n", id, hexadecimal(data).c_str());
            });
        dprintf(output, port ? "ready\n" : "taken\n");
        if (!port) return;
        const auto source = port->createRunLoopSource();
        loop.addSource(*source);
        loop.run();
    };
}

/// Sends the messages 1 to `count` to the port `name`, each once the one before was answered; then says "sent".
Peer::Program sender(const std::string& address, const std::string& name, int count) {
    return [=](int output) {
        PollRunLoop loop;
        BusMessagePorts ports(loop, address);
        NSData reply;
        for (int id = 1; id <= count; ++id) ports.createRemote(name)->sendRequest(id, {}, longTime, longTime, reply);
        dprintf(output, "sent\n");
    };
}

/// Calls the port "Pane" as any program may that knows how a port looks on the bus. The first `count` messages are sent
/// without waiting, whereupon the program says "flushed"; the last is a call, of whose answer it says the number of
/// bytes.
Peer::Program foreignCaller(const std::string& address, int count) {
    return [=](int output) {
        constexpr const char* name = "com.kelvo.TouchDisplay.Pane";
        constexpr const char* path = "/com/kelvo/TouchDisplay/MessagePort";
        constexpr const char* interface = "com.kelvo.TouchDisplay.MessagePort";
        sd_bus* bus = nullptr;
        setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
        sd_bus_open_user(&bus);
        for (int id = 1; id <= count; ++id) {
            sd_bus_message* message = nullptr;
            sd_bus_message_new_method_call(bus, &message, name, path, interface, "Send");
            sd_bus_message_set_expect_reply(message, 0);
            sd_bus_message_append(message, "iay", id, 2, 0xca, 0xfe);
            sd_bus_send(bus, message, nullptr);
            sd_bus_message_unref(message);
        }
        sd_bus_flush(bus);
        dprintf(output, "flushed\n");
        sd_bus_message* answer = nullptr;
        const void* bytes = nullptr;
        std::size_t size = 99;
        sd_bus_call_method(bus, name, path, interface, "Send", nullptr, &answer, "iay", count + 1, 0);
        sd_bus_message_read_array(answer, 'y', &bytes, &size);
        dprintf(output, "%zu\n", size);
        sd_bus_message_unref(answer);
        sd_bus_close_unref(bus);
    };
}

/// Keeps the intervals of its timers and lets them pass a hundred times as fast.
class FastLoop : public PollRunLoop {
public:
    std::shared_ptr<platform::NSTimer> scheduleTimer(double seconds, std::function<void()> action) override {
        intervals_.push_back(seconds);
        return PollRunLoop::scheduleTimer(seconds / 100.0, std::move(action));
    }

    std::vector<double> intervals_;
};

std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator());
}

/// A bus and, in this process, a program with a run loop.
class MessagePorts : public testing::Test {
protected:
    /// Opens the port "Pane", whose messages call `handle` once they are delivered.
    void open(BusMessagePorts::CallBack handle) {
        port_ = ports_.createLocal("Pane", std::move(handle));
        ASSERT_NE(port_, nullptr);
    }
    void openWithIds(const std::function<void(std::int32_t id)>& handle) {
        open([handle](CFMessagePort&, std::int32_t id, std::span<const std::uint8_t>) { handle(id); });
    }

    /// Delivers the messages of the port on the loop from now on.
    void deliver() {
        source_ = port_->createRunLoopSource();
        loop_.addSource(*source_);
    }

    CFMessagePortStatus send(const std::string& name, std::int32_t id, double sendTimeout = longTime,
                             double receiveTimeout = longTime, const NSData& data = {}) {
        NSData reply;
        return ports_.createRemote(name)->sendRequest(id, data, sendTimeout, receiveTimeout, reply);
    }

    /// Whether `condition` came true while the loop ran. It is asked again and again, also when nothing arrives.
    bool eventually(const std::function<bool()>& condition) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(longTime);
        while (std::chrono::steady_clock::now() < end) {
            if (condition()) return true;
            loop_.runUntil(never, 0.01);
        }
        return false;
    }

    PrivateBus bus_;
    PollRunLoop loop_;
    BusMessagePorts ports_{loop_, bus_.address()};
    std::unique_ptr<CFMessagePort> port_;
    std::unique_ptr<platform::CFRunLoopSource> source_;
};

TEST_F(MessagePorts, CarryIdAndBytesToAnotherProcess) {
    Peer driver(receiver(bus_.address(), "Driver"));
    driver.resume();
    ASSERT_EQ(driver.line(), "ready");

    EXPECT_EQ(send("Driver", 7, longTime, longTime, {0x00, 0x0a, 0x80, 0xff}), CFMessagePortStatus::Success);
    EXPECT_EQ(send("Driver", -1), CFMessagePortStatus::Success);
    EXPECT_EQ(send("Driver", std::numeric_limits<std::int32_t>::min()), CFMessagePortStatus::Success);

    EXPECT_EQ(driver.line(), "7 000a80ff");
    EXPECT_EQ(driver.line(), "-1 ");
    EXPECT_EQ(driver.line(), "-2147483648 ");
}

TEST_F(MessagePorts, AnswerWithoutData) {
    openWithIds([](std::int32_t) {});
    deliver();
    NSData reply{1, 2, 3};

    const auto status = ports_.createRemote("Pane")->sendRequest(1, {}, longTime, longTime, reply);

    EXPECT_EQ(status, CFMessagePortStatus::Success);
    EXPECT_TRUE(reply.empty());
}

TEST_F(MessagePorts, AreOpenToAnyProgramThatKnowsTheInterface) {
    Peer caller(foreignCaller(bus_.address(), 0));
    std::vector<std::int32_t> ids;
    openWithIds([&](std::int32_t id) { ids.push_back(id); });
    deliver();
    caller.resume();

    EXPECT_TRUE(eventually([&] { return !ids.empty(); }));

    EXPECT_EQ(ids, std::vector<std::int32_t>{1});
    EXPECT_EQ(caller.line(), "flushed");
    EXPECT_EQ(caller.line(), "0");
}

TEST_F(MessagePorts, CarryMoreThanOneMebibyteWhole) {
    NSData sent(std::size_t{3} << 20);
    std::iota(sent.begin(), sent.end(), std::uint8_t{0});
    NSData received;
    open([&](CFMessagePort&, std::int32_t, std::span<const std::uint8_t> data) {
        received.assign(data.begin(), data.end());
    });
    deliver();

    const auto status = send("Pane", 1, longTime, longTime, sent);

    EXPECT_EQ(status, CFMessagePortStatus::Success);
    EXPECT_TRUE(eventually([&] { return !received.empty(); }));
    EXPECT_TRUE(received == sent);
}

TEST_F(MessagePorts, SendToAPortThatNobodyHasIsInvalidAndStartsNobody) {
    const auto trace = bus_.folder() / "started";
    bus_.addActivatableService("com.kelvo.TouchDisplay.Driver", "/usr/bin/touch " + trace.string());

    EXPECT_EQ(send("Driver", 1), CFMessagePortStatus::IsInvalid);

    EXPECT_FALSE(std::filesystem::exists(trace));
}

TEST_F(MessagePorts, ANameThatTheBusCannotHaveIsNoPort) {
    EXPECT_EQ(ports_.createLocal("not a name", [](auto&&...) {}), nullptr);
    EXPECT_EQ(send("not a name", 1), CFMessagePortStatus::IsInvalid);
    EXPECT_EQ(send("", 1), CFMessagePortStatus::IsInvalid);
}

TEST_F(MessagePorts, SendToAHungPeerTimesOutAndWorksOnceItRunsAgain) {
    Peer driver(receiver(bus_.address(), "Driver"));
    driver.resume();
    ASSERT_EQ(driver.line(), "ready");
    driver.hang();

    EXPECT_EQ(send("Driver", 1, shortTime, shortTime), CFMessagePortStatus::ReceiveTimeout);
    driver.resume();
    EXPECT_EQ(driver.line(), "1 ");
    // The answer that comes too late is not taken for that of the next message.
    EXPECT_EQ(send("Absent", 2), CFMessagePortStatus::IsInvalid);
    EXPECT_EQ(send("Driver", 3), CFMessagePortStatus::Success);
    EXPECT_EQ(driver.line(), "3 ");
}

TEST_F(MessagePorts, SendToAPeerThatDiesMeanwhileEndsAtOnce) {
    Peer driver(receiver(bus_.address(), "Driver"));
    driver.resume();
    ASSERT_EQ(driver.line(), "ready");
    driver.hang();
    loop_.scheduleTimer(shortTime, [&] { driver.kill(); });

    EXPECT_EQ(send("Driver", 1), CFMessagePortStatus::TransportError);
    EXPECT_EQ(send("Driver", 2), CFMessagePortStatus::IsInvalid);
}

TEST_F(MessagePorts, SendOnAHungBusTimesOutAndIsNeverDelivered) {
    Peer driver(receiver(bus_.address(), "Driver"));
    driver.resume();
    ASSERT_EQ(driver.line(), "ready");
    bus_.hang();

    EXPECT_EQ(send("Driver", 1, shortTime, shortTime), CFMessagePortStatus::SendTimeout);
    bus_.resume();
    EXPECT_EQ(send("Driver", 2), CFMessagePortStatus::Success);

    EXPECT_EQ(driver.line(), "2 ");
}

TEST_F(MessagePorts, ABusThatHangsAfterTakingAMessageIsAReceiveTimeout) {
    openWithIds([](std::int32_t) {});
    deliver();
    ASSERT_EQ(send("Pane", 1), CFMessagePortStatus::Success);
    bus_.hang();

    EXPECT_EQ(send("Pane", 2, shortTime, shortTime), CFMessagePortStatus::ReceiveTimeout);
}

TEST_F(MessagePorts, WithoutABusThereIsNoPortAndNothingToSendTo) {
    bus_.kill();

    EXPECT_EQ(ports_.createLocal("Pane", [](auto&&...) {}), nullptr);
    EXPECT_EQ(send("Driver", 1), CFMessagePortStatus::TransportError);
}

TEST_F(MessagePorts, AHungBusLeavesThePortNull) {
    bus_.hang();

    EXPECT_EQ(ports_.createLocal("Pane", [](auto&&...) {}), nullptr);
}

TEST_F(MessagePorts, FindTheBusAgainBeneathTheSameOpenPort) {
    std::vector<std::int32_t> ids;
    openWithIds([&](std::int32_t id) { ids.push_back(id); });
    deliver();
    ASSERT_EQ(send("Pane", 1), CFMessagePortStatus::Success);
    bus_.kill();
    EXPECT_EQ(send("Pane", 2), CFMessagePortStatus::TransportError);
    bus_.start();

    EXPECT_TRUE(eventually([&] { return send("Pane", 3) == CFMessagePortStatus::Success; }));

    EXPECT_TRUE(eventually([&] { return ids.size() == 2; }));
    EXPECT_EQ(ids, (std::vector<std::int32_t>{1, 3}));
}

TEST_F(MessagePorts, ASendNoticesThatTheBusWasRestartedSinceTheLast) {
    Peer firstDriver(receiver(bus_.address(), "Driver"));
    Peer secondDriver(receiver(bus_.address(), "Driver"));
    firstDriver.resume();
    ASSERT_EQ(firstDriver.line(), "ready");
    ASSERT_EQ(send("Driver", 1), CFMessagePortStatus::Success);
    firstDriver.kill();
    bus_.kill();
    bus_.start();
    secondDriver.resume();
    ASSERT_EQ(secondDriver.line(), "ready");

    EXPECT_EQ(send("Driver", 2), CFMessagePortStatus::Success);
}

TEST_F(MessagePorts, LookForALostBusLessAndLessOften) {
    FastLoop loop;
    BusMessagePorts ports(loop, bus_.address());
    const auto port = ports.createLocal("Pane", [](auto&&...) {});
    ASSERT_NE(port, nullptr);
    loop.intervals_.clear();
    bus_.kill();

    loop.runUntil([&] { return loop.intervals_.size() == 7; }, longTime);

    EXPECT_EQ(loop.intervals_, (std::vector<double>{0.1, 0.2, 0.4, 0.8, 1.6, 2.0, 2.0}));
}

TEST_F(MessagePorts, GetTheNameBackFromWhoeverTookItWhileTheBusWasAway) {
    Peer thief(receiver(bus_.address(), "Pane"));
    FastLoop loop;
    BusMessagePorts ports(loop, bus_.address());
    const auto port = ports.createLocal("Pane", [](auto&&...) {});
    ASSERT_NE(port, nullptr);
    bus_.kill();
    bus_.start();
    thief.resume();
    ASSERT_EQ(thief.line(), "ready");
    // The second interval begins when the bus has refused the name.
    loop.runUntil([&] { return std::ranges::count(loop.intervals_, 0.2) == 1; }, longTime);

    thief.kill();
    auto status = CFMessagePortStatus::IsInvalid;
    const auto sendOnce = [&] {
        NSData reply;
        status = ports.createRemote("Pane")->sendRequest(1, {}, longTime, longTime, reply);
        return status == CFMessagePortStatus::Success;
    };
    loop.runUntil(sendOnce, longTime);

    EXPECT_EQ(status, CFMessagePortStatus::Success);
}

TEST_F(MessagePorts, ATakenNameLeavesThePortNullUntilItIsFree) {
    Peer other(receiver(bus_.address(), "Pane"));
    other.resume();
    ASSERT_EQ(other.line(), "ready");

    EXPECT_EQ(ports_.createLocal("Pane", [](auto&&...) {}), nullptr);
    other.kill();

    EXPECT_TRUE(eventually([&] { return ports_.createLocal("Pane", [](auto&&...) {}) != nullptr; }));
}

TEST_F(MessagePorts, GiveTheirNameUpWhenDestroyed) {
    openWithIds([](std::int32_t) {});
    deliver();

    port_.reset();

    EXPECT_TRUE(eventually([&] { return send("Pane", 1) == CFMessagePortStatus::IsInvalid; }));
}

TEST_F(MessagePorts, DeliverAMessageInTheMiddleOfASend) {
    Peer driver(receiver(bus_.address(), "Driver"));
    Peer utility(sender(bus_.address(), "Pane", 1));
    driver.resume();
    ASSERT_EQ(driver.line(), "ready");
    driver.hang();
    std::vector<std::int32_t> ids;
    openWithIds([&](std::int32_t id) {
        ids.push_back(id);
        driver.resume();
    });
    deliver();
    loop_.scheduleTimer(0.0, [&] { utility.resume(); });

    // The driver runs, and the send comes to its end, only because the message is handled before that.
    EXPECT_EQ(send("Driver", 7), CFMessagePortStatus::Success);

    EXPECT_EQ(ids, std::vector<std::int32_t>{1});
}

TEST_F(MessagePorts, DeliverInOrderWhileAHandlerSends) {
    Peer driver(receiver(bus_.address(), "Driver"));
    Peer utility(sender(bus_.address(), "Pane", 3));
    driver.resume();
    ASSERT_EQ(driver.line(), "ready");
    driver.hang();
    std::vector<std::string> story;
    openWithIds([&](std::int32_t id) {
        story.push_back("message " + std::to_string(id));
        if (id == 3) driver.resume();
        if (id != 1) return;
        const auto status = send("Driver", 7);
        story.emplace_back(status == CFMessagePortStatus::Success ? "sent" : "not sent");
    });
    deliver();
    utility.resume();

    EXPECT_TRUE(eventually([&] { return story.size() == 4; }));

    EXPECT_EQ(story, (std::vector<std::string>{"message 1", "message 2", "message 3", "sent"}));
}

TEST_F(MessagePorts, KeepWhatComesBeforeTheSourceIsScheduled) {
    std::vector<std::int32_t> ids;
    openWithIds([&](std::int32_t id) { ids.push_back(id); });
    ASSERT_EQ(send("Pane", 1), CFMessagePortStatus::Success);
    ASSERT_EQ(send("Pane", 2), CFMessagePortStatus::Success);
    EXPECT_TRUE(ids.empty());

    deliver();

    EXPECT_TRUE(eventually([&] { return ids.size() == 2; }));
    EXPECT_EQ(ids, (std::vector<std::int32_t>{1, 2}));
}

TEST_F(MessagePorts, DeliverWhatHasComeInOrderWhileTheFirstHandlerRunsTheLoop) {
    std::vector<std::string> story;
    openWithIds([&](std::int32_t id) {
        story.push_back("message " + std::to_string(id));
        if (id != 1) return;
        EXPECT_TRUE(eventually([&] { return story.size() == 3; }));
        story.emplace_back("first handled");
    });
    for (const std::int32_t id : {1, 2, 3}) ASSERT_EQ(send("Pane", id), CFMessagePortStatus::Success);

    deliver();
    EXPECT_TRUE(eventually([&] { return story.size() == 4; }));

    EXPECT_EQ(story, (std::vector<std::string>{"message 1", "message 2", "message 3", "first handled"}));
}

TEST_F(MessagePorts, DeliverNothingOnceTheSourceIsRemoved) {
    std::vector<std::int32_t> ids;
    openWithIds([&](std::int32_t id) { ids.push_back(id); });
    deliver();
    loop_.removeSource(*source_);

    EXPECT_EQ(send("Pane", 1), CFMessagePortStatus::Success);
    EXPECT_EQ(send("Pane", 2), CFMessagePortStatus::Success);

    EXPECT_TRUE(ids.empty());
}

TEST_F(MessagePorts, AHandlerMayReplaceTheSourceThatDeliversToIt) {
    std::vector<std::int32_t> ids;
    openWithIds([&](std::int32_t id) {
        ids.push_back(id);
        deliver();
    });
    for (const std::int32_t id : {1, 2, 3}) ASSERT_EQ(send("Pane", id), CFMessagePortStatus::Success);

    deliver();

    EXPECT_TRUE(eventually([&] { return ids.size() == 3; }));
    EXPECT_EQ(ids, (std::vector<std::int32_t>{1, 2, 3}));
}

TEST_F(MessagePorts, AHandlerMayDestroyItsPortAndOpenItAgain) {
    std::vector<std::string> story;
    openWithIds([&](std::int32_t id) {
        story.push_back("old port: message " + std::to_string(id));
        port_.reset();
        EXPECT_TRUE(eventually([&] {
            port_ = ports_.createLocal("Pane", [&](CFMessagePort&, std::int32_t newId, auto&&) {
                story.push_back("new port: message " + std::to_string(newId));
            });
            return port_ != nullptr;
        }));
        story.emplace_back("handled");
    });
    for (const std::int32_t id : {1, 2}) ASSERT_EQ(send("Pane", id), CFMessagePortStatus::Success);
    deliver();
    ASSERT_TRUE(eventually([&] { return story.size() == 2; }));

    deliver();
    EXPECT_EQ(send("Pane", 3), CFMessagePortStatus::Success);

    EXPECT_TRUE(eventually([&] { return story.size() == 3; }));
    EXPECT_EQ(story, (std::vector<std::string>{"old port: message 1", "handled", "new port: message 3"}));
}

TEST_F(MessagePorts, ASourceMayOutliveItsPort) {
    std::vector<std::int32_t> ids;
    openWithIds([&](std::int32_t id) { ids.push_back(id); });
    ASSERT_EQ(send("Pane", 1), CFMessagePortStatus::Success);
    deliver();

    port_.reset();
    EXPECT_TRUE(eventually([&] { return send("Pane", 2) == CFMessagePortStatus::IsInvalid; }));
    loop_.removeSource(*source_);
    loop_.addSource(*source_);

    EXPECT_TRUE(ids.empty());
}

TEST_F(MessagePorts, ARemotePortMayBeDestroyedWhileItSends) {
    Peer driver(receiver(bus_.address(), "Driver"));
    driver.resume();
    ASSERT_EQ(driver.line(), "ready");
    driver.hang();
    auto ports = std::make_unique<BusMessagePorts>(loop_, bus_.address());
    auto remote = ports->createRemote("Driver");
    loop_.scheduleTimer(0.0, [&] {
        remote.reset();
        ports.reset();
        driver.resume();
    });
    NSData reply;

    EXPECT_EQ(remote->sendRequest(1, {}, longTime, longTime, reply), CFMessagePortStatus::Success);
    EXPECT_EQ(remote, nullptr);
}

TEST_F(MessagePorts, ASendThatGivesUpEndsTheSendAroundIt) {
    Peer driver(receiver(bus_.address(), "Driver"));
    driver.resume();
    ASSERT_EQ(driver.line(), "ready");
    driver.hang();
    auto inner = CFMessagePortStatus::Success;
    loop_.scheduleTimer(shortTime, [&] {
        bus_.hang();
        // More than any socket holds, so that it cannot all be sent.
        inner = send("Driver", 2, shortTime, shortTime, NSData(std::size_t{16} << 20));
    });

    const auto outer = send("Driver", 1);

    EXPECT_EQ(inner, CFMessagePortStatus::SendTimeout);
    EXPECT_EQ(outer, CFMessagePortStatus::TransportError);
    bus_.resume();
    EXPECT_EQ(send("Absent", 3), CFMessagePortStatus::IsInvalid);
}

TEST_F(MessagePorts, TakeAFloodWholeAndInOrderAndLeaveRoomForTimers) {
    constexpr int count = 2000;
    Peer caller(foreignCaller(bus_.address(), count));
    std::vector<std::int32_t> ids;
    std::size_t idsBefore = 0;
    std::size_t mostInOneTurn = 0;
    std::function<void()> countTurn = [&] {
        mostInOneTurn = std::max(mostInOneTurn, ids.size() - idsBefore);
        idsBefore = ids.size();
        loop_.scheduleTimer(0.0, countTurn);
    };
    openWithIds([&](std::int32_t id) { ids.push_back(id); });
    deliver();
    caller.resume();
    ASSERT_EQ(caller.line(), "flushed");
    countTurn();

    EXPECT_TRUE(eventually([&] { return ids.size() > count; }));

    std::vector<std::int32_t> expected(count + 1);
    std::iota(expected.begin(), expected.end(), 1);
    EXPECT_EQ(ids, expected);
    EXPECT_LE(mostInOneTurn, 8U);
}

TEST_F(MessagePorts, LeaveNoDescriptorBehind) {
    const auto before = openDescriptors();
    {
        BusMessagePorts ports(loop_, bus_.address());
        const auto port = ports.createLocal("Pane", [](auto&&...) {});
        ASSERT_NE(port, nullptr);
        EXPECT_EQ(ports.createLocal("Pane", [](auto&&...) {}), nullptr);
        const auto source = port->createRunLoopSource();
        loop_.addSource(*source);
        NSData reply;
        EXPECT_EQ(ports.createRemote("Pane")->sendRequest(1, {}, longTime, longTime, reply),
                  CFMessagePortStatus::Success);
        EXPECT_GT(openDescriptors(), before);
    }

    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(MessagePorts, DoNotWakeAnIdleProgram) {
    bool received = false;
    openWithIds([&](std::int32_t) { received = true; });
    deliver();
    ASSERT_EQ(send("Pane", 1), CFMessagePortStatus::Success);
    ASSERT_TRUE(eventually([&] { return received; }));
    int turns = 0;

    loop_.runUntil(
        [&] {
            ++turns;
            return false;
        },
        shortTime);

    // One look before the wait and one after it.
    EXPECT_EQ(turns, 2);
}

TEST_F(MessagePorts, FindTheSessionBusWhereTheEnvironmentSaysAtEachConnect) {
    setenv("DBUS_SESSION_BUS_ADDRESS", bus_.address().c_str(), 1);
    BusMessagePorts ports(loop_);
    const auto sendAbsent = [&] {
        NSData reply;
        return ports.createRemote("Absent")->sendRequest(1, {}, longTime, longTime, reply);
    };
    ASSERT_EQ(sendAbsent(), CFMessagePortStatus::IsInvalid);
    PrivateBus other;
    bus_.kill();
    ASSERT_EQ(sendAbsent(), CFMessagePortStatus::TransportError);

    setenv("DBUS_SESSION_BUS_ADDRESS", other.address().c_str(), 1);

    EXPECT_EQ(sendAbsent(), CFMessagePortStatus::IsInvalid);
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
}

} // namespace
