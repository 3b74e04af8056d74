#pragma once

#include "platform/RunLoop.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kelvo {

/// A touch display that is plugged in.
struct TouchScreen {
    /// Its event node, a path.
    std::string node;
    /// As the kernel has it.
    std::string name;
    std::string seat = "seat0";
    /// What tells it from another of its kind, where there is something: what it is, else where it is plugged in.
    std::string identity;
    bool operator==(const TouchScreen&) const = default;
};

/// Tells of touch displays as they come and go, our own virtual ones left out. Of the nodes that a display comes as, it
/// is the one with slots. Nothing here waits, and nothing wakes up without a device that comes or goes.
class TouchScreenMonitor {
public:
    struct Handlers {
        std::function<void(const TouchScreen&)> came;
        std::function<void(const std::string& node)> went;
    };

    /// Null where the system does not tell. The loop outlives the monitor; no handler may destroy it.
    [[nodiscard]] static std::unique_ptr<TouchScreenMonitor> open(platform::CFRunLoop& loop, Handlers handlers);
    virtual ~TouchScreenMonitor() = default;
    TouchScreenMonitor(const TouchScreenMonitor&) = delete;
    TouchScreenMonitor& operator=(const TouchScreenMonitor&) = delete;

    /// Tells of those that are there already; called once.
    virtual void begin() = 0;

protected:
    TouchScreenMonitor() = default;
};

/// The identity of the display behind an open event node; empty where the system does not know.
[[nodiscard]] std::string identityOf(int eventNode);

/// Whether a bitmap of the kernel's, as sysfs has it, holds a bit: words of hexadecimal digits, the highest first.
[[nodiscard]] bool hasBit(const std::string& bitmap, unsigned bit);

} // namespace kelvo
