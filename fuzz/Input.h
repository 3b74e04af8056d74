#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace fuzzing {

/// The bytes of one run, taken off from the front. Where they are used up there are zeros.
class Input {
public:
    explicit Input(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

    [[nodiscard]] bool isEmpty() const { return rest_.empty(); }

    std::uint8_t byte() {
        if (rest_.empty()) return 0;
        const std::uint8_t first = rest_.front();
        rest_ = rest_.subspan(1);
        return first;
    }

    /// A number from 0 on, less than `count`.
    std::size_t below(std::size_t count) { return byte() % count; }

    /// One of `choices`.
    template <typename Choices>
    const auto& oneOf(const Choices& choices) {
        return choices[below(std::size(choices))];
    }

    /// Four bytes, the lowest first.
    std::int32_t int32() {
        std::uint32_t bits = 0;
        for (unsigned shift = 0; shift < 32; shift += 8) bits |= static_cast<std::uint32_t>(byte()) << shift;
        return static_cast<std::int32_t>(bits);
    }

    /// A part of its own, whose length its first byte says.
    std::span<const std::uint8_t> part() {
        const std::size_t length = byte();
        const auto taken = rest_.first(std::min(length, rest_.size()));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }

    [[nodiscard]] std::span<const std::uint8_t> rest() const { return rest_; }

private:
    std::span<const std::uint8_t> rest_;
};

} // namespace fuzzing
