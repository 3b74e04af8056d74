#pragma once

#import <Foundation/Foundation.h>

#include <utility>

namespace kelvo {

/// Owns one reference to an object of the platform's runtime, which counts them without help here.
template <typename T>
class Retained {
public:
    Retained() = default;
    /// Takes over a reference that the caller owns, as from +alloc.
    explicit Retained(T* owned) : object_(owned) {}
    Retained(const Retained& other) : object_([other.object_ retain]) {}
    Retained(Retained&& other) noexcept : object_(std::exchange(other.object_, nil)) {}
    Retained& operator=(Retained other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Retained() { [object_ release]; }

    /// Adds a reference to an object that somebody else owns.
    [[nodiscard]] static Retained sharing(T* object) { return Retained([object retain]); }

    [[nodiscard]] T* get() const { return object_; }

private:
    T* object_ = nil;
};

} // namespace kelvo
