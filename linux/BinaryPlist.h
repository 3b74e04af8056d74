#pragma once

#include "platform/PropertyList.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace kelvo {

/// The root of a binary property list, read by libplist; none for what `nestingOfBinary` refuses, or for nesting deeper
/// than `deepest`.
[[nodiscard]] platform::Value valueOfBinary(std::span<const std::uint8_t> data, std::size_t deepest);

} // namespace kelvo
