#pragma once

#include "peers/touchctl/Failure.h"
#include "platform/PropertyList.h"

#include <string>
#include <vector>

namespace kelvo::touchctl {

/// A display that the product's files tell of.
struct Display {
    std::string name;
    bool isConnected = false;
};

/// The connected displays, in the order in which the driver lists them, then those that only have a settings file. A
/// utilities file or a folder that cannot be read is a Failure.
[[nodiscard]] std::vector<Display> knownDisplays();
/// The display of that name. A name that is not known is a Failure that lists those that are.
[[nodiscard]] Display displayNamed(const std::string& name);
/// Whether an open window may be showing this display: it is the one that was chosen there last, or none was.
[[nodiscard]] bool isPerhapsShown(const std::string& name);
/// Whether the driver is switched on, as the pane reads it.
[[nodiscard]] bool isDriverSwitchedOn();

/// What the settings file of a display holds; nil when there is none. A file that cannot be read is a Failure.
[[nodiscard]] platform::NSMutableDictionary settingsOf(const std::string& name);

/// The same before a change. A folder in which the driver, which is the same user's, could not store it is a Failure.
[[nodiscard]] platform::NSMutableDictionary settingsToChange(const std::string& name);

/// A path as it is shown: the home folder is "~", and control characters are visible.
[[nodiscard]] std::string shownPath(const std::string& path);

} // namespace kelvo::touchctl
