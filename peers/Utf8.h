#pragma once

#include <cstddef>
#include <string_view>

namespace kelvo {

/// How many bytes the character that `text` begins with has in UTF-8; 0 when it begins with none.
[[nodiscard]] std::size_t lengthOfFirstCharacter(std::string_view text);

} // namespace kelvo
