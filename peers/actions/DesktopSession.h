#pragma once

#include <string>
#include <vector>

namespace kelvo {

/// The desktop that somebody is logged in to.
struct DesktopSession {
    /// What it is called, the most special name first.
    std::vector<std::string> names;
    /// Its release, where releases do the same by other means; else empty.
    std::string version;
    bool isWayland = false;
};

/// The session of this process, by its environment.
[[nodiscard]] DesktopSession currentDesktopSession();

} // namespace kelvo
