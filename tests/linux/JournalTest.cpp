#include "linux/Journal.h"

#include "support/EnvironmentVariable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

#include <fcntl.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <syslog.h>
#include <unistd.h>

namespace {

struct Entry {
    int priority;
    std::string format;
    std::string text;
    bool operator==(const Entry&) const = default;
};

std::vector<Entry> entries;
std::string openedIdent;

} // namespace

// These take the place of the system's own in this program, so that no test writes to the machine's journal.
extern "C" void openlog(const char* ident, int, int) { openedIdent = ident; }

extern "C" void syslog(int priority, const char* format, ...) {
    std::array<char, 1024> text{};
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    entries.push_back({priority, format, text.data()});
}

namespace {

using kelvo::Journal;

/// Puts another descriptor in the place of standard error, which it takes over.
class StandardError {
public:
    explicit StandardError(int replacement) : previous_(::dup(STDERR_FILENO)) {
        ::dup2(replacement, STDERR_FILENO);
        ::close(replacement);
    }
    StandardError(const StandardError&) = delete;
    StandardError& operator=(const StandardError&) = delete;
    ~StandardError() {
        ::dup2(previous_, STDERR_FILENO);
        ::close(previous_);
    }

private:
    int previous_;
};

class JournalTest : public testing::Test {
protected:
    void SetUp() override {
        entries.clear();
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, sockets_.data()), 0);
    }
    void TearDown() override { ::close(sockets_[0]); }

    /// What standard error got, one element per write; it must have been redirected to `standardError()`.
    [[nodiscard]] std::vector<std::string> writes() const {
        std::vector<std::string> packets;
        std::array<char, 4096> packet{};
        for (;;) {
            const ssize_t size = ::recv(sockets_[0], packet.data(), packet.size(), MSG_DONTWAIT);
            if (size <= 0) return packets;
            packets.emplace_back(packet.data(), static_cast<std::size_t>(size));
        }
    }
    [[nodiscard]] int standardError() const { return sockets_[1]; }

private:
    std::array<int, 2> sockets_{};
};

TEST_F(JournalTest, LineGoesToSyslogUnderTheIdentAndIsNoFormat) {
    const EnvironmentVariable unset("KELVO_LOG_STDERR", std::nullopt);
    const StandardError redirected(standardError());
    Journal journal("touch-test");
    journal.write("100%s %n ä");
    EXPECT_EQ(openedIdent, "touch-test");
    EXPECT_EQ(entries, (std::vector<Entry>{{LOG_USER | LOG_NOTICE, "%s", "100%s %n ä"}}));
    EXPECT_EQ(writes(), std::vector<std::string>());
}

TEST_F(JournalTest, ControlCharactersAreMadeVisible) {
    const EnvironmentVariable set("KELVO_LOG_STDERR", "1");
    const StandardError redirected(standardError());
    Journal journal("touch-test");
    journal.write(std::string_view("a\nb\x1b[31m\0\x7f\t", 10));
    EXPECT_EQ(entries.at(0).text, "a\\nb\\x1b[31m\\x00\\x7f");
    EXPECT_EQ(writes(), std::vector<std::string>{"a\\nb\\x1b[31m\\x00\\x7f\n"});
}

TEST_F(JournalTest, ControlCharactersBeyondTheFirstSetAreMadeVisibleAndTheirNeighboursStay) {
    Journal journal("touch-test");
    journal.write("\u0080 \u009b31m \u009f");
    journal.write("\u00a0\u00bf\u00c0\u00db\u20ac\U0001F600");
    journal.write("cut short \xC2");
    EXPECT_EQ(entries.at(0).text, "\\xc2\\x80 \\xc2\\x9b31m \\xc2\\x9f");
    EXPECT_EQ(entries.at(1).text, "\u00a0\u00bf\u00c0\u00db\u20ac\U0001F600");
    EXPECT_EQ(entries.at(2).text, "cut short \xC2");
}

TEST_F(JournalTest, EachLineIsOneWriteToStandardErrorWhenTheVariableIsSet) {
    const EnvironmentVariable set("KELVO_LOG_STDERR", "1");
    const StandardError redirected(standardError());
    Journal journal("touch-test");
    journal.write("first");
    journal.write("");
    EXPECT_EQ(writes(), (std::vector<std::string>{"first\n", "\n"}));
    EXPECT_EQ(entries.size(), 2U);
}

TEST_F(JournalTest, EmptyVariableIsAsIfItWereNotSet) {
    const EnvironmentVariable empty("KELVO_LOG_STDERR", "");
    const StandardError redirected(standardError());
    Journal journal("touch-test");
    journal.write("line");
    EXPECT_EQ(writes(), std::vector<std::string>());
}

TEST_F(JournalTest, TerminalGetsTheLineWithoutTheVariable) {
    const EnvironmentVariable unset("KELVO_LOG_STDERR", std::nullopt);
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (terminal < 0 || ::grantpt(terminal) != 0 || ::unlockpt(terminal) != 0) GTEST_SKIP() << "no pseudo-terminals";
    ::close(standardError());
    {
        const StandardError redirected(::open(::ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC));
        Journal journal("touch-test");
        journal.write("line");
    }
    std::array<char, 64> shown{};
    const ssize_t size = ::read(terminal, shown.data(), shown.size());
    ::close(terminal);
    EXPECT_EQ(std::string(shown.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))), "line\r\n");
}

} // namespace
