#include "peers/driver/DriverSimulator.h"

#include "peers/driver/SystemGestures.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <ctime>
#include <limits>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

using Words = ControlCommand::Words;

/// Parses all of `text` as a number; none if it is not a number.
template <typename Number>
std::optional<Number> wholeNumber(const std::string& text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

/// Does nothing, except react to signals that end the process.
void standStill(double seconds) {
    const double whole = std::floor(seconds);
    const timespec duration{static_cast<time_t>(whole), static_cast<long>((seconds - whole) * 1e9)};
    nanosleep(&duration, nullptr);
}

/// Does not answer for a while: the whole process stops, like a hung driver.
std::string hang(const std::string& secondsText) {
    constexpr double kLongest = 600.0;
    const auto seconds = wholeNumber<double>(secondsText);
    if (!seconds || !(*seconds > 0.0 && *seconds <= kLongest)) {
        throw std::runtime_error("\"hang\" takes a number of seconds greater than 0 and up to 600");
    }
    // Later, so that the sender of the command still gets its answer.
    platform::CFRunLoop::getCurrent().scheduleTimer(0.0, [duration = *seconds] { standStill(duration); });
    return "hanging for " + secondsText + " s";
}

/// The position along a side of the panel, from 0 to 1.
double partOfGlass(const std::string& text) {
    const auto part = wholeNumber<double>(text);
    if (!part || !(*part >= 0.0 && *part <= 1.0)) {
        throw std::runtime_error("the position of a finger is X,Y, two numbers from 0 to 1, such as 0.5,0.25");
    }
    return *part;
}

/// The finger for an argument "X,Y".
ContactFrame::Contact contactAt(const std::string& place, std::int32_t id) {
    const std::size_t comma = std::min(place.find(','), place.size());
    const std::string afterComma = place.substr(std::min(comma + 1, place.size()));
    return {id, partOfGlass(place.substr(0, comma)), partOfGlass(afterComma)};
}

} // namespace

DriverSimulator::DriverSimulator(std::function<void(const std::string&)> printLine)
    : printLine_(std::move(printLine)), core_(*this, printLine_, ownCommands()) {}

std::vector<ControlCommand> DriverSimulator::ownCommands() {
    return {
        {"connect", 1, 1,
         [this](const Words& words) {
             core_.connect(words[0]);
             return core_.status();
         }},
        {"disconnect", 1, 1,
         [this](const Words& words) {
             core_.disconnect(words[0]);
             return core_.status();
         }},
        {"show-tab", 1, 1,
         [this](const Words& words) {
             const auto index = wholeNumber<std::int64_t>(words[0]);
             if (!index) throw std::runtime_error("\"show-tab\" takes the number of a tab, 0 to 3");
             core_.showTab(*index);
             return core_.status();
         }},
        {"system-gesture", 2, 2,
         [this](const Words& words) {
             setSystemGesture(words[0], words[1]);
             core_.followOtherFiles();
             return systemGestureStates();
         }},
        {"hang", 1, 1, [](const Words& words) { return hang(words[0]); }},
        {"contacts", 1, std::numeric_limits<std::size_t>::max(),
         [this](const Words& words) {
             layFingers(words[0], Words(words.begin() + 1, words.end()));
             return core_.status();
         }},
    };
}

/// A frame with a finger at each position, starting with contact 1.
void DriverSimulator::layFingers(const std::string& name, const Words& places) {
    if (!core_.isConnected(name)) throw std::runtime_error("\"" + name + "\" is not connected; see \"status\"");
    std::vector<ContactFrame::Contact> contacts;
    for (const std::string& place : places) {
        contacts.push_back(contactAt(place, static_cast<std::int32_t>(contacts.size()) + 1));
    }
    SimulatedDisplay& display = *displays_.at(name);
    if (!display.hasFingers()) core_.followOtherFiles();
    const ContactFrame frame = display.frameOf(std::move(contacts));
    core_.sendFrame(name, frame);
    display.see(frame);
}

void DriverSimulator::setSettings(const std::string& name, const touch::Settings& settings) {
    auto& display = displays_[name];
    if (!display) {
        display = std::make_unique<SimulatedDisplay>(name, printLine_);
        display->setGiving(isDriverEnabled_);
    }
    display->setSettings(settings);
}

void DriverSimulator::forget(const std::string& name) { displays_.erase(name); }

void DriverSimulator::setDriverEnabled(bool isEnabled) {
    isDriverEnabled_ = isEnabled;
    for (const auto& [name, display] : displays_) display->setGiving(isEnabled);
}

/// A display can be watched only while the driver is on.
void DriverSimulator::setWatched(const std::string& name, bool isWatched) {
    displays_.at(name)->setGiving(!isWatched && isDriverEnabled_);
}

void DriverSimulator::beginRecording(const std::string& /*name*/, const std::string& /*path*/) {
    throw std::runtime_error("a simulated display has no fingers to record");
}

void DriverSimulator::endRecording(const std::string& name) {
    throw std::runtime_error("\"" + name + "\" is not being recorded");
}

} // namespace kelvo
