#pragma once

#include "touch/Units.h"

#include <cstdint>
#include <optional>
#include <string>

namespace kelvo {

/// What the machine's files say of a kind of touch display that does not say so itself.
struct KnownDevice {
    /// Instead of the kernel's; empty where they have none.
    std::string name;
    /// Of the glass, in millimetres.
    std::optional<touch::Size> size;
    /// The panel's own resolution.
    std::optional<touch::Size> nativePixels;
    bool operator==(const KnownDevice&) const = default;
};

/// By the kernel's numbers for maker and model. "DeviceList.plist" in the machine's data folder has an entry
/// "VVVV:PPPP", four hexadecimal digits each, with "Name", and "Width" and "Height" in millimetres;
/// "SupportResolutionList.plist" has such an entry with "Width" and "Height" in pixels. What is missing there, or
/// cannot be, is not known.
[[nodiscard]] KnownDevice knownDevice(std::uint16_t vendor, std::uint16_t product);

} // namespace kelvo
