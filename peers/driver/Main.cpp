#include "linux/PollRunLoop.h"
#include "linux/TerminationSignals.h"
#include "peers/PeerPlatform.h"
#include "peers/driver/ControlChannel.h"
#include "peers/driver/DriverSimulator.h"
#include "peers/driver/SystemGestures.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <ctime>
#include <exception>
#include <iostream>
#include <optional>
#include <stdexcept>

namespace {

using Words = std::vector<std::string>;

constexpr char kUsage[] = R"(Usage: kelvo-touch-driver-sim [run] [--connect NAME]... [--system-gestures]
       kelvo-touch-driver-sim COMMAND

Stands in for the driver of a touch display. "run" starts it in the foreground; it prints each message that the
settings pane sends as one line of JSON, and ends with Ctrl-C. The commands are for the one that runs:

  connect NAME      connect a display
  disconnect NAME   disconnect it
  enable, disable   switch the driver on or off
  show-tab N        have the pane show a tab (0 calibration, 1 touch, 2 hardware, 3 version)
  system-gesture NAME on|off
                    switch one of the system's own gestures in the home's preference files, which the pane follows when
                    it next shows the touch tab: AppExpose, ShowDesktop, MissionControl, Launchpad, SwipeBetweenPages
  hang SECONDS      answer nothing for so long
  status            print what is connected

  --connect NAME    with "run": begin with this display connected
  --system-gestures with "run": first make the system's preference files, all gestures on, where there are none
  --help, --version print this, or the version
)";

/// A number that is the whole of `text`; none when it is no number.
template <typename Number>
std::optional<Number> wholeNumber(const std::string& text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

/// Does nothing at all, but for the signals that end the process.
void standStill(double seconds) {
    const double whole = std::floor(seconds);
    const timespec duration{static_cast<time_t>(whole), static_cast<long>((seconds - whole) * 1e9)};
    nanosleep(&duration, nullptr);
}

/// Answers nothing for a while: the whole process stands still, as a driver that hangs does.
std::string hang(const std::string& secondsText) {
    constexpr double kLongest = 600.0;
    const auto seconds = wholeNumber<double>(secondsText);
    if (!seconds || !(*seconds > 0.0 && *seconds <= kLongest)) {
        throw std::runtime_error("\"hang\" takes a number of seconds, more than 0 and up to 600");
    }
    // Later, so that whoever gave the command still has its answer.
    platform::CFRunLoop::getCurrent().scheduleTimer(0.0, [duration = *seconds] { standStill(duration); });
    return "hanging for " + secondsText + " s";
}

std::string performCommand(kelvo::DriverSimulator& driver, const Words& words) {
    const std::string command = words.empty() ? "" : words[0];
    const auto is = [&](const char* name, std::size_t arguments) {
        if (command != name) return false;
        if (words.size() != arguments + 1)
            throw std::runtime_error("\"" + command + "\" takes another number of words; see --help");
        return true;
    };
    if (is("connect", 1)) {
        driver.connect(words[1]);
    } else if (is("disconnect", 1)) {
        driver.disconnect(words[1]);
    } else if (is("enable", 0)) {
        driver.setDriverEnabled(true);
    } else if (is("disable", 0)) {
        driver.setDriverEnabled(false);
    } else if (is("show-tab", 1)) {
        const auto index = wholeNumber<std::int64_t>(words[1]);
        if (!index) throw std::runtime_error("\"show-tab\" takes the number of a tab, 0 to 3");
        driver.showTab(*index);
    } else if (is("system-gesture", 2)) {
        kelvo::setSystemGesture(words[1], words[2]);
        return kelvo::systemGestureStates();
    } else if (is("hang", 1)) {
        return hang(words[1]);
    } else if (!is("status", 0)) {
        throw std::runtime_error("there is no command \"" + command + "\"; see --help");
    }
    return driver.status();
}

kelvo::CommandResult resultOf(kelvo::DriverSimulator& driver, const Words& words) {
    try {
        return {true, performCommand(driver, words)};
    } catch (const std::exception& error) {
        return {false, error.what()};
    }
}

void printLine(const std::string& line) { std::cout << line << std::endl; }

/// What "run" begins with.
struct Beginning {
    Words displays;
    bool makesSystemGestureFiles = false;
};

Beginning beginningOf(const Words& words) {
    Beginning beginning;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (words[i] == "--system-gestures") {
            beginning.makesSystemGestureFiles = true;
        } else if (words[i] == "--connect" && i + 1 < words.size()) {
            beginning.displays.push_back(words[++i]);
        } else {
            throw std::runtime_error("\"run\" takes only --connect NAME and --system-gestures; see --help");
        }
    }
    return beginning;
}

int run(const Words& words) {
    const Beginning beginning = beginningOf(words);
    kelvo::PollRunLoop runLoop;
    const kelvo::PeerPlatform services("kelvo-touch-driver-sim", runLoop);

    kelvo::DriverSimulator driver(printLine);
    const kelvo::TerminationSignals signals(runLoop, [&] { runLoop.stop(); });
    const auto control =
        kelvo::ControlChannel::open(runLoop, [&](const Words& command) { return resultOf(driver, command); });
    if (!control || !driver.start()) {
        throw std::runtime_error("the driver's place on the session bus cannot be had: another driver has it (end that "
                                 "one), or there is no bus (set DBUS_SESSION_BUS_ADDRESS)");
    }
    if (beginning.makesSystemGestureFiles) kelvo::createSystemGestureFiles();
    for (const std::string& name : beginning.displays) driver.connect(name);
    printLine(driver.status());
    runLoop.run();
    driver.stop();
    return 0;
}

int perform(const Words& words) {
    const kelvo::CommandResult result = kelvo::sendCommand(words);
    if (!result.succeeded) throw std::runtime_error(result.text);
    printLine(result.text);
    return 0;
}

} // namespace

int main(int argc, char* argv[]) {
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
        return perform(words);
    } catch (const std::exception& error) {
        std::cerr << "kelvo-touch-driver-sim: " << error.what() << '\n';
        return 1;
    }
}
