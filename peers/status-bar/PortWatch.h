#pragma once

#include "linux/BusConnection.h"
#include "linux/BusMessagePorts.h"

#include <systemd/sd-bus.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace kelvo {

/// Tells when the owner of a message port comes or goes. Between the two nothing runs.
class PortWatch {
public:
    /// `changed` may do as it likes, start() included. `address` is the bus to use; when it is empty, the one that the
    /// environment names.
    PortWatch(const std::string& port, std::function<void()> changed, std::string address = {})
        : busName_(kBusNamePrefix + port), changed_(std::move(changed)), address_(std::move(address)) {}
    ~PortWatch() = default;
    PortWatch(const PortWatch&) = delete;
    PortWatch& operator=(const PortWatch&) = delete;

    /// Begins to watch, or begins again after the bus went away, of which it tells as of a change. Without a bus there
    /// is nothing to watch.
    void start();

private:
    static int onChange(sd_bus_message* signal, void* watch, sd_bus_error* error) noexcept;

    void tellIfChanged();

    std::string busName_;
    std::function<void()> changed_;
    std::string address_;
    std::shared_ptr<BusConnection> connection_;
    BusSlot slot_;
    bool hasChanged_ = false;
};

} // namespace kelvo
