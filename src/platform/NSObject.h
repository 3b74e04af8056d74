#pragma once

#include <memory>

namespace platform {

/// Base of everything that may be called back later. A timer, a port or a notification keeps only a weak reference to
/// its target, so that what was arranged for an object that is gone is skipped instead of reaching into freed memory.
class NSObject {
public:
    NSObject() = default;
    NSObject(const NSObject&) = delete;
    NSObject& operator=(const NSObject&) = delete;
    virtual ~NSObject();

    /// Expires when the object is destroyed.
    [[nodiscard]] std::weak_ptr<const void> weakReference() const { return alive_; }

private:
    std::shared_ptr<const void> alive_ = std::make_shared<char>();
};

} // namespace platform
