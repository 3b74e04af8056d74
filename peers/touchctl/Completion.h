#pragma once

#include "peers/touchctl/Failure.h"

namespace kelvo::touchctl {

/// What may follow these words of a command line: options alone when "--options" stands before them. Empty where
/// nothing is known, or a file's name is meant.
[[nodiscard]] Words completionsAfter(const Words& words);

} // namespace kelvo::touchctl
