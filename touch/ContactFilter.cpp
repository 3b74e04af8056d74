#include "touch/ContactFilter.h"

#include "touch/Thresholds.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace touch {

namespace {

/// Also false for NaN.
bool isSomewhere(Point place) {
    return std::abs(place.x) <= thresholds::kNowhere && std::abs(place.y) <= thresholds::kNowhere;
}

} // namespace

const Sightings& ContactFilter::filter(const Frame& frame) {
    sightings_.time = hasTime_ ? std::max(sightings_.time, frame.time) : frame.time;
    hasTime_ = true;
    sightings_.fingers.clear();
    sightings_.lifted.clear();
    sightings_.mistaken.clear();
    for (const Contact& contact : frame.contacts) {
        if (isSomewhere(contact.place)) see(contact);
    }
    known_.keepIf([this](Known& known) { return staysKnown(known); });
    return sightings_;
}

void ContactFilter::ignoreWhatIsDown() {
    for (Known& known : known_) known.isIgnored = true;
}

ContactFilter::Known* ContactFilter::knownWith(std::int32_t id) {
    Known* const found =
        std::find_if(known_.begin(), known_.end(), [id](const Known& known) { return known.id == id; });
    return found == known_.end() ? nullptr : found;
}

void ContactFilter::see(const Contact& contact) {
    Known* known = knownWith(contact.id);
    if (known && known->isSeen) return;
    bool isNew = !known;
    if (isNew) {
        if (!known_.add({.id = contact.id, .finger = nextFinger_, .place = contact.place, .since = sightings_.time}))
            return;
        known = &known_.back();
        known->isIgnored = contact.isPalm;
        ++nextFinger_;
    }
    known->isSeen = true;
    if (known->isIgnored) return;
    if (contact.isPalm) {
        known->isIgnored = true;
        sightings_.mistaken.add(known->finger);
        return;
    }
    if (contact.place != known->place) {
        if (jumps(*known, contact.place)) {
            sightings_.mistaken.add(known->finger);
            known->finger = nextFinger_++;
            isNew = true;
        }
        known->place = contact.place;
        known->since = sightings_.time;
    }
    sightings_.fingers.add({known->finger, contact.place, isNew});
}

/// A known contact must be seen again in every frame.
bool ContactFilter::staysKnown(Known& known) {
    if (std::exchange(known.isSeen, false)) return true;
    if (!known.isIgnored) sightings_.lifted.add(known.finger);
    return false;
}

/// Measured from the time when the contact reached its last position, so that frames without movement do not matter.
bool ContactFilter::jumps(const Known& known, Point to) const {
    const double way = distance(known.place, to);
    const double seconds = std::chrono::duration<double>(sightings_.time - known.since).count();
    return way > thresholds::kJump && way > thresholds::kFastest * seconds;
}

} // namespace touch
