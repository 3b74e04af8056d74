#pragma once

#include "peers/touchctl/CommandLine.h"
#include "platform/Files.h"

namespace kelvo::touchctl {

/// Prints what each gesture does on this desktop, for a display or for the connected one, or changes the user's own
/// actions, which lie in a file of their own; `files` may write it.
[[nodiscard]] Status actions(const Invocation& invocation, platform::NSFileManager& files);

/// The words that may follow "actions" and these words.
[[nodiscard]] Words completionsOfActions(const Words& words);

} // namespace kelvo::touchctl
