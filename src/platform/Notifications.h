#pragma once

#include "platform/NSObject.h"
#include "platform/PropertyList.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// What observers are told: a name, and what belongs to it, which may be nil.
struct NSNotification {
    std::string name;
    NSMutableDictionary userInfo;
};

/// Tells observers of what happens, synchronously, in the order in which they registered.
class NSNotificationCenter {
public:
    using Handler = std::function<void(const NSNotification& notification)>;

    NSNotificationCenter() = default;
    NSNotificationCenter(const NSNotificationCenter&) = delete;
    NSNotificationCenter& operator=(const NSNotificationCenter&) = delete;

    /// The one of the process.
    static NSNotificationCenter& defaultCenter();

    /// Calls `handler` for every notification of `name` until `observer` is gone or removed.
    void addObserver(const NSObject& observer, std::string_view name, Handler handler);
    void removeObserver(const NSObject& observer);
    /// Observers that go, or come, while the notification is being posted are not told of it.
    void postNotification(const NSNotification& notification);

private:
    struct Registration {
        const NSObject* observer;
        std::weak_ptr<const void> alive;
        std::string name;
        Handler handler;
    };

    std::vector<std::shared_ptr<Registration>> registrations_;
};

} // namespace platform
