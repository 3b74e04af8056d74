#pragma once

#include "linux/Descriptor.h"
#include "linux/VirtualDescriptions.h"

#include <string>

namespace kelvo {

/// A virtual device of the kernel, which goes with this object, and with it whatever it holds down.
class UinputDevice {
public:
    /// `uinput` is the kernel's maker of devices, open for writing. What it refuses is a std::system_error.
    UinputDevice(Descriptor uinput, const VirtualDescription& description);

    /// Where the device's event node is.
    [[nodiscard]] const std::string& eventNode() const { return eventNode_; }

private:
    Descriptor uinput_;
    std::string eventNode_;
};

} // namespace kelvo
