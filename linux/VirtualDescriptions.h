#pragma once

#include "touch/Output.h"
#include "touch/Panel.h"

#include <linux/input.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

/// What a virtual device is to the kernel.
struct VirtualDescription {
    struct Axis {
        std::uint16_t code = 0;
        input_absinfo range{};
    };

    std::string name;
    std::string phys;
    input_id id{};
    std::vector<std::uint16_t> properties;
    std::vector<std::uint16_t> keys;
    std::vector<Axis> axes;

    /// The device has the axis.
    [[nodiscard]] const input_absinfo& rangeOf(std::uint16_t axis) const;
};

/// The virtual devices of one display, as touch::Road counts them.
inline constexpr std::size_t kVirtualDevices = 4;
/// The fingers that the touchpad has room for.
inline constexpr std::size_t kPadSlots = 5;

/// `place` tells the displays of a machine apart and is part of each device's phys; the virtual touch screen says of
/// itself what the panel does, so that a desktop which has bound the panel to an output binds this one too.
[[nodiscard]] std::array<VirtualDescription, kVirtualDevices>
virtualDescriptionsOf(const touch::PanelDescription& panel, std::string_view place);

/// The name of the panel's virtual touchpad.
[[nodiscard]] std::string touchpadNameOf(const touch::PanelDescription& panel);

} // namespace kelvo
