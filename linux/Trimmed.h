#pragma once

#include <string_view>

namespace kelvo {

/// `text` without the blanks and line ends around it.
[[nodiscard]] constexpr std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

} // namespace kelvo
