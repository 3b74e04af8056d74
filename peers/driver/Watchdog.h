#pragma once

#include "platform/RunLoop.h"

#include <cstdint>
#include <memory>

namespace kelvo {

/// Tells the service manager that the program is alive, where that manager wants to know, and only while there is
/// something to be alive for.
class Watchdog {
public:
    explicit Watchdog(platform::CFRunLoop& loop);
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    /// Nothing wakes the program up while it is not needed.
    void setNeeded(bool isNeeded);

private:
    void tell();

    platform::CFRunLoop& loop_;
    /// As the manager has it, in microseconds; 0 where it does not want to know.
    std::uint64_t interval_ = 0;
    std::shared_ptr<platform::NSTimer> timer_;
};

} // namespace kelvo
