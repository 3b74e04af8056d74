#pragma once

#include "linux/Descriptor.h"
#include "linux/VirtualDevices.h"
#include "peers/devices/Hardware.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace kelvo {

/// A display that this program may use, and its virtual devices.
struct FoundDisplay {
    std::uint32_t id = 0;
    /// As the kernel has it.
    std::string name;
    /// What tells it from another of its kind; see TouchScreen.
    std::string identity;
    Descriptor file;
    VirtualNodes nodes;
    /// Where this program made the devices itself.
    std::unique_ptr<Hardware::Devices> devices;
};

/// Where a driver has its displays from.
class DisplaySource {
public:
    struct Handlers {
        /// It came, or came back.
        std::function<void(FoundDisplay display)> came;
        /// It may not be used any longer; once that has changed it comes back.
        std::function<void(std::uint32_t id)> suspended;
        std::function<void(std::uint32_t id)> went;
        /// It is there and may not be used; why, and how to mend it.
        std::function<void(std::uint32_t id, const std::string& name, const std::string& reason)> refused;
        /// The first look is over, and so many are there.
        std::function<void(std::size_t count)> looked;
        /// There is no such source here; another one may serve.
        std::function<void()> missing;
    };

    DisplaySource() = default;
    DisplaySource(const DisplaySource&) = delete;
    DisplaySource& operator=(const DisplaySource&) = delete;
    virtual ~DisplaySource() = default;

    /// Begins to tell; nothing is told before. No handler may destroy the source but `missing`.
    virtual void begin(Handlers handlers) = 0;
};

} // namespace kelvo
