#pragma once

#include "platform/PropertyList.h"

#include <string>

namespace kelvo {

/// The state of each of the system's own gesture switches, as one line of JSON. What is not in the system's preference
/// files is off.
[[nodiscard]] std::string systemGestureStates();

/// Writes one switch into the system's preference files, which keep what else they hold. `name` is one that the states
/// have and `state` is "on" or "off"; anything else, or a file that cannot be written, is a std::runtime_error that
/// names the fix.
void setSystemGesture(const std::string& name, const std::string& state);

/// What a new file of the system's preferences holds: all its switches, on.
[[nodiscard]] platform::NSMutableDictionary newDockPreferences();
[[nodiscard]] platform::NSMutableDictionary newGlobalPreferences();

/// Makes those of the system's preference files that do not exist, with all their switches on. A file that cannot be
/// written is a std::runtime_error that names the fix.
void createSystemGestureFiles();

} // namespace kelvo
