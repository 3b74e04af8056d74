#include "peers/actions/DesktopSession.h"

#include <cstddef>
#include <cstdlib>
#include <sstream>
#include <string_view>

namespace kelvo {

namespace {

/// More than any desktop uses.
constexpr std::size_t kMostNames = 8;

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

/// The name is also a file name.
bool isUsable(std::string_view name) {
    return !name.empty() && name.front() != '.' && name.find('/') == std::string_view::npos;
}

std::vector<std::string> namesIn(const std::string& list) {
    std::vector<std::string> names;
    std::istringstream words(list);
    for (std::string name; names.size() < kMostNames && std::getline(words, name, ':');) {
        if (isUsable(name)) names.push_back(name);
    }
    return names;
}

bool isWaylandSession() {
    const std::string type = variable("XDG_SESSION_TYPE");
    if (type == "wayland" || type == "x11") return type == "wayland";
    return !variable("WAYLAND_DISPLAY").empty();
}

} // namespace

DesktopSession currentDesktopSession() {
    return {namesIn(variable("XDG_CURRENT_DESKTOP")), variable("KDE_SESSION_VERSION"), isWaylandSession()};
}

} // namespace kelvo
