#pragma once

#include "touch/FixedList.h"
#include "touch/Gestures.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace touch {

/// A key that chords are made of, by the kernel's code. The virtual keyboard has these and no others. Of the letters
/// only those with which desktops do what nothing else of theirs does: a code is a place on the keyboard, and which
/// letter lies there is the layout's affair. These are named as on most keyboards.
struct ChordKey {
    std::string_view name;
    std::int32_t code;
};
inline constexpr std::array kChordKeys{
    ChordKey{"Escape", 1},      ChordKey{"Tab", 15},     ChordKey{"Return", 28},    ChordKey{"Control", 29},
    ChordKey{"A", 30},          ChordKey{"D", 32},       ChordKey{"Shift", 42},     ChordKey{"M", 50},
    ChordKey{"Alt", 56},        ChordKey{"Space", 57},   ChordKey{"F1", 59},        ChordKey{"F2", 60},
    ChordKey{"F3", 61},         ChordKey{"F4", 62},      ChordKey{"F5", 63},        ChordKey{"F6", 64},
    ChordKey{"F7", 65},         ChordKey{"F8", 66},      ChordKey{"F9", 67},        ChordKey{"F10", 68},
    ChordKey{"Keypad0", 82},    ChordKey{"F11", 87},     ChordKey{"F12", 88},       ChordKey{"Home", 102},
    ChordKey{"Up", 103},        ChordKey{"PageUp", 104}, ChordKey{"Left", 105},     ChordKey{"Right", 106},
    ChordKey{"End", 107},       ChordKey{"Down", 108},   ChordKey{"PageDown", 109}, ChordKey{"Super", 125},
    ChordKey{"Menu", 127},      ChordKey{"Back", 158},   ChordKey{"Forward", 159},  ChordKey{"HomePage", 172},
    ChordKey{"Dashboard", 204}, ChordKey{"Search", 217},
};
[[nodiscard]] std::optional<std::int32_t> codeOfChordKey(std::string_view name);
/// The name of the key with that code; empty where there is none among them.
[[nodiscard]] std::string_view nameOfChordKey(std::int32_t code);

/// What is done for a gesture.
struct Action {
    enum class Kind : std::uint8_t {
        /// This desktop has nothing like it.
        Nothing,
        /// Fingers on the virtual touchpad do the same, so that the desktop's own gesture follows the fingers.
        Fingers,
        /// The keys are pressed in their order and released in the opposite one.
        Chord,
        /// The right mouse button, where the fingers are.
        RightClick,
        /// Whoever listens makes a call of the desktop's own.
        Call,
    };
    static constexpr std::size_t kMostKeys = 4;

    Kind kind = Kind::Nothing;
    /// How many fingers the touchpad gets; 0 for as many as are on the glass.
    std::int32_t fingers = 0;
    FixedList<std::int32_t, kMostKeys> keys{};
    [[nodiscard]] bool operator==(const Action& other) const;
};

/// What keeps a gesture from doing that, as a clause; empty where it can.
[[nodiscard]] std::string_view reasonAgainst(const Action& action, Gesture gesture);

/// What each gesture does on a desktop. Gestures that go left or right have an action for each way.
class ActionTable {
public:
    /// The plain default, for desktops that nothing is known of: fingers where toolkits and compositors understand
    /// them, keys that mean the same everywhere else.
    ActionTable();

    [[nodiscard]] const Action& actionFor(Gesture gesture, Direction direction) const;
    /// Sets the action for both ways.
    void set(Gesture gesture, const Action& action);
    void set(Gesture gesture, Direction direction, const Action& action);

private:
    struct Entry {
        Action left;
        /// Also of gestures that have no way to go.
        Action other;
    };
    std::array<Entry, kGestureCount> entries_{};
};

} // namespace touch
