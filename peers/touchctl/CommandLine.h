#pragma once

#include "peers/touchctl/Failure.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::touchctl {

/// One thing that the program can be asked for.
struct Command {
    enum class Id {
        List,
        Show,
        Get,
        Set,
        Gesture,
        Export,
        Import,
        Driver,
        Record,
        Actions,
        Calibrate,
        Watch,
        Doctor,
        Complete
    };

    Id id;
    std::string_view name;
    std::string_view synopsis;
    std::string_view summary;
    /// What --help says beyond that.
    std::string_view help;
    /// How many words may follow the name.
    std::size_t least;
    std::size_t most;
    /// The options that it takes beside --help.
    std::vector<std::string_view> options;
};

constexpr std::string_view kHelpOption = "--help";
constexpr std::string_view kJsonOption = "--json";
constexpr std::string_view kForceOption = "--force";
constexpr std::string_view kPreciseOption = "--precise";

/// Every command, in the order of the help. The last one serves the shells and is not for people.
[[nodiscard]] const std::vector<Command>& commands();
/// The command of that name; null when there is none.
[[nodiscard]] const Command* commandNamed(std::string_view name);

/// What a status of the program means, in the words of its help and its manual page.
struct StatusText {
    Status status;
    std::string_view text;
};
[[nodiscard]] const std::vector<StatusText>& statusTexts();

/// What a command line asks for.
struct Invocation {
    /// None for the program's own help or version.
    const Command* command = nullptr;
    Words words;
    /// Those of the command.
    std::vector<std::string_view> options;
    bool help = false;
    bool version = false;

    [[nodiscard]] bool has(std::string_view option) const;
};

/// Reads the arguments that follow the program's name. Options stand anywhere before a "--"; what is not understood is
/// a Failure that says what would be.
[[nodiscard]] Invocation parseCommandLine(const Words& arguments);

/// The text of --help, for one command or for all.
[[nodiscard]] std::string helpText(const Command* command);

} // namespace kelvo::touchctl
