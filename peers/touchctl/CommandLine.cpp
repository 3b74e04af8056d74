#include "peers/touchctl/CommandLine.h"

#include "peers/touchctl/Settings.h"

#include <algorithm>
#include <limits>

namespace kelvo::touchctl {

namespace {

constexpr std::size_t kSummaryColumn = 39;
constexpr std::size_t kAnyNumber = std::numeric_limits<std::size_t>::max();

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
                      "\"" + std::string(command.name) + "\" takes no " + std::string(option) + "; it is " + usage);
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
         "the displays that are known, and which of them are connected",
         "One line for each display: its name, a tab, and \"connected\" or \"not connected\". With --json a list of\n"
         "objects. Known are the displays that are connected, and those that have a settings file.\n",
         0,
         0,
         {kJsonOption}},
        {Id::Show,
         "show",
         "[DEVICE] [--json]",
         "the settings of a display, or of all that are connected",
         "Below each display's name, a line is a key and its value as \"set\" takes them, or a gesture as \"gesture\"\n"
         "takes it; the driver's version comes last. \"(not set)\" and \"(does not fit)\" are no values. With --json\n"
         "the settings file is written as it stands, for several displays below their names. A display whose file\n"
         "cannot be read is left out, or null, and makes the command fail in the end.\n",
         0,
         1,
         {kJsonOption}},
        {Id::Get,
         "get",
         "DEVICE KEY",
         "print one value",
         "The value alone, as \"set\" takes it. \"driver-version\" is a key here, too. A value that is not set, or "
         "does\n"
         "not fit, is a failure.\n",
         2,
         2,
         {}},
        {Id::Set,
         "set",
         "DEVICE KEY VALUE... [--force]",
         "change a setting of a connected display",
         "Sends the change to the driver, which stores it; no file is written. With --force, a gesture list that the\n"
         "settings window would not make is sent all the same.\n",
         3,
         kAnyNumber,
         {kForceOption}},
        {Id::Gesture,
         "gesture",
         "DEVICE NAME [on|off] [ACTION]",
         "switch a gesture, or choose how it is made",
         "An ACTION alone switches the gesture on, too. A gesture that takes the fingers of another moves that one "
         "out\n"
         "of the way, as in the settings window. \"show\" lists the names; AppExpose may be written without its "
         "accent.\n",
         3,
         4,
         {}},
        {Id::Export,
         "export",
         "DEVICE [FILE]",
         "write the settings of a display as a property list",
         "Without a FILE, or with \"-\", to standard output. A FILE may be a pipe.\n",
         1,
         2,
         {}},
        {Id::Import,
         "import",
         "DEVICE [FILE] [--force]",
         "bring a connected display to the settings of a property list",
         "Without a FILE, or with \"-\", from standard input; a FILE may be a pipe. Everything is checked before "
         "anything\n"
         "is sent to the driver, which stores it; no settings file is written. Prints the keys whose values were\n"
         "others before, one to a line. A gesture list that the settings window would not make, with unknown gestures\n"
         "or actions, or with some that are there twice or collide, is refused, but with --force.\n",
         1,
         2,
         {kForceOption}},
        {Id::Driver,
         "driver",
         "on|off",
         "switch the driver on or off",
         "A driver that is switched off leaves the displays to the desktop, as plain touch screens.\n",
         1,
         1,
         {}},
        {Id::Record,
         "record",
         "DEVICE [FILE]",
         "record what fingers do on a connected display, until Ctrl-C",
         "The driver makes the FILE, which must not be there yet: what the display reports and what comes of it, by "
         "the\nsettings of the moment. Ctrl-C or SIGTERM ends it. Without a FILE, ends a recording that was left "
         "behind.\n",
         1,
         2,
         {}},
        {Id::Actions,
         "actions",
         "[DEVICE | set GESTURE ACTION | reset [GESTURE]] [--json]",
         "what gestures do on this desktop, or change that",
         "One line for each gesture: on or off, the fingers that make it, what it does and how, and the file that "
         "says\n"
         "so; without a DEVICE for the first that is connected. \"set\" has a gesture do something else on this\n"
         "desktop, from the next finger on, \"reset\" what it did before, or all of them. FullScreenApps and\n"
         "SwipeBetweenPages may have \"left\" or \"right\" before the ACTION, for the way the fingers go.\n"
         "\n"
         "ACTION:\n"
         "  nothing                                 nothing at all\n"
         "  fingers [NUMBER]                        what the desktop does with as many fingers on a touchpad\n"
         "  keys KEY[+KEY]...                       the keys of a chord, at most four, such as Control+Alt+Left\n"
         "  right-click                             the right button, where the fingers are\n"
         "  call SERVICE PATH INTERFACE METHOD [ARGUMENT...]\n"
         "                                          a call on the session bus; an ARGUMENT is a text, or as dbus-send\n"
         "                                          takes it: string:TEXT, int32:NUMBER, double:NUMBER, boolean:true\n",
         0,
         kAnyNumber,
         {kJsonOption}},
        {Id::Calibrate,
         "calibrate",
         "DEVICE [--precise]",
         "correct where touches on a connected display land",
         "Shows crosses on the display to be touched, four or with --precise nine, and one more to confirm; Escape,\n"
         "or no touch for 20 seconds, leaves everything as it was. Succeeds when the calibration was stored.\n",
         1,
         1,
         {kPreciseOption}},
        {Id::Watch,
         "watch",
         "",
         "print the messages between pane, driver and utility as they pass",
         "One line of JSON for each message, for each port that is open, and for each that opens or closes later, "
         "until\n"
         "Ctrl-C or SIGTERM, which end it with status 0. Nothing is sent.\n",
         0,
         0,
         {}},
        {Id::Doctor,
         "doctor",
         "",
         "report on versions, bus, ports, touch displays, files and permissions",
         "Names the fix for each thing that is wrong. There is nothing private in the report: displays are numbered "
         "in\n"
         "the order of \"list\", and no user, machine or display is named.\n",
         0,
         0,
         {}},
        {Id::Complete,
         "complete",
         "[WORD...]",
         "",
         "Prints what may follow these words of a command line, for shells; with --options before them, options.\n",
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
        {Status::Success, "done"},
        {Status::Failure, "a failure, such as a file that cannot be read, is damaged or does not fit"},
        {Status::Usage, "a command, option, key or value that does not exist, or too many or too few words"},
        {Status::NoDriver, "no driver runs, it does not answer, it is switched off, or there is no session bus"},
        {Status::NoDevice, "a display that is not known or not connected"},
        {Status::Findings, "doctor found something to mend"},
    };
    return texts;
}

bool Invocation::has(std::string_view option) const { return std::ranges::find(options, option) != options.end(); }

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
        std::string text = "Usage: " + usageOf(*command) + "\n\n" + std::string(command->help);
        if (command->id == Command::Id::Set || command->id == Command::Id::Get) text += keysText();
        return text + statusesText();
    }
    std::string text = "Usage: kelvo-touchctl COMMAND [WORD...]\n\nThe settings of touch displays, for scripts.\n\n";
    for (const Command& each : commands()) {
        if (each.summary.empty()) continue;
        text += "  " + padded(std::string(each.name) + " " + std::string(each.synopsis), kSummaryColumn) +
                std::string(each.summary) + "\n";
    }
    text += "  " + padded("COMMAND --help", kSummaryColumn) + "what the command takes\n";
    text += "  " + padded("--help, -h, --version", kSummaryColumn) + "print this, or the version\n";
    text += "  " + padded("--", kSummaryColumn) + "what follows is no option, whatever it begins with\n";
    text += "\nA DEVICE is a display as \"list\" names it, in every character.\n";
    return text + keysText() + statusesText();
}

} // namespace kelvo::touchctl
