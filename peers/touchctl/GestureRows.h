#pragma once

#include "peers/touchctl/Failure.h"
#include "platform/PropertyList.h"

#include <string>

namespace kelvo::touchctl {

/// The gesture list of a display: the one its settings file holds, or else the system's own. A list that is damaged, or
/// a system without gestures, is a Failure.
[[nodiscard]] platform::NSMutableArray gestureListOf(const platform::NSMutableDictionary& settings);

/// Does to a gesture of `gSettings` what the user does in the pane's list, through the pane's own rows: they resolve
/// what collides and send. The deeds are "on" or "off", an action, or both in this order; an action alone switches the
/// gesture on. A gesture or an action that there is not is a Failure that lists those there are.
void changeGesture(const std::string& name, const Words& deeds);

} // namespace kelvo::touchctl
