#pragma once

#include "linux/BusConnection.h"
#include "platform/RunLoop.h"

#include <memory>

namespace kelvo::touchctl {

/// Looks on whether the driver that runs goes on to.
class DriverPresence {
public:
    enum class State { Running, Ended, BusLost };

    /// The loop outlives this object.
    explicit DriverPresence(platform::CFRunLoop& loop);
    DriverPresence(const DriverPresence&) = delete;
    DriverPresence& operator=(const DriverPresence&) = delete;

    [[nodiscard]] State state() const;

private:
    static int onOwnerChanged(sd_bus_message* signal, void* presence, sd_bus_error* error) noexcept;

    bool hasEnded_ = false;
    std::shared_ptr<BusConnection> connection_;
    BusSlot change_;
};

} // namespace kelvo::touchctl
