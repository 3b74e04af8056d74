#include "support/PrivateBus.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace {

constexpr int startTimeoutMilliseconds = 10'000;

class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    [[nodiscard]] int number() const { return number_; }
    void close() { ::close(std::exchange(number_, -1)); }

private:
    int number_;
};

std::filesystem::path newTemporaryFolder() {
    std::string path = (std::filesystem::temp_directory_path() / "private-bus-XXXXXX").string();
    if (!mkdtemp(path.data())) throw std::runtime_error("no temporary folder for the bus");
    return path;
}

/// Becomes the daemon, which writes its address to `output` once it listens and does not outlive the test.
[[noreturn]] void becomeDaemon(const std::string& address, const std::string& dataHome, int output) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(output, STDOUT_FILENO);
    // It complains of limits that it may not raise here, which is no concern of the test.
    dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
    // The services that the user's desktop has installed are none of the test's.
    setenv("XDG_DATA_HOME", dataHome.c_str(), 1);
    unsetenv("XDG_RUNTIME_DIR");
    const std::string listen = "--address=" + address;
    execlp("dbus-daemon", "dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address", listen.c_str(),
           static_cast<char*>(nullptr));
    _exit(127);
}

/// Whether a byte came before the time was over or the other end was closed.
bool awaitOutput(int descriptor) {
    pollfd entry{descriptor, POLLIN, 0};
    char byte = 0;
    return poll(&entry, 1, startTimeoutMilliseconds) == 1 && read(descriptor, &byte, 1) == 1;
}

} // namespace

PrivateBus::PrivateBus() : folder_(newTemporaryFolder()) {
    std::filesystem::create_directories(folder_ / "dbus-1" / "services");
    try {
        start();
    } catch (...) {
        removeFolder();
        throw;
    }
}

PrivateBus::~PrivateBus() {
    kill();
    removeFolder();
}

void PrivateBus::removeFolder() const {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

std::string PrivateBus::address() const { return "unix:path=" + (folder_ / "socket").string(); }

void PrivateBus::addActivatableService(const std::string& name, const std::string& command) const {
    std::ofstream file(folder_ / "dbus-1" / "services" / (name + ".service"));
    file << "[D-BUS Service]\nName=" << name << "\nExec=" << command << "\n";
}

void PrivateBus::hang() {
    ::kill(daemon_, SIGSTOP);
    int status = 0;
    waitpid(daemon_, &status, WUNTRACED);
}

void PrivateBus::resume() { ::kill(daemon_, SIGCONT); }

void PrivateBus::kill() {
    if (daemon_ <= 0) return;
    ::kill(daemon_, SIGKILL);
    waitpid(daemon_, nullptr, 0);
    daemon_ = -1;
}

void PrivateBus::start() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe to the bus");
    Descriptor reading(ends[0]);
    Descriptor writing(ends[1]);
    daemon_ = fork();
    if (daemon_ == 0) becomeDaemon(address(), folder_.string(), writing.number());
    writing.close();
    if (daemon_ < 0 || !awaitOutput(reading.number())) {
        kill();
        throw std::runtime_error("the bus did not start");
    }
}
