#pragma once

#include <cstddef>
#include <cstdint>

namespace fuzzing {

/// Changes an input that ends in a property list, which begins after `headSize` bytes. Mostly one place of its tree is
/// changed, so that what comes out still is a property list and gets past whoever reads it; else, and where nothing can
/// be read, any bytes change. There is room for `maxSize` bytes at `data`; returns how many the input has then. The
/// same `seed` makes the same change.
[[nodiscard]] std::size_t mutatePlist(std::uint8_t* data, std::size_t size, std::size_t maxSize, std::size_t headSize,
                                      unsigned seed);

} // namespace fuzzing
