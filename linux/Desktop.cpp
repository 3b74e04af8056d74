#include "linux/Desktop.h"

#include "linux/WaylandDesktop.h"
#include "linux/X11Desktop.h"

#include <utility>

namespace kelvo {

std::unique_ptr<touch::DesktopWatch> openDesktop(platform::CFRunLoop& loop, std::function<void()> changed) {
    if (auto desktop = openWaylandDesktop(loop, changed)) return desktop;
    return openX11Desktop(loop, std::move(changed));
}

} // namespace kelvo
