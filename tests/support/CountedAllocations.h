#pragma once

#include <cstddef>

namespace support {

/// How often this program has asked for memory so far, by whatever form of `new`. Each form is replaced, since the
/// sanitizers' own forms and the replaced ones do not take each other's memory back.
[[nodiscard]] std::size_t allocations();

} // namespace support
