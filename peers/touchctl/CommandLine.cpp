#include "peers/touchctl/CommandLine.h"

#include "peers/touchctl/Settings.h"

#include <algorithm>
#include <limits>

namespace kelvo::touchctl {

namespace {

constexpr std::size_t kSummaryColumn = 39;
constexpr std::size_t kAnyNumber = std::numeric_limits<std::size_t>::max();

bool isOption(const std::string& argument) {
    // A single "-" is standard input, and numbers are not options.
    return argument.size() > 1 && argument[0] == '-' && (argument[1] < '0' || argument[1] > '9') && argument[1] != '.';
}

/// Handles an option; false if there is no such option.
bool takeOption(const std::string& option, Invocation& invocation) {
    if (option == "--help" || option == "-h") {
        invocation.help = true;
    } else if (option == "--version") {
        invocation.version = true;
    } else if (option == kJsonOption) {
        invocation.options.push_back(kJsonOption);
    } else if (option == kForceOption) {
        invocation.options.push_back(kForceOption);
    } else if (option == kPreciseOption) {
        invocation.options.push_back(kPreciseOption);
    } else {
        return false;
    }
    return true;
}

std::string usageOf(const Command& command) {
    std::string usage = "kelvo-touchctl " + std::string(command.name);
    if (!command.synopsis.empty()) usage.append(" ").append(command.synopsis);
    return usage;
}

void checkWords(const Invocation& invocation) {
    const Command& command = *invocation.command;
    const std::string usage = usageOf(command);
    for (const std::string_view option : invocation.options) {
        if (std::ranges::find(command.options, option) != command.options.end()) continue;
        throw Failure(Status::Usage,
                      "\"" + std::string(command.name) + "\" takes no " + std::string(option) + "; usage: " + usage);
    }
    if (invocation.words.size() < command.least || invocation.words.size() > command.most) {
        throw Failure(Status::Usage,
                      "wrong number of arguments for \"" + std::string(command.name) + "\"; usage: " + usage);
    }
}

/// What follows a text that is too long for its column begins on the next line.
std::string padded(std::string_view text, std::size_t width) {
    std::string cell(text);
    if (cell.size() >= width) return cell + "\n" + std::string(width + 2, ' ');
    cell.resize(width, ' ');
    return cell;
}

std::string keysText() {
    std::string text = "\nKeys:\n";
    for (const Key& key : settingKeys()) {
        text += "  " + padded(std::string(key.name) + " " + std::string(key.synopsis), 40) + key.meaning + "\n";
    }
    return text;
}

std::string statusesText() {
    std::string text = "\nExit status:\n";
    for (const StatusText& each : statusTexts()) {
        text += "  " + std::to_string(static_cast<int>(each.status)) + "  " + std::string(each.text) + "\n";
    }
    return text;
}

} // namespace

const std::vector<Command>& commands() {
    using Id = Command::Id;
    static const std::vector<Command> all{
        {Id::List,
         "list",
         "[--json]",
         "list the known displays",
         "Prints one line per display: its name, a tab, and \"connected\" or \"not connected\". With --json, prints a\n"
         "list of objects. A display is known if it is connected or has a settings file.\n",
         0,
         0,
         {kJsonOption}},
        {Id::Show,
         "show",
         "[DEVICE] [--json]",
         "show the settings of a display, or of all connected displays",
         "Below the name of each display, each line is a key and its value as \"set\" takes them, or a gesture as\n"
         "\"gesture\" takes it, followed by the driver version. \"(not set)\" and \"(invalid)\" mark missing and "
         "invalid\n"
         "values. With --json, prints the settings file as it is; for several displays, one object per display, keyed "
         "by\n"
         "name. If a settings file cannot be read, its display is left out, or null, and the command fails in the "
         "end.\n",
         0,
         1,
         {kJsonOption}},
        {Id::Get,
         "get",
         "DEVICE KEY",
         "print one value",
         "Prints the value alone, as \"set\" takes it. \"driver-version\" is a key here, too. Fails if the value is "
         "not\n"
         "set or is invalid.\n",
         2,
         2,
         {}},
        {Id::Set,
         "set",
         "DEVICE KEY VALUE... [--force]",
         "change a setting of a connected display",
         "Sends the change to the driver, which saves it; this command writes no file. With --force, also sends a\n"
         "gesture list that the settings window would not produce.\n",
         3,
         kAnyNumber,
         {kForceOption}},
        {Id::Gesture,
         "gesture",
         "DEVICE NAME [on|off] [ACTION]",
         "switch a gesture on or off, or choose its fingers",
         "An ACTION on its own also switches the gesture on. If two gestures would need the same fingers, the other "
         "one is\n"
         "changed, as in the settings window. \"show\" lists the names; you can type AppExpose without its accent.\n",
         3,
         4,
         {}},
        {Id::Export,
         "export",
         "DEVICE [FILE]",
         "export the settings of a display to a property list",
         "Without FILE, or if FILE is \"-\", writes to standard output. FILE can be a pipe.\n",
         1,
         2,
         {}},
        {Id::Import,
         "import",
         "DEVICE [FILE] [--force]",
         "apply the settings in a property list to a connected display",
         "Without FILE, or if FILE is \"-\", reads standard input. FILE can be a pipe. Checks everything before "
         "sending\n"
         "anything to the driver, which saves it; this command writes no settings file. Prints the keys whose values\n"
         "changed, one per line. Without --force, refuses a gesture list that the settings window would not produce:\n"
         "one with unknown, duplicate or conflicting gestures or actions.\n",
         1,
         2,
         {kForceOption}},
        {Id::Driver,
         "driver",
         "on|off",
         "switch the driver on or off",
         "While the driver is off, the displays work as plain touchscreens.\n",
         1,
         1,
         {}},
        {Id::Record,
         "record",
         "DEVICE [FILE]",
         "record the touches on a connected display until Ctrl+C",
         "The driver creates FILE, which must not exist yet, and writes to it what the display reports and what "
         "becomes\n"
         "of it with the current settings. Ctrl+C or SIGTERM stops the recording. Without FILE, stops a recording "
         "that\n"
         "was left running.\n",
         1,
         2,
         {}},
        {Id::Actions,
         "actions",
         "[DEVICE | set GESTURE ACTION | reset [GESTURE]] [--json]",
         "show or change what gestures do on this desktop",
         "Prints one line per gesture: whether it is on, the fingers that make it, what it does and how, and the file\n"
         "that defines this. Without DEVICE, prints those of the first connected display. \"set\" assigns another "
         "action\n"
         "to a gesture on this desktop, from the next touch on. \"reset\" restores the original action of one gesture "
         "or\n"
         "of all. For FullScreenApps and SwipeBetweenPages, put \"left\" or \"right\" before ACTION to change only "
         "that\n"
         "direction of the fingers.\n"
         "\n"
         "ACTION:\n"
         "  nothing                                 do nothing\n"
         "  fingers [NUMBER]                        what the desktop does with this many fingers on a touchpad\n"
         "  keys KEY[+KEY]...                       a keyboard shortcut of up to four keys, such as\n"
         "                                          Control+Alt+Left\n"
         "  right-click                             a right click where the fingers are\n"
         "  call SERVICE PATH INTERFACE METHOD [ARGUMENT...]\n"
         "                                          a call on the session bus; an ARGUMENT is plain text, or typed as\n"
         "                                          for dbus-send: string:TEXT, int32:NUMBER, double:NUMBER, "
         "boolean:true\n",
         0,
         kAnyNumber,
         {kJsonOption}},
        {Id::Calibrate,
         "calibrate",
         "DEVICE [--precise]",
         "correct where touches on a connected display land",
         "Shows four crosses to touch on the display (nine with --precise), and one more to confirm. To leave "
         "everything\n"
         "as it was, press Escape or touch nothing for 20 seconds. Succeeds if the calibration was saved.\n",
         1,
         1,
         {kPreciseOption}},
        {Id::Watch,
         "watch",
         "",
         "print messages between pane, driver and utility live",
         "Prints one line of JSON for each message, for each open port, and for each port that opens or closes later.\n"
         "Ctrl+C or SIGTERM stops it with exit status 0. Sends nothing.\n",
         0,
         0,
         {}},
        {Id::Doctor,
         "doctor",
         "",
         "diagnose problems and suggest fixes",
         "Checks versions, the bus, ports, touch displays, files and permissions, and suggests a fix for each "
         "problem.\n"
         "The report contains nothing private: it does not name the user, the computer or the displays, which are\n"
         "numbered in the order of \"list\".\n",
         0,
         0,
         {}},
        {Id::Complete,
         "complete",
         "[WORD...]",
         "",
         "Prints what can follow these words on a command line, for shell completion; after --options, the options.\n",
         0,
         kAnyNumber,
         {}},
    };
    return all;
}

const Command* commandNamed(std::string_view name) {
    const auto found = std::ranges::find(commands(), name, &Command::name);
    return found == commands().end() ? nullptr : &*found;
}

const std::vector<StatusText>& statusTexts() {
    static const std::vector<StatusText> texts{
        {Status::Success, "success"},
        {Status::Failure, "a failure, such as a file that is unreadable, damaged or invalid"},
        {Status::Usage, "a usage error: an unknown command, option, key or value, or the wrong number of arguments"},
        {Status::NoDriver, "the driver is not running, does not answer or is switched off, or there is no session bus"},
        {Status::NoDevice, "the display is unknown or not connected"},
        {Status::Findings, "doctor found problems"},
    };
    return texts;
}

bool Invocation::has(std::string_view option) const { return std::ranges::find(options, option) != options.end(); }

Invocation parseCommandLine(const Words& arguments) {
    Invocation invocation;
    bool takesOptions = true;
    for (const std::string& argument : arguments) {
        // Words to be completed for a shell are not meant for this program.
        const bool isAsked = invocation.command && invocation.command->id == Command::Id::Complete;
        if (takesOptions && argument == "--") {
            takesOptions = false;
        } else if (takesOptions && !isAsked && isOption(argument)) {
            if (!takeOption(argument, invocation)) {
                throw Failure(Status::Usage, "unknown option " + argument +
                                                 "; see --help. Put \"--\" before the name of a "
                                                 "display or file that looks like an option");
            }
        } else if (invocation.command) {
            invocation.words.push_back(argument);
        } else {
            invocation.command = commandNamed(argument);
            if (!invocation.command) throw Failure(Status::Usage, "unknown command \"" + argument + "\"; see --help");
        }
    }
    if (invocation.help || invocation.version) return invocation;
    if (!invocation.command) throw Failure(Status::Usage, "missing command; see --help");
    checkWords(invocation);
    return invocation;
}

std::string helpText(const Command* command) {
    if (command) {
        std::string text = "Usage: " + usageOf(*command) + "\n\n" + std::string(command->help);
        if (command->id == Command::Id::Set || command->id == Command::Id::Get) text += keysText();
        return text + statusesText();
    }
    std::string text = "Usage: kelvo-touchctl COMMAND [ARGUMENT...]\n\nView and change the settings of touch displays "
                       "from scripts.\n\n";
    for (const Command& each : commands()) {
        if (each.summary.empty()) continue;
        text += "  " + padded(std::string(each.name) + " " + std::string(each.synopsis), kSummaryColumn) +
                std::string(each.summary) + "\n";
    }
    text += "  " + padded("COMMAND --help", kSummaryColumn) + "show help for a command\n";
    text += "  " + padded("--help, -h, --version", kSummaryColumn) + "show this help, or the version\n";
    text += "  " + padded("--", kSummaryColumn) + "end of options\n";
    text += "\nDEVICE is the exact name of a display as printed by \"list\".\n";
    return text + keysText() + statusesText();
}

} // namespace kelvo::touchctl
