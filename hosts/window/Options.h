#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kelvo {

/// What the command line asks of the program.
struct Options {
    bool help = false;
    bool version = false;
    /// The pane's bundle; none for the one that was installed with the program.
    std::optional<std::string> panePath;
    /// What is wrong with the command line and what would be right; empty when nothing is wrong.
    std::string error;
};

/// Reads the arguments that follow the program's name.
[[nodiscard]] Options parseOptions(const std::vector<std::string>& arguments);

[[nodiscard]] std::string helpText();
[[nodiscard]] std::string versionText();

} // namespace kelvo
