#pragma once

#include <cstdlib>
#include <string>

namespace kelvo {

/// Where the machine's own bus is.
[[nodiscard]] inline std::string systemBusAddress() {
    const char* address = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
    return address && *address ? address : "unix:path=/run/dbus/system_bus_socket";
}

} // namespace kelvo
