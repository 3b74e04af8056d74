#pragma once

#include "touch/FixedList.h"
#include "touch/Frame.h"

#include <cstddef>
#include <cstdint>

namespace touch {

/// A contact that is to be taken for a finger.
struct Sighting {
    /// Another one for each finger, also where the kernel's id was used again.
    std::int64_t finger = 0;
    Point place;
    /// It was not there in the frame before.
    bool isNew = false;
};

/// A frame without what is no finger.
struct Sightings {
    Time time{0};
    FixedList<Sighting, kMostContacts> fingers;
    /// Those of the frame before that are gone.
    FixedList<std::int64_t, kMostContacts> lifted;
    /// Those of the frame before that turned out to be none.
    FixedList<std::int64_t, kMostContacts> mistaken;
};

/// Takes out of a panel's frames what no finger does: palms, contacts without a number for a place, ids that stand
/// twice, time that goes back, and contacts that jump, which are two fingers taken for one.
class ContactFilter {
public:
    /// Counts until the next frame.
    [[nodiscard]] const Sightings& filter(const Frame& frame);
    /// What touches the glass now counts for nothing until it has been lifted.
    void ignoreWhatIsDown();

private:
    struct Known {
        std::int32_t id = 0;
        std::int64_t finger = 0;
        Point place;
        /// When it came to that place.
        Time since{0};
        bool isIgnored = false;
        bool isSeen = false;
    };

    [[nodiscard]] Known* knownWith(std::int32_t id);
    void see(const Contact& contact);
    [[nodiscard]] bool staysKnown(Known& known);
    [[nodiscard]] bool jumps(const Known& known, Point to) const;

    FixedList<Known, kMostContacts> known_;
    std::int64_t nextFinger_ = 1;
    Sightings sightings_;
    bool hasTime_ = false;
};

} // namespace touch
