#pragma once

#include "platform/PropertyList.h"
#include "touch/Gestures.h"

#include <string>
#include <vector>

namespace kelvo {

/// A gesture as the settings of a display have it.
struct GestureRow {
    touch::Gesture gesture;
    std::string name;
    /// Some fingers make it: its record is on, the system's switch too, and no earlier record has the fingers.
    bool isOn = false;
    /// The action that is chosen for it, by its identifier; empty where the display has no such gesture.
    std::string fingers;
};

/// The gestures that do something, in the order in which the newest catalogue lists them, for a display with these
/// settings; nil are those of a display that is new.
[[nodiscard]] std::vector<GestureRow> gestureTable(const std::string& display,
                                                   const platform::NSMutableDictionary& settings);

/// Their names, in that order.
[[nodiscard]] std::vector<std::string> namesOfActedGestures();

} // namespace kelvo
