#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace kelvo {

/// Whether `data` begins as a binary property list does.
[[nodiscard]] bool isBinaryPropertyList(std::span<const std::uint8_t> data);

/// How deep the arrays and dictionaries of a property list are nested: 1 for a lone root, 0 for a root that holds
/// nothing. The library that reads property lists frees them by recursion, and reads binary ones by it, so that the
/// depth must be known before it sees one.
///
/// The depth of an XML text is never less than what the library would build of it. None for a text with a NUL byte,
/// with markup that does not end, or with more than one root.
[[nodiscard]] std::optional<std::size_t> nestingOfXML(std::span<const std::uint8_t> text);

/// None for a binary list that points outside of itself or into its own parents, that has a NUL in a text, or whose
/// shared values would unfold to more than 64 MiB: a few hundred bytes can stand for more values than any memory holds.
[[nodiscard]] std::optional<std::size_t> nestingOfBinary(std::span<const std::uint8_t> data);

} // namespace kelvo
