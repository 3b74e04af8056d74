#include "linux/CommandOutput.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

namespace kelvo {

namespace {

/// More than any expected output; the rest is not read.
constexpr std::size_t kMostText = 1U << 20U;

/// The standard output of the program is its end of the pipe. Negative if it cannot be started.
pid_t started(std::vector<std::string>& words, int output) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    if (::posix_spawn_file_actions_init(&actions) != 0) return -1;
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t process = -1;
    const int result = ::posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    return result == 0 ? process : -1;
}

} // namespace

CommandOutput::CommandOutput(platform::CFRunLoop& loop, std::vector<std::string> words,
                             std::function<void(const std::string& text)> tell)
    : tell_(std::move(tell)) {
    std::array<int, 2> ends{-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) == 0) {
        output_ = Descriptor(ends[0]);
        // The program waits until there is room.
        (void)::fcntl(output_.number(), F_SETFL, O_NONBLOCK);
        const Descriptor programs(ends[1]);
        process_ = started(words, programs.number());
    }
    if (process_ >= 0) {
        watch_ = loop.watch(output_.number(), [this] { read(); });
    } else {
        failure_ = loop.scheduleTimer(0.0, [this] { finish(); });
    }
}

CommandOutput::~CommandOutput() {
    if (failure_) failure_->invalidate();
    end();
}

/// Everything of interest has been read.
void CommandOutput::end() {
    if (process_ < 0) return;
    ::kill(process_, SIGKILL);
    ::waitpid(std::exchange(process_, -1), nullptr, 0);
}

void CommandOutput::read() {
    std::array<char, 4096> part{};
    const ssize_t size = ::read(output_.number(), part.data(), part.size());
    if (size < 0 && (errno == EAGAIN || errno == EINTR)) return;
    if (size > 0) text_.append(part.data(), static_cast<std::size_t>(size));
    if (size <= 0 || text_.size() > kMostText) finish();
}

void CommandOutput::finish() {
    watch_.reset();
    end();
    const auto tell = std::exchange(tell_, nullptr);
    const std::string text = std::move(text_);
    if (tell) tell(text);
}

} // namespace kelvo
