#include "tests/touch/Script.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <set>
#include <sstream>
#include <stdexcept>

namespace touching {

namespace {

using touch::GestureRecord;

std::string number(double value) {
    const double rounded = std::round(value * 10.0) / 10.0;
    std::ostringstream text;
    text << (rounded == 0.0 ? 0.0 : rounded);
    return text.str();
}

std::string milliseconds(touch::Time time) { return number(static_cast<double>(time.count()) / 1000.0); }

touch::Time timeOf(double milliseconds) {
    return touch::Time(static_cast<std::int64_t>(std::llround(milliseconds * 1000.0)));
}

double readNumber(const std::string& text) {
    std::size_t end = 0;
    const double value = std::stod(text, &end);
    if (end != text.size()) throw std::invalid_argument("no number: " + text);
    return value;
}

touch::Contact readContact(const std::string& word) {
    const std::size_t at = word.find('@');
    const std::size_t comma = word.find(',');
    const bool isPalm = word.ends_with("p");
    const std::string y = word.substr(comma + 1, word.size() - comma - 1 - (isPalm ? 1 : 0));
    return {std::stoi(word.substr(0, at)), {readNumber(word.substr(at + 1, comma - at - 1)), readNumber(y)}, isPalm};
}

/// "MILLISECONDS: WORDS"
struct ScriptLine {
    touch::Time time;
    std::vector<std::string> words;
};

std::vector<ScriptLine> readScript(std::string_view script) {
    std::vector<ScriptLine> found;
    std::istringstream text{std::string(script)};
    for (std::string line; std::getline(text, line);) {
        std::istringstream words(line);
        std::string first;
        if (!(words >> first)) continue;
        if (!first.ends_with(":")) throw std::invalid_argument("no time: " + line);
        ScriptLine& read = found.emplace_back();
        read.time = timeOf(readNumber(first.substr(0, first.size() - 1)));
        for (std::string word; words >> word;) read.words.push_back(word);
    }
    return found;
}

void runUntilQuiet(touch::TouchDisplay& display) {
    for (int i = 0; i < 100'000; ++i) {
        const auto due = display.deadline();
        if (!due) return;
        display.timeout(*due);
    }
    ADD_FAILURE() << "timers never end";
}

std::string stepText(const touch::Output& output, touch::Size screen) {
    using Kind = touch::Output::Kind;
    const std::string name = std::to_string(output.number);
    const std::string onScreen = number(output.at.x * screen.width) + "," + number(output.at.y * screen.height);
    const std::string onPad = number(output.at.x - touch::thresholds::kPad.width / 2.0) + "," +
                              number(output.at.y - touch::thresholds::kPad.height / 2.0);
    const std::string button = output.button() == touch::Button::Left ? "left" : "right";
    std::string gesture(nameOf(output.gesture));
    if (output.direction != touch::Direction::None) gesture.append(" ").append(nameOf(output.direction));
    switch (output.kind) {
    case Kind::TouchDown:
        return "+" + name + " " + onScreen;
    case Kind::TouchMove:
        return "~" + name + " " + onScreen;
    case Kind::TouchUp:
    case Kind::PadUp:
        return "-" + name;
    case Kind::TouchCancel:
        return "x" + name;
    case Kind::PointerMove:
        return onScreen;
    case Kind::ButtonDown:
        return "+" + button;
    case Kind::ButtonUp:
        return "-" + button;
    case Kind::PadDown:
        return "+" + name + " " + onPad;
    case Kind::PadMove:
        return "~" + name + " " + onPad;
    case Kind::KeyDown:
        return "+" + name;
    case Kind::KeyUp:
        return "-" + name;
    case Kind::GestureBegin:
        return gesture + " begins";
    case Kind::GestureEnd:
        return gesture + " ends";
    case Kind::Call:
        return gesture + " calls";
    }
    return {};
}

std::string deviceText(touch::Road road) {
    switch (road) {
    case touch::Road::TouchScreen:
        return "touch";
    case touch::Road::Pointer:
        return "pointer";
    case touch::Road::Touchpad:
        return "pad";
    case touch::Road::Keyboard:
        return "key";
    case touch::Road::Listener:
        return "gesture";
    }
    return {};
}

GestureRecord record(std::string name, std::vector<std::string> descriptor) {
    return {.name = std::move(name), .descriptor = std::move(descriptor)};
}

} // namespace

std::vector<GestureRecord> snowLeopardGestures() {
    return {record("SecondaryClick", {"ClickOrTapWithTwoFingers"}),
            record("Scroll", {"ScrollWithTwoFingers"}),
            record("ScrollDirection", {"ContentTracksFingerMovement"}),
            record("ZoomInOrOut", {"PinchWithTwoFingers"}),
            record("Rotate", {"RotateWithTwoFingers"}),
            record("SwipeBetweenPages", {"SwipeWithThreeFingers"}),
            record("FullScreenApps", {"SwipeLeftOrRightWithFourFingers"}),
            record("AppExpos\u00e9", {"SwipeDownWithFourFingers"}),
            record("ShowDesktop", {"SwipeUpWithFourFingers"})};
}

std::vector<GestureRecord> lionGestures() {
    return {record("SecondaryClick", {"ClickOrTapWithTwoFingers"}),
            record("LookUp", {"TapWithThreeFingers"}),
            record("ScrollDirection", {"ContentTracksFingerMovement"}),
            record("ZoomInOrOut", {"PinchWithTwoFingers"}),
            record("SmartZoom", {"DoubleTapWithTwoFingers"}),
            record("Rotate", {"RotateWithTwoFingers"}),
            record("SwipeBetweenPages",
                   {"ScrollLeftOrRightWithTwoFingers", "SwipeWithThreeFingers", "SwipeWithTwoOrThreeFingers"}),
            record("FullScreenApps", {"SwipeLeftOrRightWithThreeFingers", "SwipeLeftOrRightWithFourFingers"}),
            record("MissionControl", {"SwipeUpWithThreeFingers", "SwipeUpWithFourFingers"}),
            record("AppExpos\u00e9", {"SwipeDownWithThreeFingers", "SwipeDownWithFourFingers"}),
            record("Launchpad", {"PinchWithThumbAndThreeFingers"}),
            record("ShowDesktop", {"SpreadWithThumbAndThreeFingers"})};
}

std::vector<GestureRecord> newestGestures() {
    auto gestures = lionGestures();
    gestures.insert(gestures.begin() + 8, record("NotificationCenter", {"SwipeLeftFromTheRightEdgeWithTwoFingers"}));
    return gestures;
}

Stage::Stage() { settings.gestures = newestGestures(); }

GestureRecord& Stage::record(std::string_view name) {
    const auto found = std::find_if(settings.gestures.begin(), settings.gestures.end(),
                                    [&](const GestureRecord& each) { return each.name == name; });
    if (found == settings.gestures.end()) throw std::invalid_argument("no record " + std::string(name));
    return *found;
}

void Stage::choose(std::string_view name, std::string_view action) {
    GestureRecord& chosen = record(name);
    const auto found = std::find(chosen.descriptor.begin(), chosen.descriptor.end(), action);
    if (found == chosen.descriptor.end()) throw std::invalid_argument("no action " + std::string(action));
    chosen.selectedIndex = found - chosen.descriptor.begin();
}

void Transcript::give(const touch::Output& output, touch::Time now) {
    if (!isInFrame_) text_ += milliseconds(now) + " " + deviceText(roadOf(output.kind));
    text_ += " " + stepText(output, screen_);
    isInFrame_ = !output.endsFrame;
    if (output.endsFrame) text_ += "\n";
}

void Transcript::fault(touch::Fault fault) {
    ADD_FAILURE() << nameOf(fault) << " after\n" << text_;
    text_ += "FAULT: " + std::string(nameOf(fault)) + "\n";
}

std::string play(const Stage& stage, std::string_view fingers) {
    const touch::Mapping mapping(stage.glass, stage.settings, stage.desktop);
    Transcript transcript(mapping.handSize());
    touch::TouchDisplay display(stage.glass, transcript, [&](touch::Fault fault) { transcript.fault(fault); });
    display.setSettings(stage.settings);
    display.setDesktop(stage.desktop);
    for (const ScriptLine& line : readScript(fingers)) {
        if (line.words == std::vector<std::string>{"off"} || line.words == std::vector<std::string>{"on"}) {
            display.timeout(line.time);
            display.setEnabled(line.words[0] == "on", line.time);
            continue;
        }
        if (line.words == std::vector<std::string>{"reached"}) {
            display.reachedDesktop(line.time);
            continue;
        }
        touch::Frame frame{.time = line.time, .contacts = {}};
        for (const std::string& word : line.words) {
            if (word != "-") frame.contacts.add(readContact(word));
        }
        display.frame(frame);
    }
    runUntilQuiet(display);
    return transcript.text();
}

std::string only(std::string_view devices, const std::string& output) {
    std::set<std::string> wanted;
    std::istringstream words{std::string(devices)};
    for (std::string word; words >> word;) wanted.insert(word);
    std::string found;
    std::istringstream text(output);
    for (std::string line; std::getline(text, line);) {
        std::istringstream parts(line);
        std::string time;
        std::string device;
        parts >> time >> device;
        if (wanted.contains(device)) found += line + "\n";
    }
    return found;
}

std::string gesturesIn(const std::string& output) {
    std::string found;
    std::istringstream text(output);
    for (std::string line; std::getline(text, line);) {
        const std::size_t begin = line.find(" gesture ");
        if (begin == std::string::npos || !line.ends_with(" begins")) continue;
        const std::size_t name = begin + std::string_view(" gesture ").size();
        if (!found.empty()) found += ", ";
        found += line.substr(name, line.size() - name - std::string_view(" begins").size());
    }
    return found;
}

std::string lines(std::string_view text) {
    std::string found;
    std::istringstream input{std::string(text)};
    for (std::string line; std::getline(input, line);) {
        const std::size_t begin = line.find_first_not_of(' ');
        if (begin != std::string::npos) found += line.substr(begin) + "\n";
    }
    return found;
}

std::string strokes(const std::vector<Stroke>& fingers, double step) {
    const auto placeAt = [](const Stroke& stroke, double time) {
        const double from = stroke.movesFrom < 0.0 ? stroke.landsAt : stroke.movesFrom;
        const double to = stroke.movesTo < 0.0 ? stroke.liftsAt - 1.0 : stroke.movesTo;
        const double share = to <= from ? 1.0 : std::clamp((time - from) / (to - from), 0.0, 1.0);
        return stroke.from + (stroke.to - stroke.from) * share;
    };
    std::set<double> times;
    double end = 0.0;
    for (const Stroke& stroke : fingers) {
        times.insert({stroke.landsAt, stroke.liftsAt, stroke.movesTo < 0.0 ? stroke.liftsAt - 1.0 : stroke.movesTo});
        end = std::max(end, stroke.liftsAt);
    }
    for (double time = 0.0; time < end; time += step) times.insert(time);
    std::ostringstream script;
    script.precision(10);
    for (const double time : times) {
        script << time << ":";
        bool isAnyDown = false;
        for (std::size_t i = 0; i < fingers.size(); ++i) {
            if (time < fingers[i].landsAt || time >= fingers[i].liftsAt) continue;
            const touch::Point place = placeAt(fingers[i], time);
            script << " " << i + 1 << "@" << place.x << "," << place.y;
            isAnyDown = true;
        }
        script << (isAnyDown ? "\n" : " -\n");
    }
    return script.str();
}

} // namespace touching
