#pragma once

#include <cstdint>
#include <string_view>

namespace kelvo {

/// The name of a message that a port hears; empty for an id that is none of its messages.
[[nodiscard]] std::string_view nameOfMessage(std::string_view port, std::int32_t messageId);

} // namespace kelvo
