#include "peers/touchctl/Actions.h"

#include "TDNames.h"
#include "linux/Journal.h"
#include "peers/JsonLine.h"
#include "peers/actions/ActionTexts.h"
#include "peers/driver/GestureTable.h"
#include "peers/touchctl/Displays.h"
#include "peers/touchctl/FileAccess.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iostream>
#include <optional>
#include <stdexcept>

namespace kelvo::touchctl {

namespace {

using platform::NSMutableArray;
using platform::NSMutableDictionary;
using platform::Value;
using touch::Direction;
using touch::Gesture;
using Kind = touch::Action::Kind;

// Showing

/// The named display, otherwise the first connected one, if any.
std::optional<Display> displayIn(const Words& words) {
    if (!words.empty()) return displayNamed(words[0]);
    const std::vector<Display> known = knownDisplays();
    if (known.empty() || !known.front().isConnected) return std::nullopt;
    return known.front();
}

std::string sourceText(const DesktopAction& action) {
    return action.file.empty() ? "built in" : shownPath(action.file);
}

std::string sourceText(const ActionsInForce& actions, Gesture gesture) {
    const std::string left = sourceText(actions.actionFor(gesture, Direction::Left));
    const std::string right = sourceText(actions.actionFor(gesture, Direction::Right));
    return !touch::hasWays(gesture) || left == right ? right : left + "; " + right;
}

std::string padded(const std::string& text, std::size_t width) {
    return text + std::string(width > text.size() ? width - text.size() : 0, ' ');
}

/// Pads by characters; only one name contains a character of two bytes.
std::string paddedName(const GestureRow& row, std::size_t width) {
    return padded(row.name, row.gesture == Gesture::AppExpose ? width + 1 : width);
}

void printRow(const GestureRow& row, const ActionsInForce& actions) {
    constexpr std::size_t kNameColumn = 20;
    constexpr std::size_t kFingersColumn = 42;
    std::cout << "  " << paddedName(row, kNameColumn) << (row.isOn ? "on   " : "off  ")
              << padded(row.fingers.empty() ? "-" : row.fingers, kFingersColumn) << textOf(actions, row.gesture) << " ["
              << sourceText(actions, row.gesture) << "]\n";
}

NSMutableDictionary jsonOf(const DesktopAction& action) {
    NSMutableDictionary line = storedFormOf(action);
    if (!action.purpose.empty()) line.setObjectForKey(action.purpose, "Purpose");
    line.setObjectForKey(textOf(action), "Text");
    line.setObjectForKey(action.file, "File");
    return line;
}

NSMutableDictionary jsonOf(const GestureRow& row, const ActionsInForce& actions) {
    auto line = NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{row.name, "gesture"}, {row.isOn, "on"}, {row.fingers, "fingers"}});
    if (touch::hasWays(row.gesture)) {
        line.setObjectForKey(jsonOf(actions.actionFor(row.gesture, Direction::Left)), "left");
        line.setObjectForKey(jsonOf(actions.actionFor(row.gesture, Direction::Right)), "right");
    } else {
        line.setObjectForKey(jsonOf(actions.actionFor(row.gesture, Direction::None)), "action");
    }
    return line;
}

std::string desktopText(const ActionsInForce& actions, const DesktopSession& session) {
    const std::string name = actions.desktop() == "Default" && !session.names.empty()
                                 ? session.names.front() + ", an unknown desktop"
                                 : actions.desktop();
    return (name == "Default" ? "an unknown desktop" : name) + (session.isWayland ? " (Wayland)" : " (X11)");
}

Status showActions(const Words& words, bool asJson) {
    const std::optional<Display> display = displayIn(words);
    const std::string name = display ? display->name : "";
    const DesktopSession session = currentDesktopSession();
    const ActionsInForce actions(session);
    const std::vector<GestureRow> rows = gestureTable(name, display ? settingsOf(name) : NSMutableDictionary());
    for (const std::string& complaint : actions.complaints()) {
        std::cerr << "kelvo-touchctl: note: " << withVisibleControlCharacters(complaint) << '\n';
    }
    if (asJson) {
        auto list = NSMutableArray::arrayWithObjects();
        for (const GestureRow& row : rows) list.addObject(jsonOf(row, actions));
        std::cout << jsonLine(NSMutableDictionary::dictionaryWithObjectsAndKeys(
                         {{name, "display"},
                          {actions.desktop(), "desktop"},
                          {session.isWayland ? "Wayland" : "X11", "session"},
                          {list, "gestures"}}))
                  << '\n';
        return Status::Success;
    }
    std::cout << (display ? withVisibleControlCharacters(name) : "any display") << " on "
              << withVisibleControlCharacters(desktopText(actions, session)) << '\n';
    for (const GestureRow& row : rows) printRow(row, actions);
    return Status::Success;
}

