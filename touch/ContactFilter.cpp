#include "touch/ContactFilter.h"

#include "touch/Thresholds.h"

#include <algorithm>
#include <cmath>

namespace touch {

Sightings ContactFilter::filter(const Frame& frame) {
    now_ = hasTime_ ? std::max(now_, frame.time) : frame.time;
    hasTime_ = true;
    Sightings sightings{.time = now_, .fingers = {}, .mistaken = {}};
    for (Known& known : known_) known.isSeen = false;
    for (const Contact& contact : frame.contacts) {
        if (std::isfinite(contact.place.x) && std::isfinite(contact.place.y)) see(contact, sightings);
    }
    FixedList<Known, kMostContacts> remaining;
    for (const Known& known : known_) {
        if (known.isSeen) remaining.add(known);
    }
    known_ = remaining;
    return sightings;
}

void ContactFilter::ignoreWhatIsDown() {
    for (Known& known : known_) known.isIgnored = true;
}

ContactFilter::Known* ContactFilter::knownWith(std::int32_t id) {
    Known* const found =
        std::find_if(known_.begin(), known_.end(), [id](const Known& known) { return known.id == id; });
    return found == known_.end() ? nullptr : found;
}

void ContactFilter::see(const Contact& contact, Sightings& sightings) {
    Known* known = knownWith(contact.id);
    if (known && known->isSeen) return;
    if (!known) {
        if (!known_.add({.id = contact.id, .finger = nextFinger_, .place = contact.place, .since = now_})) return;
        known = &known_.back();
        known->isIgnored = contact.isPalm;
        ++nextFinger_;
    }
    known->isSeen = true;
    if (known->isIgnored) return;
    if (contact.isPalm) {
        known->isIgnored = true;
        sightings.mistaken.add(known->finger);
        return;
    }
    if (jumps(*known, contact.place)) {
        sightings.mistaken.add(known->finger);
        known->finger = nextFinger_++;
    }
    if (contact.place != known->place) {
        known->place = contact.place;
        known->since = now_;
    }
    sightings.fingers.add({known->finger, contact.place});
}

/// By the time since the contact came where it was, so that frames without movement make no difference.
bool ContactFilter::jumps(const Known& known, Point to) const {
    const double way = distance(known.place, to);
    const double seconds = std::chrono::duration<double>(now_ - known.since).count();
    return way > thresholds::kJump && way > thresholds::kFastest * seconds;
}

} // namespace touch
