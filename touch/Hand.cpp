#include "touch/Hand.h"

#include "touch/Thresholds.h"

#include <algorithm>

namespace touch {

Finger* Hand::find(std::int64_t number) {
    auto* const found =
        std::find_if(fingers_.begin(), fingers_.end(), [number](const Finger& each) { return each.number == number; });
    return found == fingers_.end() || found->liftedAt ? nullptr : found;
}

Finger* Hand::land(std::int64_t number, Point place, Time now) {
    auto* const free =
        std::find_if(fingers_.begin(), fingers_.end(), [](const Finger& finger) { return finger.isFree(); });
    if (free == fingers_.end()) return nullptr;
    *free = Finger{};
    free->number = number;
    free->landedAt = now;
    free->landing = free->origin = free->place = place;
    return free;
}

bool Hand::move(Finger& finger, Point place) {
    if (place == finger.place) return false;
    const double fromLanding = distance(finger.landing, place);
    if (!finger.hasStepped && fromLanding > thresholds::kFirstStep) finger.origin = place;
    finger.hasStepped = true;
    finger.place = place;
    finger.travel = std::max(finger.travel, fromLanding);
    return true;
}

void Hand::forgetLifted() {
    for (Finger& finger : fingers_) {
        if (finger.liftedAt) finger = Finger{};
    }
}

std::size_t Hand::countingDown() const {
    return static_cast<std::size_t>(std::count_if(
        fingers_.begin(), fingers_.end(), [](const Finger& finger) { return finger.isDown() && finger.counts(); }));
}

std::size_t Hand::counting() const {
    return static_cast<std::size_t>(
        std::count_if(fingers_.begin(), fingers_.end(), [](const Finger& finger) { return finger.counts(); }));
}

} // namespace touch
