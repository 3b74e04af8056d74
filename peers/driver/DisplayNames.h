#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace kelvo {

/// Whether a display can be called so: its name becomes part of a file's name, and of lines that are shown.
[[nodiscard]] bool isFitDisplayName(std::string_view name);
/// A name that is not fit is a std::runtime_error that says what one is.
void checkDisplayName(const std::string& name);

/// What a kernel calls a display, as a name that is fit: what cannot stand in one becomes a blank, and blanks at the
/// ends, and all but one in a row, go.
[[nodiscard]] std::string cleanedDisplayName(std::string_view kernelName);

/// The name of a display that has come, by what the kernel calls it and by its serial number, or its path where it has
/// none. The first that is called so has the bare name, the second " 2" behind it, and so on; each has its own again
/// whenever it comes back, since "Displays.plist" in the pane's folder remembers it. Two that cannot be told apart have
/// one name each as long as both are there, which `isInUse` says.
[[nodiscard]] std::string rememberedDisplayName(std::string_view kernelName, std::string_view serialOrPath,
                                                const std::function<bool(const std::string& name)>& isInUse);

} // namespace kelvo
