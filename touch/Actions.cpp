#include "touch/Actions.h"

#include <algorithm>
#include <initializer_list>

namespace touch {

namespace {

Action chord(std::initializer_list<std::string_view> names) {
    Action action{.kind = Action::Kind::Chord};
    for (const std::string_view name : names) action.keys.add(codeOfChordKey(name).value_or(0));
    return action;
}

/// The gesture continues until the fingers lift.
bool isFollowed(Gesture gesture) {
    return gesture == Gesture::Scroll || gesture == Gesture::ZoomInOrOut || gesture == Gesture::Rotate;
}

/// It is recognised only after its fingers have been lifted.
bool isTap(Gesture gesture) {
    return gesture == Gesture::SecondaryClick || gesture == Gesture::LookUp || gesture == Gesture::SmartZoom;
}

std::string_view reasonAgainstFingers(std::int32_t fingers, Gesture gesture) {
    if (isTap(gesture)) return "a tap leaves no fingers to follow";
    if (isFollowed(gesture)) {
        return fingers == 0 || fingers == 2 ? "" : "desktops scroll, zoom and rotate with two fingers only";
    }
    if (gesture == Gesture::NotificationCenter && fingers == 0) return "two fingers on a touchpad would only scroll";
    return fingers == 0 || fingers == 3 || fingers == 4 ? ""
                                                        : "desktops only support swipes with three or four fingers";
}

std::string_view reasonAgainstKeys(const FixedList<std::int32_t, Action::kMostKeys>& keys) {
    if (keys.empty()) return "the shortcut has no key";
    for (const std::int32_t* key = keys.begin(); key != keys.end(); ++key) {
        if (nameOfChordKey(*key).empty()) return "unknown key";
        if (std::find(keys.begin(), key, *key) != key) return "a key occurs twice";
    }
    return "";
}

} // namespace

bool Action::operator==(const Action& other) const {
    return kind == other.kind && fingers == other.fingers && std::ranges::equal(keys, other.keys);
}

std::optional<std::int32_t> codeOfChordKey(std::string_view name) {
    const auto* const found =
        std::find_if(kChordKeys.begin(), kChordKeys.end(), [&](const ChordKey& each) { return each.name == name; });
    if (found == kChordKeys.end()) return std::nullopt;
    return found->code;
}

std::string_view nameOfChordKey(std::int32_t code) {
    const auto* const found =
        std::find_if(kChordKeys.begin(), kChordKeys.end(), [&](const ChordKey& each) { return each.code == code; });
    return found == kChordKeys.end() ? std::string_view() : found->name;
}

std::string_view reasonAgainst(const Action& action, Gesture gesture) {
    if (gesture == Gesture::ScrollDirection) return "it only sets the scroll direction";
    switch (action.kind) {
    case Action::Kind::Nothing:
        return "";
    case Action::Kind::Fingers:
        return reasonAgainstFingers(action.fingers, gesture);
    case Action::Kind::Chord:
        if (isFollowed(gesture)) return "it lasts as long as the fingers move, which keys cannot do";
        return reasonAgainstKeys(action.keys);
    case Action::Kind::RightClick:
    case Action::Kind::Call:
        return isFollowed(gesture) ? "it lasts as long as the fingers move" : "";
    }
    return "";
}

ActionTable::ActionTable() {
    const Action fingers{.kind = Action::Kind::Fingers};
    for (const Gesture gesture :
         {Gesture::Scroll, Gesture::ZoomInOrOut, Gesture::Rotate, Gesture::FullScreenApps, Gesture::MissionControl,
          Gesture::AppExpose, Gesture::Launchpad, Gesture::ShowDesktop}) {
        set(gesture, fingers);
    }
    set(Gesture::SecondaryClick, Action{.kind = Action::Kind::RightClick});
    // Moving the fingers to the left shows the next page, as with paper.
    set(Gesture::SwipeBetweenPages, Direction::Left, chord({"Alt", "Right"}));
    set(Gesture::SwipeBetweenPages, Direction::Right, chord({"Alt", "Left"}));
    set(Gesture::SmartZoom, chord({"Control", "Keypad0"}));
    set(Gesture::LookUp, chord({"Search"}));
    set(Gesture::NotificationCenter, chord({"Dashboard"}));
}

const Action& ActionTable::actionFor(Gesture gesture, Direction direction) const {
    const Entry& entry = entries_[static_cast<std::size_t>(gesture)];
    return direction == Direction::Left ? entry.left : entry.other;
}

void ActionTable::set(Gesture gesture, const Action& action) {
    entries_[static_cast<std::size_t>(gesture)] = {action, action};
}

void ActionTable::set(Gesture gesture, Direction direction, const Action& action) {
    Entry& entry = entries_[static_cast<std::size_t>(gesture)];
    (direction == Direction::Left ? entry.left : entry.other) = action;
}

} // namespace touch
