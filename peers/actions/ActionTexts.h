#pragma once

#include "peers/actions/ActionsInForce.h"

#include <string>

namespace kelvo {

/// What an action comes to and by what means, in the language of the texts that are there.
[[nodiscard]] std::string textOf(const DesktopAction& action);

/// What a gesture does, in one line; where it differs, for each way.
[[nodiscard]] std::string textOf(const ActionsInForce& actions, touch::Gesture gesture);

/// The keys of a chord, as they are written: "Control+Alt+Left".
[[nodiscard]] std::string chordText(const touch::Action& action);

} // namespace kelvo
