#include "platform/Platform.h"

#include "platform/Application.h"
#include "platform/Bundle.h"
#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/MessagePorts.h"
#include "platform/Nib.h"
#include "platform/PropertyList.h"
#include "platform/RunLoop.h"
#include "platform/SystemVersion.h"

#include <stdexcept>

namespace platform {

namespace {

Platform* thePlatform = nullptr;

Platform& current() {
    if (!thePlatform) throw std::logic_error("no platform was handed over");
    return *thePlatform;
}

template <typename Service>
Service& offered(Service* service) {
    if (!service) throw std::logic_error("this program has no such service");
    return *service;
}

} // namespace

void usePlatform(Platform* platform) { thePlatform = platform; }

SystemLog& SystemLog::current() { return platform::current().log; }

NSFileManager& NSFileManager::defaultManager() { return current().fileManager; }

NSFileManager::~NSFileManager() = default;

std::string stringByAppendingPathComponent(std::string_view path, std::string_view component) {
    while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
    while (!component.empty() && component.front() == '/') component.remove_prefix(1);
    std::string joined(path);
    if (!joined.empty() && joined.back() != '/') joined += '/';
    return joined.append(component);
}

PropertyLists& PropertyLists::current() { return platform::current().propertyLists; }

NSBundle* NSBundle::bundleWithIdentifier(std::string_view identifier) {
    return current().bundles.bundleWithIdentifier(identifier);
}

NSBundle::~NSBundle() = default;

std::vector<std::string> NSBundle::pathsForResourcesOfTypeInDirectory(std::string_view, std::string_view) { return {}; }

NSBundles::~NSBundles() = default;

CFRunLoop& CFRunLoop::getCurrent() { return current().runLoop; }

CFRunLoop::~CFRunLoop() = default;

CFRunLoopSource::~CFRunLoopSource() = default;

CFFileDescriptor::~CFFileDescriptor() = default;

NSTimer::~NSTimer() = default;

std::shared_ptr<NSTimer> NSTimer::scheduledTimerWithTimeInterval(double seconds, const NSObject& target,
                                                                 std::function<void()> action) {
    return CFRunLoop::getCurrent().scheduleTimer(seconds,
                                                 [weakTarget = target.weakReference(), action = std::move(action)] {
                                                     if (!weakTarget.expired()) action();
                                                 });
}

Clock& Clock::current() { return platform::current().clock; }

Clock::~Clock() = default;

std::int32_t Gestalt(std::uint32_t selector) { return current().systemVersion.gestalt(selector); }

SystemVersion::~SystemVersion() = default;

CFMessagePorts& CFMessagePorts::current() { return platform::current().messagePorts; }

CFMessagePorts::~CFMessagePorts() = default;

CFMessagePort::~CFMessagePort() = default;

CFRemoteMessagePort::~CFRemoteMessagePort() = default;

NSApplication& NSApplication::sharedApplication() { return offered(current().application); }

NSApplication::~NSApplication() = default;

NSWorkspace& NSWorkspace::sharedWorkspace() { return offered(current().workspace); }

NSWorkspace::~NSWorkspace() = default;

NSNibs& NSNibs::current() { return offered(platform::current().nibs); }

} // namespace platform
