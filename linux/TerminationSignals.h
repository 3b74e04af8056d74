#pragma once

#include "platform/RunLoop.h"

#include <csignal>
#include <functional>
#include <memory>

namespace kelvo {

/// Brings SIGINT, SIGTERM and SIGHUP to the main loop for as long as it lives; there is one at a time. Whoever was
/// started to outlive its terminal does. Processes started meanwhile get the signals' usual meaning.
class TerminationSignals {
public:
    /// Calls `terminate` on `runLoop` after a signal. A system out of descriptors is a std::system_error.
    TerminationSignals(platform::CFRunLoop& runLoop, std::function<void()> terminate);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

private:
    class Pipe;

    std::unique_ptr<Pipe> pipe_;
    std::unique_ptr<platform::CFFileDescriptor> watch_;
    struct sigaction oldInterrupt_ = {};
    struct sigaction oldTerminate_ = {};
    struct sigaction oldHangUp_ = {};
};

} // namespace kelvo
