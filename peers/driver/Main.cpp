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

Simulates the driver of a touch display. "run" starts the simulator in the foreground, where it prints each message from
the settings pane as one line of JSON; press Ctrl+C to stop it. "touch" plays back recorded touches (FILE in the evemu
text format) and prints what the driver would output, one line of JSON per step; for this, no driver needs to be running.
All other commands control a running simulator:

  connect NAME      connect a display
  disconnect NAME   disconnect a display
  enable, disable   switch the driver on or off
  finger NAME touch|pointer
                    make one finger act as a touch, or move the pointer
  record NAME [FILE]
                    start recording touches to a file, or stop recording; simulated displays cannot be
                    recorded
  contacts NAME [X,Y]...
                    put fingers at these positions on the screen, each from 0 to 1, and lift all others; a program
                    that watches the display receives them, otherwise the resulting driver output is printed
  show-tab N        make the pane show a tab (0 calibration, 1 touch, 2 display, 3 version)
  system-gesture NAME on|off
                    switch a system gesture in the preference files of the user; the pane follows when it next shows
                    the touch tab: AppExpose, ShowDesktop, MissionControl, Launchpad, SwipeBetweenPages
  hang SECONDS      do not answer for this long
  status            print the connected displays

  --connect NAME    with "run": connect this display at the start
  --display NAME    with "touch": use the settings of this display instead of the recorded one
  --pointer         with "touch": one finger moves the pointer, whatever the settings are
  --keep-touches    with "touch": behave as on desktops that cannot cancel touches
  --help, --version show this help, or the version
)";

void printLine(const std::string& line) { std::cout << line << std::endl; }

/// The displays that "run" connects at the start.
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
        throw std::runtime_error(
            "cannot take the driver's name on the session bus: either another driver is running (quit "
            "it), or there is no bus (set DBUS_SESSION_BUS_ADDRESS)");
    }
    for (const std::string& name : displays) driver.connect(name);
    printLine(driver.status());
    runLoop.run();
    driver.stop();
    return 0;
}

/// The answer of the running simulator; anything else is an error with its solution.
std::string textOf(const kelvo::DriverAnswer& answer) {
    using Outcome = kelvo::DriverAnswer::Outcome;
    switch (answer.outcome) {
    case Outcome::Done:
        return answer.text;
    case Outcome::Refused:
        throw std::runtime_error(answer.text);
    case Outcome::NoBus:
        throw std::runtime_error("there is no session bus; set DBUS_SESSION_BUS_ADDRESS to the bus of the simulator");
    case Outcome::NotRunning:
        throw std::runtime_error("no simulator is running on this bus; start one with \"kelvo-touch-driver-sim run\"");
    case Outcome::NotAnswering:
        break;
    }
    throw std::runtime_error("the simulator does not answer, maybe because of \"hang\"; it runs the command when it "
                             "continues");
}

int play(const Words& words) {
    kelvo::PollRunLoop runLoop;
    const kelvo::PeerPlatform services(kProgram, runLoop);
    kelvo::playRecording(kelvo::recordingChoiceIn(words), [](const std::string& line) { std::cout << line << '\n'; });
    if (!std::cout.flush()) throw std::runtime_error("cannot write to standard output; check where it is redirected");
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
