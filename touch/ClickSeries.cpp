#include "touch/ClickSeries.h"

#include <algorithm>
#include <cmath>

namespace touch {

namespace {

double heldToRange(double points) {
    if (std::isnan(points)) return thresholds::kSmallestRangeInPoints;
    return std::clamp(points, thresholds::kSmallestRangeInPoints, thresholds::kLargestRangeInPoints);
}

/// Desktops count in pixels, which are larger than a point on a large panel of few of them.
double millimetresPerDesktopPoint(Size glass, const Desktop& desktop) {
    if (!desktop.nativePixels) return kMillimetresPerPoint;
    const double across = std::max(desktop.nativePixels->width, desktop.nativePixels->height);
    return std::max(kMillimetresPerPoint, std::max(glass.width, glass.height) / across);
}

} // namespace

void ClickSeries::setRules(Size glass, const Settings& settings, const Desktop& desktop) {
    rate_ = std::clamp(settings.doubleClickRate, thresholds::kShortestDoubleClick, thresholds::kLongestDoubleClick);
    radius_ = heldToRange(settings.doubleClickRange) * kMillimetresPerPoint / 2.0;
    desktopInterval_ = desktop.doubleClickInterval;
    desktopDistance_ = desktop.doubleClickDistance * millimetresPerDesktopPoint(glass, desktop);
}

Point ClickSeries::place(Time landedAt, Point landing, Time now) {
    const bool isNext = continuesSeries(landedAt, landing);
    if (!isNext && desktopWouldCount(landing, now))
        gate_.closeUntil(last_->givenAt + desktopInterval_ + thresholds::kDesktopMargin);
    beforeLast_ = last_;
    last_ =
        Press{.landedAt = landedAt, .givenAt = gate_.opensAt(now), .anchor = isNext ? beforeLast_->anchor : landing};
    wasTap_ = false;
    return last_->anchor;
}

void ClickSeries::reachedDesktop(Time now) {
    if (!last_ || last_->hasReachedDesktop) return;
    const auto waiting = gate_.deadline();
    if (waiting && *waiting <= last_->givenAt) return;
    last_->givenAt = std::max(last_->givenAt, now);
    last_->hasReachedDesktop = true;
}

bool ClickSeries::continuesSeries(Time landedAt, Point landing) const {
    return last_ && wasTap_ && landedAt - last_->landedAt <= rate_ &&
           reaches(radius_, distance(last_->anchor, landing));
}

/// Desktops measure each axis by itself.
bool ClickSeries::desktopWouldCount(Point landing, Time now) const {
    if (!last_ || gate_.opensAt(now) - last_->givenAt >= desktopInterval_ + thresholds::kDesktopMargin) return false;
    const Point way = landing - last_->anchor;
    return reaches(desktopDistance_, std::max(std::abs(way.x), std::abs(way.y)));
}

} // namespace touch
