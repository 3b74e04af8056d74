#include "hosts/window/Options.h"

#include <string_view>

namespace kelvo {

namespace {

constexpr std::string_view kPaneOption = "--pane";
constexpr std::string_view kPaneOptionWithValue = "--pane=";

Options mistaken(const std::string& mistake) {
    Options options;
    options.error = mistake + "\nSee --help for the available options.";
    return options;
}

} // namespace

Options parseOptions(const std::vector<std::string>& arguments) {
    Options options;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        if (*argument == "--help" || *argument == "-h") {
            options.help = true;
        } else if (*argument == "--version") {
            options.version = true;
        } else if (*argument == kPaneOption) {
            if (++argument == arguments.end()) return mistaken("--pane needs the path of a pane: --pane PATH");
            options.panePath = *argument;
        } else if (argument->starts_with(kPaneOptionWithValue)) {
            options.panePath = argument->substr(kPaneOptionWithValue.size());
        } else {
            return mistaken("unknown argument " + *argument);
        }
    }
    if (options.panePath && options.panePath->empty()) return mistaken("--pane needs the path of a pane: --pane PATH");
    return options;
}

std::string helpText() {
    return "Usage: kelvo-touch-display [--pane PATH]\n"
           "Show the touchscreen settings in a window.\n"
           "\n"
           "  --pane PATH  show the pane bundle at PATH instead of the installed one\n"
           "  -h, --help   show this help and exit\n"
           "  --version    show the version and exit\n";
}

std::string versionText() { return "kelvo-touch-display " KELVO_VERSION "\n"; }

} // namespace kelvo
