#pragma once

#include "peers/devices/Seats.h"
#include "platform/RunLoop.h"

#include <systemd/sd-login.h>

#include <functional>
#include <memory>

namespace kelvo {

struct LoginMonitorReleaser {
    void operator()(sd_login_monitor* monitor) const { sd_login_monitor_unref(monitor); }
};

/// The user whose own session is active on a seat, as the login manager has it; see Seats.
[[nodiscard]] std::optional<uid_t> activeUserAt(const std::string& seat);

/// The seats as the login manager has them.
class LogindSeats final : public Seats {
public:
    /// `changed` is called after something about a seat has changed. Where there is no login manager nobody is active.
    LogindSeats(platform::CFRunLoop& loop, std::function<void()> changed);

    [[nodiscard]] std::optional<uid_t> activeUser(const std::string& seat) const override { return activeUserAt(seat); }

private:
    std::function<void()> changed_;
    std::unique_ptr<sd_login_monitor, LoginMonitorReleaser> monitor_;
    std::unique_ptr<platform::CFFileDescriptor> watch_;
};

} // namespace kelvo
