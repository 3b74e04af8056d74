#pragma once

#include "touch/FixedList.h"
#include "touch/Frame.h"
#include "touch/Shapes.h"
#include "touch/Thresholds.h"
#include "touch/Units.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace touch {

/// A finger from its landing until what it meant is known, which can be after it was lifted.
struct Finger {
    /// Its number among the sightings; 0 where the entry is free.
    std::int64_t number = 0;
    Time landedAt{0};
    std::optional<Time> liftedAt;
    Point landing;
    /// Where its way begins: a panel's first step is left out.
    Point origin;
    Point place;
    /// The farthest it has been from its landing.
    double travel = 0.0;
    bool hasStepped = false;
    /// It is not a finger of this hand: it landed beside the picture, or when nothing more was wanted, or only rests.
    bool isIgnored = false;
    /// It has gone down as a touch, or as the pointer's button.
    bool isGiven = false;
    /// The press is kept where the first of a series was while this finger does not leave its landing.
    std::optional<Point> pressPlace;
    /// Where it was given out last.
    Point givenPlace;

    [[nodiscard]] bool isFree() const { return number == 0; }
    [[nodiscard]] bool isDown() const { return number != 0 && !liftedAt; }
    [[nodiscard]] bool counts() const { return number != 0 && !isIgnored; }
    [[nodiscard]] bool isAtRest() const { return reaches(thresholds::kTapTravel, travel); }
    /// Where it is to be given out.
    [[nodiscard]] Point placeToGive() const { return pressPlace && isAtRest() ? *pressPlace : place; }
    [[nodiscard]] FingerWay way() const { return {origin, place}; }
};

/// The fingers on the glass, and those that have just left it. An entry's index is the finger's number on the virtual
/// touch screen.
class Hand {
public:
    using Entries = std::array<Finger, kMostContacts>;

    [[nodiscard]] Entries& fingers() { return fingers_; }
    [[nodiscard]] const Entries& fingers() const { return fingers_; }
    [[nodiscard]] std::int32_t indexOf(const Finger& finger) const {
        return static_cast<std::int32_t>(&finger - fingers_.data());
    }
    /// The finger of that number that is on the glass; null where there is none.
    [[nodiscard]] Finger* find(std::int64_t number);
    /// Null when there is no room.
    Finger* land(std::int64_t number, Point place, Time now);
    /// Whether the place is another one.
    static bool move(Finger& finger, Point place);

    /// Frees the entries of lifted fingers.
    void forgetLifted();
    void clear() { fingers_ = {}; }

    /// Those on the glass that count.
    [[nodiscard]] std::size_t countingDown() const;
    /// With those that were lifted.
    [[nodiscard]] std::size_t counting() const;

private:
    Entries fingers_{};
};

} // namespace touch
