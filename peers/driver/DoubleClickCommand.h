#pragma once

#include "touch/Units.h"

#include <string>

namespace kelvo {

/// What a user types to have the desktop that the environment names count slower double clicks, as slow as this.
[[nodiscard]] std::string commandForDoubleClick(touch::Time interval);

} // namespace kelvo