// Changing

[[noreturn]] void refuse(const std::string& reason) { throw Failure(Status::Usage, reason); }

Gesture gestureOf(const std::string& name) {
    const auto gesture = gestureWritten(name);
    if (gesture && *gesture != Gesture::ScrollDirection) return *gesture;
    std::string names;
    for (const std::string& each : namesOfActedGestures()) names += (names.empty() ? "" : ", ") + each;
    refuse("there is no gesture \"" + name + "\" with an action; the gestures are " + names);
}

std::string namesOfKeys() {
    std::string names;
    for (const touch::ChordKey& key : touch::kChordKeys) names.append(names.empty() ? "" : ", ").append(key.name);
    return names;
}

touch::Action chordOf(const std::string& text) {
    touch::Action chord{.kind = Kind::Chord};
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find('+', start), text.size());
        const std::string name = text.substr(start, end - start);
        const auto code = touch::codeOfChordKey(name);
        if (!code) refuse("there is no key \"" + name + "\"; the keys are " + namesOfKeys());
        if (!chord.keys.add(*code)) refuse("a shortcut has at most four keys");
        start = end + 1;
    }
    return chord;
}

/// An argument of a call in the syntax of dbus-send; without a type, it is a string.
Value argumentOf(const std::string& word) {
    const std::size_t colon = word.find(':');
    const std::string kind = word.substr(0, colon);
    const std::string text = colon == std::string::npos ? "" : word.substr(colon + 1);
    const auto number = [&](auto result) -> Value {
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), result);
        if (error != std::errc() || end != text.data() + text.size()) refuse("\"" + text + "\" is not of type " + kind);
        return result;
    };
    if (kind == "string" && colon != std::string::npos) return text;
    if (kind == "int32") return number(std::int32_t{});
    if (kind == "double") return number(double{});
    if (kind != "boolean") return word;
    if (text != "true" && text != "false") refuse("a boolean must be true or false");
    return text == "true";
}

BusCall callOf(const Words& words) {
    if (words.size() < 4) refuse("call takes SERVICE PATH INTERFACE METHOD and the arguments of the method");
    BusCall call{words[0], words[1], words[2], words[3], {}};
    std::transform(words.begin() + 4, words.end(), std::back_inserter(call.arguments), argumentOf);
    return call;
}

/// The action in the words after a gesture.
DesktopAction actionOf(const Words& words) {
    const std::string kind = words.empty() ? "" : words[0];
    DesktopAction action;
    const auto checkCount = [&](std::size_t most) {
        if (words.size() > most) refuse("unexpected argument \"" + words[most] + "\" after " + kind);
    };
    if (kind == "nothing" || kind == "right-click") {
        checkCount(1);
        action.action.kind = kind == "nothing" ? Kind::Nothing : Kind::RightClick;
    } else if (kind == "fingers") {
        checkCount(2);
        action.action.kind = Kind::Fingers;
        if (words.size() > 1) {
            const Value number = argumentOf("int32:" + words[1]);
            action.action.fingers = number.intValue();
        }
    } else if (kind == "keys") {
        checkCount(2);
        if (words.size() < 2) refuse("keys takes a keyboard shortcut, such as Control+Alt+Left");
        action.action = chordOf(words[1]);
    } else if (kind == "call") {
        action.action.kind = Kind::Call;
        action.call = callOf(Words(words.begin() + 1, words.end()));
    } else {
        refuse(
            "the action must be nothing, right-click, fingers [NUMBER], keys KEY+KEY, or call SERVICE PATH INTERFACE "
            "METHOD [ARGUMENT...], not \"" +
            kind + "\"");
    }
    return action;
}

/// Converts the action to its stored form, which is validated.
NSMutableDictionary checkedFormOf(const DesktopAction& action, Gesture gesture) {
    NSMutableDictionary stored = storedFormOf(action);
    try {
        (void)storedActionIn(stored, gesture);
    } catch (const std::runtime_error& error) {
        refuse(std::string(nameOf(gesture)) + " cannot do that: " + error.what());
    }
    return stored;
}

NSMutableDictionary userActions() {
    const StoredFile file = storedFileAt(userActionsPath());
    const std::string complaint = file.complaint();
    if (!complaint.empty()) {
        throw Failure(Status::Failure, shownPath(userActionsPath()) + " " + complaint + "; repair or remove it");
    }
    return file.contents ? file.contents : NSMutableDictionary::dictionary();
}

void writeUserActions(const NSMutableDictionary& contents, platform::NSFileManager& files) {
    const std::string path = userActionsPath();
    files.createDirectoryAtPath(path.substr(0, path.rfind('/')));
    const auto data = platform::PropertyLists::current().createXMLData(contents);
    if (data && files.writeAtomically(path, *data)) return;
    throw Failure(Status::Failure,
                  shownPath(path) + " cannot be written; check its permissions and the free disk space");
}

