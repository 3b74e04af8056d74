#pragma once

#include "peers/touchctl/Failure.h"

#include <iosfwd>
#include <string>

namespace kelvo::touchctl {

/// Writes a report on versions, bus, ports, touch displays, files and permissions, with the fix for each thing that is
/// wrong. There is nothing private in it: the home folder is "~", displays are numbered, and no user or machine is
/// named. `panePath` is where the pane's bundle is to lie. Findings when something is to be mended.
[[nodiscard]] Status writeReport(std::ostream& report, const std::string& panePath);

} // namespace kelvo::touchctl
