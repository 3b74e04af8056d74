#pragma once

#include "platform/PropertyList.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace kelvo {

/// The root of an XML property list; none where the text holds what the format does not allow or our values cannot
/// keep, or is nested deeper than `deepest`.
///
/// The text is UTF-8 or ASCII, ISO-8859-1 where it says so, or UTF-16. It may declare no entities: none that anyone
/// writes does, and what one stands for could not be kept. Nothing outside of the text is ever read.
[[nodiscard]] platform::Value valueOfXML(std::span<const std::uint8_t> text, std::size_t deepest);

} // namespace kelvo