/// A section of the file, as opposed to the entry of a gesture.
bool isSection(const std::string& key, const Value& value) { return value.dictionary() && !gestureWritten(key); }

/// Removes the entries of a gesture, or of all gestures if none is given. With `withParts`, also removes
/// those inside its sections.
NSMutableDictionary without(const NSMutableDictionary& section, std::optional<Gesture> gesture, bool withParts) {
    auto rest = NSMutableDictionary::dictionary();
    for (const auto& [key, value] : section.entries()) {
        const auto named = gestureWritten(key);
        if (named && (!gesture || named == gesture)) continue;
        const bool isThinned = withParts && isSection(key, value);
        rest.setObjectForKey(isThinned ? Value(without(value.dictionary(), gesture, true)) : value, key);
    }
    return rest;
}

/// The user's actions for both directions, with the new action for one of them.
NSMutableDictionary withWay(const Value& stored, std::string_view way, const NSMutableDictionary& action) {
    const auto old = stored.dictionary();
    auto ways = NSMutableDictionary::dictionary();
    for (const std::string_view each : {kLeftKey, kRightKey}) {
        const Value kept = old.objectForKey("Kind") ? stored : old.objectForKey(each);
        ways.setObjectForKey(each == way ? Value(action) : kept, each);
    }
    return ways;
}

Status setAction(const Words& words, platform::NSFileManager& files) {
    if (words.empty()) refuse("set takes a GESTURE and an ACTION");
    const Gesture gesture = gestureOf(words[0]);
    Words rest(words.begin() + 1, words.end());
    std::string_view way;
    if (!rest.empty() && (rest[0] == "left" || rest[0] == "right")) {
        if (!touch::hasWays(gesture)) refuse(words[0] + " has no separate actions for left and right");
        way = rest[0] == "left" ? kLeftKey : kRightKey;
        rest.erase(rest.begin());
    }
    const NSMutableDictionary action = checkedFormOf(actionOf(rest), gesture);

    const std::string desktop = ActionsInForce(currentDesktopSession()).desktop();
    NSMutableDictionary contents = userActions();
    const NSMutableDictionary before = contents.objectForKey(desktop).dictionary();
    const std::string key(nameOf(gesture));
    NSMutableDictionary section = without(before, gesture, true);
    section.setObjectForKey(way.empty() ? action : withWay(before.objectForKey(key), way, action), key);
    contents.setObjectForKey(section, desktop);
    writeUserActions(contents, files);
    return Status::Success;
}

Status resetActions(const Words& words, platform::NSFileManager& files) {
    if (words.size() > 1) refuse("reset takes one GESTURE, or nothing to reset all");
    const auto gesture = words.empty() ? std::nullopt : std::optional(gestureOf(words[0]));
    const std::string desktop = ActionsInForce(currentDesktopSession()).desktop();
    NSMutableDictionary contents = without(userActions(), gesture, false);
    const auto section = contents.objectForKey(desktop).dictionary();
    if (section) contents.setObjectForKey(without(section, gesture, true), desktop);
    writeUserActions(contents, files);
    return Status::Success;
}

} // namespace

Status actions(const Invocation& invocation, platform::NSFileManager& files) {
    const Words& words = invocation.words;
    const bool asJson = invocation.has(kJsonOption);
    const bool changes = !words.empty() && (words[0] == "set" || words[0] == "reset");
    if (!changes) {
        if (words.size() > 1) refuse("actions takes one DEVICE, \"set\" or \"reset\"");
        return showActions(words, asJson);
    }
    if (asJson) refuse("--json works only when showing actions");
    const Words rest(words.begin() + 1, words.end());
    return words[0] == "set" ? setAction(rest, files) : resetActions(rest, files);
}

Words completionsOfActions(const Words& words) {
    if (words.empty()) {
        Words offered{"set", "reset"};
        for (const Display& display : knownDisplays()) offered.push_back(display.name);
        return offered;
    }
    if (words[0] != "set" && words[0] != "reset") return {};
    if (words.size() == 1) return namesOfActedGestures();
    if (words[0] == "reset") return {};
    const auto gesture = gestureWritten(words[1]);
    if (!gesture) return {};
    Words kinds{"nothing", "right-click", "fingers", "keys", "call"};
    if (words.size() == 2 && touch::hasWays(*gesture)) kinds.insert(kinds.begin(), {"left", "right"});
    const bool isKindNext = words.size() == 2 || (words.size() == 3 && (words[2] == "left" || words[2] == "right"));
    return isKindNext ? kinds : Words();
}

} // namespace kelvo::touchctl
