#pragma once

#include <unistd.h>

#include <utility>

namespace kelvo {

/// An open file of the system, closed with this object.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number_ >= 0) (void)::close(number_);
    }

    /// Negative where nothing is open.
    [[nodiscard]] int number() const { return number_; }
    [[nodiscard]] explicit operator bool() const { return number_ >= 0; }

private:
    int number_ = -1;
};

} // namespace kelvo
