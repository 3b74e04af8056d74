#pragma once

#include "linux/TouchScreenMonitor.h"
#include "peers/devices/Hardware.h"
#include "peers/devices/Seats.h"
#include "platform/RunLoop.h"

#include <memory>
#include <string>

namespace kelvo {

/// The service on the bus: asks who a caller is and whether polkit lets him, hands out, and takes back when he leaves.
class DevicesService {
public:
    /// All outlive the service. `address` is that of the bus.
    DevicesService(platform::CFRunLoop& loop, std::string address, Hardware& hardware, const Seats& seats);
    ~DevicesService();
    DevicesService(const DevicesService&) = delete;
    DevicesService& operator=(const DevicesService&) = delete;

    /// Whether the service's name could be had.
    [[nodiscard]] bool open();

    void come(const TouchScreen& screen);
    void go(const std::string& node);
    void seatsChanged();

private:
    class Server;
    std::unique_ptr<Server> server_;
};

} // namespace kelvo
