#include "linux/PollRunLoop.h"
#include "linux/StandardStreams.h"
#include "linux/TerminationSignals.h"
#include "peers/DriverCommand.h"
#include "peers/PeerPlatform.h"
#include "peers/driver/DriverSimulator.h"
#include "peers/driver/RecordingPlayer.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Words = std::vector<std::string>;

constexpr char kProgram[] = "kelvo-touch-driver-sim";

constexpr char kUsage[] = R"(Usage: kelvo-touch-driver-sim [run] [--connect NAME]...
       kelvo-touch-driver-sim touch FILE [--display NAME] [--pointer] [--keep-touches]
       kelvo-touch-driver-sim COMMAND

Stands in for the driver of a touch display. "run" starts it in the foreground; it prints each message that the
settings pane sends as one line of JSON, and ends with Ctrl-C. "touch" plays recorded fingers (a FILE in evemu's text
form) through what a driver makes of them and prints what it would give out, each step as one line of JSON; nothing has
to run for that. The commands are for the one that runs:

  connect NAME      connect a display
  disconnect NAME   disconnect it
  enable, disable   switch the driver on or off
  finger NAME touch|pointer
                    pass one finger on as a touch, or as the pointer with its button
  record NAME [FILE]
                    record what the fingers do into a file, or end that; a simulated display has none
  contacts NAME [X,Y]...
                    lay fingers at these places of the glass, each from 0 to 1, and lift all others; whoever watches
                    the display sees them, else what the driver makes of them is printed
  show-tab N        have the pane show a tab (0 calibration, 1 touch, 2 hardware, 3 version)
  system-gesture NAME on|off
                    switch one of the system's own gestures in the home's preference files, which the pane follows when
                    it next shows the touch tab: AppExpose, ShowDesktop, MissionControl, Launchpad, SwipeBetweenPages
  hang SECONDS      answer nothing for so long
  status            print what is connected

  --connect NAME    with "run": begin with this display connected
  --display NAME    with "touch": by the settings of this display, not of the one that was recorded
  --pointer         with "touch": one finger is the pointer, whatever the settings say
  --keep-touches    with "touch": as for desktops that cannot take touches back
  --help, --version print this, or the version
)";

void printLine(const std::string& line) { std::cout << line << std::endl; }

/// The displays that "run" begins with.
Words displaysNamedIn(const Words& words) {
    Words displays;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (words[i] == "--connect" && i + 1 < words.size()) {
            displays.push_back(words[++i]);
        } else {
            throw std::runtime_error("\"run\" takes only --connect NAME; see --help");
        }
    }
    return displays;
}

int run(const Words& words) {
    const Words displays = displaysNamedIn(words);
    kelvo::PollRunLoop runLoop;
    const kelvo::PeerPlatform services(kProgram, runLoop);

    kelvo::DriverSimulator simulator(printLine);
    kelvo::DriverCore& driver = simulator.core();
    const kelvo::TerminationSignals signals(runLoop, [&] { runLoop.stop(); });
    if (!driver.start()) {
        throw std::runtime_error("the driver's place on the session bus cannot be had: another driver has it (end that "
                                 "one), or there is no bus (set DBUS_SESSION_BUS_ADDRESS)");
    }
    for (const std::string& name : displays) driver.connect(name);
    printLine(driver.status());
    runLoop.run();
    driver.stop();
    return 0;
}

/// What the running simulator said; anything else is an error that names the fix.
std::string textOf(const kelvo::DriverAnswer& answer) {
    using Outcome = kelvo::DriverAnswer::Outcome;
    switch (answer.outcome) {
    case Outcome::Done:
        return answer.text;
    case Outcome::Refused:
        throw std::runtime_error(answer.text);
    case Outcome::NoBus:
        throw std::runtime_error("there is no session bus; set DBUS_SESSION_BUS_ADDRESS to the simulator's");
    case Outcome::NotRunning:
        throw std::runtime_error("no simulator runs on this bus; start one with \"kelvo-touch-driver-sim run\"");
    case Outcome::NotAnswering:
        break;
    }
    throw std::runtime_error(
        "the simulator does not answer, perhaps because it hangs (see \"hang\"); it does this when "
        "it goes on");
}

int play(const Words& words) {
    kelvo::PollRunLoop runLoop;
    const kelvo::PeerPlatform services(kProgram, runLoop);
    kelvo::playRecording(kelvo::recordingChoiceIn(words), [](const std::string& line) { std::cout << line << '\n'; });
    if (!std::cout.flush()) throw std::runtime_error("the output cannot be written; see where it goes");
    return 0;
}

int perform(const Words& words) {
    kelvo::PollRunLoop runLoop;
    printLine(textOf(kelvo::performAndWait(runLoop, words)));
    return 0;
}

} // namespace

int main(int argc, char* argv[]) {
    kelvo::keepPlacesOfClosedStreams();
    const Words words(argv + std::min(argc, 1), argv + argc);
    try {
        if (!words.empty() && (words[0] == "--help" || words[0] == "-h")) {
            std::cout << kUsage;
            return 0;
        }
        if (!words.empty() && words[0] == "--version") {
            std::cout << "kelvo-touch-driver-sim " KELVO_VERSION "\n";
            return 0;
        }
        if (words.empty() || words[0].starts_with("--")) return run(words);
        if (words[0] == "run") return run(Words(words.begin() + 1, words.end()));
        if (words[0] == "touch") return play(Words(words.begin() + 1, words.end()));
        return perform(words);
    } catch (const std::exception& error) {
        std::cerr << "kelvo-touch-driver-sim: " << error.what() << '\n';
        return 1;
    }
}
