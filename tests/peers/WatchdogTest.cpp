#include "peers/driver/Watchdog.h"

#include "support/EnvironmentVariable.h"
#include "support/ScriptedRunLoop.h"
#include "support/TemporaryDirectory.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>

namespace {

/// Hears what a service manager would.
class Manager {
public:
    Manager() : socket_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path().c_str(), sizeof address.sun_path - 1);
        if (::bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
            throw std::runtime_error("no socket");
        }
    }
    ~Manager() { ::close(socket_); }
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;

    [[nodiscard]] std::string path() const { return folder_.path("notify"); }
    /// All that has come since the last time, a message a line.
    std::string heard() const {
        std::string text;
        std::array<char, 256> message{};
        for (ssize_t size = 0; (size = ::recv(socket_, message.data(), message.size(), 0)) >= 0;) {
            text.append(message.data(), static_cast<std::size_t>(size)).append("\n");
        }
        return text;
    }

private:
    TemporaryDirectory folder_;
    int socket_;
};

class WatchdogTest : public testing::Test {
protected:
    Manager manager;
    EnvironmentVariable socketVariable{"NOTIFY_SOCKET", manager.path()};
    EnvironmentVariable processVariable{"WATCHDOG_PID", std::to_string(::getpid())};
    support::ScriptedRunLoop loop;
};

TEST_F(WatchdogTest, TellsTwiceInEachIntervalWhileItIsNeeded) {
    const EnvironmentVariable interval{"WATCHDOG_USEC", "10000000"};
    kelvo::Watchdog watchdog(loop);
    watchdog.setNeeded(true);
    EXPECT_EQ(manager.heard(), "WATCHDOG_USEC=10000000\nWATCHDOG=1\n");
    loop.advance(4.9);
    EXPECT_EQ(manager.heard(), "");
    loop.advance(0.1);
    EXPECT_EQ(manager.heard(), "WATCHDOG=1\n");
    watchdog.setNeeded(true);
    EXPECT_EQ(manager.heard(), "");
    loop.advance(5.0);
    EXPECT_EQ(manager.heard(), "WATCHDOG=1\n");
}

TEST_F(WatchdogTest, IsCalledOffWhereItIsNotNeededAndWakesNothingUpThen) {
    const EnvironmentVariable interval{"WATCHDOG_USEC", "10000000"};
    kelvo::Watchdog watchdog(loop);
    watchdog.setNeeded(true);
    (void)manager.heard();
    watchdog.setNeeded(false);
    EXPECT_EQ(manager.heard(), "WATCHDOG_USEC=0\n");
    EXPECT_EQ(loop.pendingTimers(), 0U);
}

TEST_F(WatchdogTest, SaysNothingWhereNobodyWantsToKnow) {
    const EnvironmentVariable interval{"WATCHDOG_USEC", std::nullopt};
    kelvo::Watchdog watchdog(loop);
    watchdog.setNeeded(true);
    EXPECT_EQ(manager.heard(), "");
    EXPECT_EQ(loop.pendingTimers(), 0U);
}

} // namespace
