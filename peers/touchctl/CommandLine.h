#pragma once

#include "peers/touchctl/Failure.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::touchctl {

/// One thing that the program can be asked for.
struct Command {
    enum class Id { List, Show, Set, Gesture, Export, Import, Watch, Doctor, Complete };

    Id id;
    std::string_view name;
    std::string_view synopsis;
    std::string_view summary;
    /// What --help says beyond that.
    std::string_view help;
    /// How many words may follow the name.
    std::size_t least;
    std::size_t most;
    bool takesJson = false;
};

/// Every command, in the order of the help. The last one serves the shells and is not for people.
[[nodiscard]] const std::vector<Command>& commands();

/// What a command line asks for.
struct Invocation {
    /// None for the program's own help or version.
    const Command* command = nullptr;
    Words words;
    bool json = false;
    bool help = false;
    bool version = false;
};

/// Reads the arguments that follow the program's name. Options stand anywhere before a "--"; what is not understood is
/// a Failure that says what would be.
[[nodiscard]] Invocation parseCommandLine(const Words& arguments);

/// The text of --help, for one command or for all.
[[nodiscard]] std::string helpText(const Command* command);

} // namespace kelvo::touchctl
