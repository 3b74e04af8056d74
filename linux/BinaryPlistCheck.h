#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace kelvo {

/// Whether `data` begins as a binary property list does.
[[nodiscard]] bool isBinaryPropertyList(std::span<const std::uint8_t> data);

/// How deep the arrays and dictionaries of a binary property list are nested: 1 for a lone root, 0 for a root that
/// holds nothing. The library that reads these lists does so by recursion, trusts much of what it reads and takes some
/// of it for something else, so that a list is looked through before the library sees it.
///
/// None for a list that
/// - points outside of itself or into its own parents, or is cut short;
/// - would unfold to more than 64 MiB: a few hundred bytes can stand for more values than any memory holds;
/// - holds a kind that our values lack: a set, a unique identifier, a null, a key that is no text;
/// - holds an integer beyond 64 bits, or a negative one in sixteen bytes, which the library takes for a positive one;
/// - holds a date outside of the years 1 to 9999, a text that is no Unicode, or one with a character that could never
///   be written as XML, NUL among them.
[[nodiscard]] std::optional<std::size_t> nestingOfBinary(std::span<const std::uint8_t> data);

} // namespace kelvo
