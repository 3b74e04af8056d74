#include "peers/driver/DoubleClickCommand.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <string_view>

namespace kelvo {

namespace {

struct Desktop {
    std::string_view name;
    /// The command without the milliseconds at its end.
    std::string_view command;
};

constexpr std::array kDesktops{
    Desktop{"GNOME", "gsettings set org.gnome.desktop.peripherals.mouse double-click "},
    Desktop{"KDE", "kwriteconfig5 --file kdeglobals --group KDE --key DoubleClickInterval "},
    Desktop{"XFCE", "xfconf-query -c xsettings -p /Net/DoubleClickTime -s "},
    Desktop{"MATE", "gsettings set org.mate.peripherals-mouse double-click "},
    Desktop{"X-Cinnamon", "gsettings set org.cinnamon.desktop.peripherals.mouse double-click "},
};

/// The name of the desktop is one of several, the most specific first.
const Desktop* knownDesktop(std::string_view names) {
    while (!names.empty()) {
        const std::string_view name = names.substr(0, names.find(':'));
        const auto* found = std::ranges::find(kDesktops, name, &Desktop::name);
        if (found != kDesktops.end()) return found;
        names.remove_prefix(std::min(name.size() + 1, names.size()));
    }
    return nullptr;
}

} // namespace

std::string commandForDoubleClick(touch::Time interval) {
    const char* names = std::getenv("XDG_CURRENT_DESKTOP");
    const Desktop* desktop = knownDesktop(names ? names : "");
    const std::string milliseconds = std::to_string(std::chrono::ceil<std::chrono::milliseconds>(interval).count());
    if (desktop) return std::string(desktop->command) + milliseconds;
    return "echo '*multiClickTime: " + milliseconds + "' | xrdb -merge";
}

} // namespace kelvo
