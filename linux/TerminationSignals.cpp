#include "linux/TerminationSignals.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace kelvo {

namespace {

/// The only way out of a signal handler: a pipe that the main loop watches.
volatile std::sig_atomic_t wakeDescriptor = -1;

void wakeMainLoop(int) {
    const int interrupted = errno;
    const char anything = 0;
    // A full pipe also wakes up the loop.
    [[maybe_unused]] const ssize_t written = write(wakeDescriptor, &anything, 1);
    errno = interrupted;
}

} // namespace

/// Closes both ends on destruction. The ends are non-blocking and not inherited by started processes.
class TerminationSignals::Pipe {
public:
    Pipe() {
        if (pipe2(ends_, O_CLOEXEC | O_NONBLOCK) != 0) throw std::system_error(errno, std::generic_category(), "pipe2");
    }
    ~Pipe() {
        close(readEnd());
        close(writeEnd());
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    [[nodiscard]] int readEnd() const { return ends_[0]; }
    [[nodiscard]] int writeEnd() const { return ends_[1]; }

    void drain() const {
        char discarded[16];
        while (read(readEnd(), discarded, sizeof discarded) > 0) {
        }
    }

private:
    int ends_[2] = {-1, -1};
};

TerminationSignals::TerminationSignals(platform::CFRunLoop& runLoop, std::function<void()> terminate)
    : pipe_(std::make_unique<Pipe>()), watch_(runLoop.watch(pipe_->readEnd(), [this, terminate = std::move(terminate)] {
          pipe_->drain();
          terminate();
      })) {
    wakeDescriptor = pipe_->writeEnd();
    struct sigaction wake = {};
    wake.sa_handler = wakeMainLoop;
    wake.sa_flags = SA_RESTART;
    sigaction(SIGINT, &wake, &oldInterrupt_);
    sigaction(SIGTERM, &wake, &oldTerminate_);
    sigaction(SIGHUP, nullptr, &oldHangUp_);
    if (oldHangUp_.sa_handler != SIG_IGN) sigaction(SIGHUP, &wake, nullptr);
}

TerminationSignals::~TerminationSignals() {
    sigaction(SIGINT, &oldInterrupt_, nullptr);
    sigaction(SIGTERM, &oldTerminate_, nullptr);
    sigaction(SIGHUP, &oldHangUp_, nullptr);
}

} // namespace kelvo
