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

} // namespace

std::optional<std::int32_t> codeOfChordKey(std::string_view name) {
    const auto* const found =
        std::find_if(kChordKeys.begin(), kChordKeys.end(), [&](const ChordKey& each) { return each.name == name; });
    if (found == kChordKeys.end()) return std::nullopt;
    return found->code;
}

ActionTable::ActionTable() {
    const Action fingers{.kind = Action::Kind::Fingers};
    for (const Gesture gesture :
         {Gesture::Scroll, Gesture::ZoomInOrOut, Gesture::Rotate, Gesture::FullScreenApps, Gesture::MissionControl,
          Gesture::AppExpose, Gesture::Launchpad, Gesture::ShowDesktop}) {
        set(gesture, fingers);
    }
    set(Gesture::SecondaryClick, Action{.kind = Action::Kind::RightClick});
    // Fingers to the left bring the next page, as paper goes.
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
