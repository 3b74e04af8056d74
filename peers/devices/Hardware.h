#pragma once

#include "linux/Descriptor.h"
#include "linux/VirtualDevices.h"
#include "touch/Panel.h"

#include <memory>
#include <string>

namespace kelvo {

/// The kernel's devices, as the service needs them. What cannot be done is a std::runtime_error that says why.
class Hardware {
public:
    /// The virtual devices of a display; they go with this object, and with them whatever they hold down.
    class Devices {
    public:
        Devices() = default;
        Devices(const Devices&) = delete;
        Devices& operator=(const Devices&) = delete;
        virtual ~Devices() = default;

        /// New open files of their event nodes, for writing.
        [[nodiscard]] virtual VirtualNodes openNodes() = 0;
    };

    Hardware() = default;
    Hardware(const Hardware&) = delete;
    Hardware& operator=(const Hardware&) = delete;
    virtual ~Hardware() = default;

    /// A new open file of a display's event node, for reading.
    [[nodiscard]] virtual Descriptor openDisplay(const std::string& node) = 0;
    [[nodiscard]] virtual touch::PanelDescription describe(const Descriptor& display) = 0;
    [[nodiscard]] virtual std::unique_ptr<Devices> makeDevices(const touch::PanelDescription& panel,
                                                               const std::string& place) = 0;

    /// Nobody can read or write by this open file any longer, whoever has a duplicate, and what it has grabbed is free.
    virtual void revoke(const Descriptor& file) = 0;
    /// Keeps a duplicate where the next process of this service finds it, until it is dropped.
    virtual void store(const Descriptor& file, const std::string& name) = 0;
    virtual void drop(const std::string& name) = 0;
};

} // namespace kelvo
