#pragma once

#include "platform/PropertyList.h"

#include <cstddef>
#include <optional>

namespace kelvo {

/// The XML property list of `root` in UTF-8, which any reader of the format takes; none where a value has no place in
/// one: a missing value, a text that is not UTF-8 or has a character that XML knows no way to write, a date that has no
/// spelling, or nesting deeper than `deepest`, which also ends the walk through an array that holds itself.
[[nodiscard]] std::optional<platform::NSData> xmlOfValue(const platform::Value& root, std::size_t deepest);

} // namespace kelvo
