#pragma once

#include "touch/FixedList.h"
#include "touch/Units.h"

#include <cstddef>
#include <cstdint>

namespace touch {

/// The most contacts that are followed; what a panel reports beyond them is not there.
constexpr std::size_t kMostContacts = 16;

/// What touches the glass at one place.
struct Contact {
    /// The kernel's tracking id: another one for each landing.
    std::int32_t id = 0;
    /// In the panel's own orientation, from its top left corner.
    Point place;
    /// The panel says itself that this is a palm.
    bool isPalm = false;
};

/// All contacts there are at one moment. Whoever is not in it has been lifted.
struct Frame {
    Time time{0};
    FixedList<Contact, kMostContacts> contacts;
};

} // namespace touch
