#pragma once

namespace platform {

class CFMessagePorts;
class CFRunLoop;
class Clock;
class NSApplication;
class NSBundles;
class NSFileManager;
class NSNibs;
class NSWorkspace;
class PropertyLists;
class SystemLog;
class SystemVersion;

/// Everything the logic gets from the world. A program picks the concrete services in one place and hands them over;
/// whoever has no toolkit leaves the toolkit's services null and does not call what needs them.
struct Platform {
    SystemLog& log;
    NSFileManager& fileManager;
    PropertyLists& propertyLists;
    NSBundles& bundles;
    CFMessagePorts& messagePorts;
    CFRunLoop& runLoop;
    Clock& clock;
    SystemVersion& systemVersion;
    NSWorkspace* workspace = nullptr;
    NSApplication* application = nullptr;
    NSNibs* nibs = nullptr;
};

/// Makes `platform` the one that the accessors of the services answer with; null takes it back before it is gone.
void usePlatform(Platform* platform);

/// Makes a platform the one in use for as long as this lives.
class PlatformInUse {
public:
    explicit PlatformInUse(Platform& platform) { usePlatform(&platform); }
    ~PlatformInUse() { usePlatform(nullptr); }
    PlatformInUse(const PlatformInUse&) = delete;
    PlatformInUse& operator=(const PlatformInUse&) = delete;
};

} // namespace platform
