#include "linux/BusMessagePorts.h"
#include "linux/Journal.h"
#include "linux/PlistCoder.h"
#include "linux/PollRunLoop.h"
#include "linux/PosixFileManager.h"
#include "linux/TerminationSignals.h"
#include "peers/ProductStrings.h"
#include "peers/driver/ControlChannel.h"
#include "peers/driver/DriverSimulator.h"
#include "platform/Platform.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <exception>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <thread>

namespace {

using Words = std::vector<std::string>;

constexpr char kUsage[] = R"(Usage: kelvo-touch-driver-sim [run] [--connect NAME]...
       kelvo-touch-driver-sim COMMAND

Stands in for the driver of a touch display. "run" starts it in the foreground; it prints each message that the
settings pane sends as one line of JSON, and ends with Ctrl-C. The commands are for the one that runs:

  connect NAME      connect a display
  disconnect NAME   disconnect it
  enable, disable   switch the driver on or off
  show-tab N        have the pane show a tab (0 calibration, 1 touch, 2 hardware, 3 version)
  hang SECONDS      answer nothing for so long
  status            print what is connected

  --connect NAME    with "run": begin with this display connected
  --help            print this
)";

/// A number that is the whole of `text`; none when it is no number.
template <typename Number>
std::optional<Number> wholeNumber(const std::string& text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

/// Answers nothing for a while: the whole process stands still, as a driver that hangs does.
std::string hang(const std::string& secondsText) {
    constexpr double kLongest = 600.0;
    const auto seconds = wholeNumber<double>(secondsText);
    if (!seconds || !(*seconds > 0.0 && *seconds <= kLongest)) {
        throw std::runtime_error("\"hang\" takes a number of seconds, more than 0 and up to 600");
    }
    // Later, so that whoever gave the command still has its answer.
    platform::CFRunLoop::getCurrent().scheduleTimer(
        0.0, [duration = std::chrono::duration<double>(*seconds)] { std::this_thread::sleep_for(duration); });
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

/// The displays after each --connect.
Words displaysToConnect(const Words& words) {
    Words names;
    for (std::size_t i = 0; i < words.size(); i += 2) {
        if (words[i] != "--connect" || i + 1 == words.size()) {
            throw std::runtime_error("\"run\" takes only --connect NAME; see --help");
        }
        names.push_back(words[i + 1]);
    }
    return names;
}

int run(const Words& words) {
    const Words displays = displaysToConnect(words);
    kelvo::Journal journal("kelvo-touch-driver-sim");
    kelvo::PosixFileManager fileManager;
    kelvo::PlistCoder propertyLists;
    kelvo::ProductStrings strings;
    kelvo::PollRunLoop runLoop;
    kelvo::BusMessagePorts ports(runLoop);
    platform::Platform platform{.log = journal,
                                .fileManager = fileManager,
                                .propertyLists = propertyLists,
                                .bundles = strings,
                                .messagePorts = ports,
                                .runLoop = runLoop};
    platform::usePlatform(&platform);

    kelvo::DriverSimulator driver(printLine);
    const kelvo::TerminationSignals signals(runLoop, [&] { runLoop.stop(); });
    const auto control =
        kelvo::ControlChannel::open(runLoop, [&](const Words& command) { return resultOf(driver, command); });
    if (!control || !driver.start()) {
        throw std::runtime_error("the driver's place on the session bus cannot be had: another driver has it (end that "
                                 "one), or there is no bus (set DBUS_SESSION_BUS_ADDRESS)");
    }
    for (const std::string& name : displays) driver.connect(name);
    printLine(driver.status());
    runLoop.run();
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
        if (words.empty() || words[0] == "--connect") return run(words);
        if (words[0] == "run") return run(Words(words.begin() + 1, words.end()));
        return perform(words);
    } catch (const std::exception& error) {
        std::cerr << "kelvo-touch-driver-sim: " << error.what() << '\n';
        return 1;
    }
}
