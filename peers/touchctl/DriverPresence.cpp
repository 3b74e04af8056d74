#include "peers/touchctl/DriverPresence.h"

#include "peers/DriverCommand.h"

#include <string>

namespace kelvo::touchctl {

DriverPresence::DriverPresence(platform::CFRunLoop& loop) : connection_(BusConnection::open(loop, "")) {
    if (!connection_) return;
    const std::string rule =
        "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" + std::string(kDriverName) + "'";
    sd_bus_slot* slot = nullptr;
    if (sd_bus_add_match_async(connection_->bus(), &slot, rule.c_str(), onOwnerChanged, nullptr, this) >= 0) {
        change_.reset(slot);
    }
    connection_->process();
}

DriverPresence::State DriverPresence::state() const {
    if (hasEnded_) return State::Ended;
    return connection_ && connection_->isOpen() ? State::Running : State::BusLost;
}

int DriverPresence::onOwnerChanged(sd_bus_message* /*signal*/, void* presence, sd_bus_error* /*error*/) noexcept {
    // A newly started driver is not the one that was running.
    static_cast<DriverPresence*>(presence)->hasEnded_ = true;
    return 0;
}

} // namespace kelvo::touchctl
