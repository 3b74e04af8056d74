#pragma once

#include "platform/PropertyList.h"

#include <string>
#include <vector>

namespace kelvo::touchctl {

/// What of a gesture list the settings window would never have made, each as a sentence: a gesture or an action that
/// neither this system nor `stored`, the display's own list, has; one that is there twice; gestures that take the
/// fingers of one another. The list's records are whole.
[[nodiscard]] std::vector<std::string> odditiesOf(const platform::NSMutableArray& list,
                                                  const platform::NSMutableArray& stored);

} // namespace kelvo::touchctl
