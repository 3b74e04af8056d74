#include "platform/Notifications.h"

#include <utility>

namespace platform {

NSNotificationCenter& NSNotificationCenter::defaultCenter() {
    static NSNotificationCenter center;
    return center;
}

void NSNotificationCenter::addObserver(const NSObject& observer, std::string_view name, Handler handler) {
    std::erase_if(registrations_, [](const auto& registration) { return registration->alive.expired(); });
    registrations_.push_back(std::make_shared<Registration>(
        Registration{&observer, observer.weakReference(), std::string(name), std::move(handler)}));
}

void NSNotificationCenter::removeObserver(const NSObject& observer) {
    std::erase_if(registrations_, [&](const auto& registration) {
        if (registration->observer != &observer) return false;
        // A posting that is under way still holds the registration.
        registration->alive.reset();
        return true;
    });
}

void NSNotificationCenter::postNotification(const NSNotification& notification) {
    const auto registrations = registrations_;
    for (const auto& registration : registrations) {
        if (registration->name == notification.name && !registration->alive.expired()) {
            registration->handler(notification);
        }
    }
}

} // namespace platform
