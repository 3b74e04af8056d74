#include "touch/Hand.h"

#include "touch/Thresholds.h"

#include <algorithm>

namespace touch {

bool Finger::isAtRest() const { return reaches(thresholds::kTapTravel, travel); }

Finger* Hand::find(std::int64_t number) {
    auto* const found = std::find_if(fingers_.begin(), fingers_.end(), [number](const Finger& finger) {
        return finger.number == number && finger.isDown();
    });
    return found == fingers_.end() ? nullptr : found;
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
    if (!finger.hasStepped && distance(finger.landing, place) > thresholds::kFirstStep) finger.origin = place;
    finger.hasStepped = true;
    finger.place = place;
    finger.travel = std::max(finger.travel, distance(finger.landing, place));
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
