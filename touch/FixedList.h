#pragma once

#include <array>
#include <cstddef>

namespace touch {

/// A list with room for `Capacity` elements inside itself, since nothing is allocated while fingers are on the glass.
template <typename T, std::size_t Capacity>
class FixedList {
public:
    /// False, and nothing added, when the list is full.
    constexpr bool add(const T& element) {
        if (count_ == Capacity) return false;
        elements_[count_++] = element;
        return true;
    }

    /// Takes out the first `count` elements; the others move up.
    constexpr void removeFirst(std::size_t count) {
        for (std::size_t i = count; i < count_; ++i) elements_[i - count] = elements_[i];
        count_ -= count;
    }

    /// Takes out whatever `isKept` does not hold for.
    template <typename Predicate>
    constexpr void keepIf(Predicate isKept) {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < count_; ++i) {
            if (!isKept(elements_[i])) continue;
            if (kept != i) elements_[kept] = elements_[i];
            ++kept;
        }
        count_ = kept;
    }

    constexpr void clear() { count_ = 0; }
    [[nodiscard]] constexpr std::size_t size() const { return count_; }
    [[nodiscard]] constexpr bool empty() const { return count_ == 0; }
    [[nodiscard]] constexpr bool isFull() const { return count_ == Capacity; }

    constexpr T& operator[](std::size_t index) { return elements_[index]; }
    constexpr const T& operator[](std::size_t index) const { return elements_[index]; }
    constexpr T& back() { return elements_[count_ - 1]; }
    constexpr T* begin() { return elements_.data(); }
    constexpr T* end() { return elements_.data() + count_; }
    [[nodiscard]] constexpr const T* begin() const { return elements_.data(); }
    [[nodiscard]] constexpr const T* end() const { return elements_.data() + count_; }

private:
    std::array<T, Capacity> elements_{};
    std::size_t count_ = 0;
};

} // namespace touch
