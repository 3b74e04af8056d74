#include "touch/Rules.h"

#include "touch/Thresholds.h"

#include <algorithm>

namespace touch {

namespace {

std::optional<Time> heldToBounds(std::optional<Time> longPress) {
    if (!longPress) return std::nullopt;
    return std::clamp(*longPress, thresholds::kShortestLongPress, thresholds::kLongestLongPress);
}

} // namespace

Rules::Rules(Size glass, const Settings& settings, const Desktop& desktop)
    : mapping(glass, settings, desktop),
      gestures(settings.gestures, settings.switches),
      actions(desktop.actions),
      fingerMode(settings.fingerMode),
      takesTouchesBack(desktop.takesTouchesBack),
      longPress(heldToBounds(settings.longPress)),
      doubleClickRate(
          std::clamp(settings.doubleClickRate, thresholds::kShortestDoubleClick, thresholds::kLongestDoubleClick)),
      scrollSign(gestures.contentFollowsFingers() == desktop.scrollsNaturally ? 1.0 : -1.0) {}

} // namespace touch
