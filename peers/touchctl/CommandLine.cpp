#include "peers/touchctl/CommandLine.h"

#include "peers/touchctl/Settings.h"

#include <algorithm>
#include <limits>

namespace kelvo::touchctl {

namespace {

constexpr std::size_t kAnyNumber = std::numeric_limits<std::size_t>::max();

constexpr std::string_view kEndings = R"(
Exit status: 0 done; 1 failure, such as a file that cannot be read; 2 a command, key or value that does not exist;
3 no driver runs, answers or is switched on, or there is no session bus; 4 a display that is not known or connected;
5 "doctor" found something to mend.
)";

const Command* commandNamed(std::string_view name) {
    const auto found =
        std::find_if(commands().begin(), commands().end(), [&](const Command& each) { return each.name == name; });
    return found == commands().end() ? nullptr : &*found;
}

bool isOption(const std::string& argument) {
    // A lone "-" is standard input, and no number is an option.
    return argument.size() > 1 && argument[0] == '-' && (argument[1] < '0' || argument[1] > '9') && argument[1] != '.';
}

/// One option; false when there is none of that name.
bool takeOption(const std::string& option, Invocation& invocation) {
    if (option == "--help" || option == "-h") {
        invocation.help = true;
    } else if (option == "--version") {
        invocation.version = true;
    } else if (option == "--json") {
        invocation.json = true;
    } else {
        return false;
    }
    return true;
}

void checkWords(const Invocation& invocation) {
    const Command& command = *invocation.command;
    const std::string usage = "kelvo-touchctl " + std::string(command.name) + " " + std::string(command.synopsis);
    if (invocation.json && !command.takesJson) {
        throw Failure(Status::Usage, "\"" + std::string(command.name) + "\" takes no --json; it is " + usage);
    }
    if (invocation.words.size() < command.least || invocation.words.size() > command.most) {
        throw Failure(Status::Usage, "\"" + std::string(command.name) + "\" takes another number of words: " + usage);
    }
}

std::string padded(std::string_view text, std::size_t width) {
    std::string cell(text);
    cell.resize(std::max(width, cell.size()), ' ');
    return cell;
}

std::string keysText() {
    std::string text = "\nKeys:\n";
    for (const Key& key : settingKeys()) {
        text += "  " + padded(std::string(key.name) + " " + std::string(key.synopsis), 40) + std::string(key.meaning) +
                "\n";
    }
    return text;
}

} // namespace

const std::vector<Command>& commands() {
    using Id = Command::Id;
    static const std::vector<Command> all{
        {Id::List, "list", "[--json]", "the displays that are known, and which of them are connected",
         "One line for each display: its name, a tab, and \"connected\" or \"not connected\".\n", 0, 0, true},
        {Id::Show, "show", "[DEVICE] [--json]", "the settings of a display, or of all that are connected",
         "Each line is a key and its value as \"set\" takes them, or a gesture as \"gesture\" takes it. With --json "
         "the\n"
         "settings file is written as it stands, for several displays below their names.\n",
         0, 1, true},
        {Id::Set, "set", "DEVICE KEY VALUE...", "change a setting of a connected display",
         "Sends the change to the driver, which stores it; no file is written.\n", 3, kAnyNumber},
        {Id::Gesture, "gesture", "DEVICE NAME on|off|ACTION", "switch a gesture, or choose how it is made",
         "An ACTION switches the gesture on, too. A gesture that takes the fingers of another moves that one out of "
         "the\n"
         "way, as in the settings window. \"show\" lists the names; AppExpose may be written without its accent.\n",
         3, 3},
        {Id::Export, "export", "DEVICE [FILE]", "write the settings of a display as a property list",
         "Without a FILE, or with \"-\", to standard output.\n", 1, 2},
        {Id::Import, "import", "DEVICE [FILE]", "bring a connected display to the settings of a property list",
         "Without a FILE, or with \"-\", from standard input. Everything is checked before anything is sent to the\n"
         "driver, which stores it; no settings file is written.\n",
         1, 2},
        {Id::Watch, "watch", "", "print the messages between pane, driver and utility as they pass",
         "One line of JSON for each message, and for each port that opens or closes, until Ctrl-C, which ends it with\n"
         "status 0. Nothing is sent.\n",
         0, 0},
        {Id::Doctor, "doctor", "", "report on versions, bus, ports, files and permissions",
         "Names the fix for each thing that is wrong. There is nothing private in the report.\n", 0, 0},
        {Id::Complete, "complete", "[WORD...]", "",
         "Prints what may follow these words of a command line, for shells.\n", 0, kAnyNumber},
    };
    return all;
}

Invocation parseCommandLine(const Words& arguments) {
    Invocation invocation;
    bool takesOptions = true;
    for (const std::string& argument : arguments) {
        // What a shell asks about is not meant for this program.
        const bool isAsked = invocation.command && invocation.command->id == Command::Id::Complete;
        if (takesOptions && argument == "--") {
            takesOptions = false;
        } else if (takesOptions && !isAsked && isOption(argument)) {
            if (!takeOption(argument, invocation)) {
                throw Failure(Status::Usage, "there is no option " + argument +
                                                 "; see --help. A display or file of such a "
                                                 "name follows \"--\"");
            }
        } else if (invocation.command) {
            invocation.words.push_back(argument);
        } else {
            invocation.command = commandNamed(argument);
            if (!invocation.command)
                throw Failure(Status::Usage, "there is no command \"" + argument + "\"; see --help");
        }
    }
    if (invocation.help || invocation.version) return invocation;
    if (!invocation.command) throw Failure(Status::Usage, "a command is missing; see --help");
    checkWords(invocation);
    return invocation;
}

std::string helpText(const Command* command) {
    if (command) {
        std::string text = "Usage: kelvo-touchctl " + std::string(command->name) + " " +
                           std::string(command->synopsis) + "\n\n" + std::string(command->help);
        if (command->id == Command::Id::Set) text += keysText();
        return text + std::string(kEndings);
    }
    std::string text = "Usage: kelvo-touchctl COMMAND [WORD...]\n\nThe settings of touch displays, for scripts.\n\n";
    for (const Command& each : commands()) {
        if (each.summary.empty()) continue;
        text += "  " + padded(std::string(each.name) + " " + std::string(each.synopsis), 36) +
                std::string(each.summary) + "\n";
    }
    text += "  " + padded("COMMAND --help", 36) + "what the command takes\n";
    text += "  " + padded("--help, --version", 36) + "print this, or the version\n";
    return text + std::string(kEndings);
}

} // namespace kelvo::touchctl
