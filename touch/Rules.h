#pragma once

#include "touch/Actions.h"
#include "touch/Gestures.h"
#include "touch/Mapping.h"
#include "touch/Settings.h"

#include <optional>

namespace touch {

/// What is in force for the fingers that are on the glass: settings, desktop and calibration, worked out once.
struct Rules {
    Rules(Size glass, const Settings& settings, const Desktop& desktop);

    Mapping mapping;
    GestureChoice gestures;
    ActionTable actions;
    FingerMode fingerMode;
    bool takesTouchesBack;
    std::optional<Time> longPress;
    Time doubleClickRate;
    /// 1 or -1: what scrolling fingers on the pad do, for content to move as the user wants it.
    double scrollSign;
};

} // namespace touch
