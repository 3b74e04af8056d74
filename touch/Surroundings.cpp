#include "touch/Surroundings.h"

#include "touch/Thresholds.h"

#include <algorithm>
#include <cmath>

namespace touch {

namespace {

bool isAbout(double length, double other) { return std::abs(length - other) <= thresholds::kLengthShare * other; }

bool isAsLargeAs(const Monitor& monitor, Size glass) {
    return monitor.millimetres && isAbout(glass.width, monitor.millimetres->width) &&
           isAbout(glass.height, monitor.millimetres->height);
}

/// Null if there are several or none.
template <typename Predicate>
const Monitor* onlyOne(const std::vector<Monitor>& monitors, const Predicate& isMeant) {
    const auto first = std::find_if(monitors.begin(), monitors.end(), isMeant);
    if (first == monitors.end() || std::find_if(first + 1, monitors.end(), isMeant) != monitors.end()) return nullptr;
    return &*first;
}

} // namespace

const Monitor* monitorOf(const std::vector<Monitor>& monitors, const std::string& boundName,
                         std::optional<Size> glass) {
    const auto isBound = [&](const Monitor& monitor) { return !boundName.empty() && monitor.name == boundName; };
    const auto isLikeTheGlass = [&](const Monitor& monitor) { return glass && isAsLargeAs(monitor, *glass); };
    if (const Monitor* bound = onlyOne(monitors, isBound)) return bound;
    if (const Monitor* like = onlyOne(monitors, isLikeTheGlass)) return like;
    return onlyOne(monitors, [](const Monitor&) { return true; });
}

} // namespace touch
