#pragma once

#include "peers/touchctl/CommandLine.h"
#include "peers/touchctl/Services.h"

#include <string>

namespace kelvo::touchctl {

/// Does what the command line asks for, and prints what there is to print. `panePath` is where the pane's bundle is to
/// lie. What goes wrong is a Failure.
[[nodiscard]] Status perform(const Invocation& invocation, Services& services, const std::string& panePath);

} // namespace kelvo::touchctl
