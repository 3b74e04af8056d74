#pragma once

#include "peers/touchctl/Failure.h"

namespace kelvo::touchctl {

/// Has the running driver perform a command of its control channel, which has taken effect and is stored by the end.
/// Whatever is in the way is a Failure that names the fix.
void performAtDriver(const Words& words);

} // namespace kelvo::touchctl
