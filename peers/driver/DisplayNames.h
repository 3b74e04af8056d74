#pragma once

#include <string>

namespace kelvo {

/// Whether a display can be called so: its name becomes part of a file's name, and of lines that are shown.
[[nodiscard]] bool isFitDisplayName(const std::string& name);
/// A name that is not fit is a std::runtime_error that says what one is.
void checkDisplayName(const std::string& name);

} // namespace kelvo
