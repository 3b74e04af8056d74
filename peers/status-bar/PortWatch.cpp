#include "peers/status-bar/PortWatch.h"

#include "platform/RunLoop.h"

namespace kelvo {

void PortWatch::start() {
    if (connection_ && connection_->isOpen()) return;
    slot_.reset();
    connection_ = BusConnection::open(platform::CFRunLoop::getCurrent(), address_, [this] { tellIfChanged(); });
    if (!connection_) return;
    const std::string rule =
        "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" + busName_ + "'";
    sd_bus_slot* slot = nullptr;
    if (sd_bus_add_match_async(connection_->bus(), &slot, rule.c_str(), onChange, nullptr, this) < 0) return;
    slot_.reset(slot);
    connection_->process();
}

int PortWatch::onChange(sd_bus_message* /*signal*/, void* watch, sd_bus_error* /*error*/) noexcept {
    static_cast<PortWatch*>(watch)->hasChanged_ = true;
    return 0;
}

void PortWatch::tellIfChanged() {
    const bool isLost = !connection_ || !connection_->isOpen();
    if (std::exchange(hasChanged_, false) || isLost) changed_();
}

} // namespace kelvo
