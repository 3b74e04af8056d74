#include "peers/driver/GestureTable.h"

#include "peers/driver/TouchSettings.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace kelvo {

namespace {

using touch::Gesture;
using touch::Shape;

bool isMeantByAnyShape(Gesture gesture, const touch::GestureChoice& choice) {
    for (std::size_t i = 0; i < touch::kShapeCount; ++i) {
        if (choice.gestureOf(static_cast<Shape>(i)) == gesture) return true;
    }
    return false;
}

std::string chosenFingers(const std::string& name, const std::vector<touch::GestureRecord>& records) {
    const auto record = std::ranges::find(records, name, &touch::GestureRecord::name);
    // It cannot be chosen if there is no record of it.
    if (record == records.end()) return name == nameOf(Gesture::Scroll) ? "ScrollWithTwoFingers" : "";
    const std::int64_t index = record->selectedIndex;
    const bool isThere = index >= 0 && static_cast<std::uint64_t>(index) < record->descriptor.size();
    return isThere ? record->descriptor[static_cast<std::size_t>(index)] : "";
}

} // namespace

std::vector<GestureRow> gestureTable(const std::string& display, const platform::NSMutableDictionary& settings) {
    const touch::Settings read = touchSettingsOf(display, settings, settingsContextOfDriver());
    const touch::GestureChoice choice(read.gestures, read.switches);
    std::vector<GestureRow> rows;
    for (std::size_t i = 0; i < touch::kGestureCount; ++i) {
        const auto gesture = static_cast<Gesture>(i);
        if (gesture == Gesture::ScrollDirection) continue;
        const std::string name(nameOf(gesture));
        rows.push_back({gesture, name, isMeantByAnyShape(gesture, choice), chosenFingers(name, read.gestures)});
    }
    return rows;
}

std::vector<std::string> namesOfActedGestures() {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < touch::kGestureCount; ++i) {
        const auto gesture = static_cast<Gesture>(i);
        if (gesture != Gesture::ScrollDirection) names.emplace_back(nameOf(gesture));
    }
    return names;
}

} // namespace kelvo
