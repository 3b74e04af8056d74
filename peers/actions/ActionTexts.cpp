#include "peers/actions/ActionTexts.h"

#include "TDUtilities.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kelvo {

namespace {

using touch::Direction;
using Kind = touch::Action::Kind;

/// A purpose that files can name, and its text if no language is available.
struct Purpose {
    std::string_view name;
    std::string_view text;
};
constexpr std::array kPurposes{
    Purpose{"AllWindows", "All windows"},
    Purpose{"Applications", "Applications"},
    Purpose{"ContextMenu", "Context menu"},
    Purpose{"Desktop", "Show the desktop"},
    Purpose{"NextPage", "Next page"},
    Purpose{"NextWindow", "Next window of the program"},
    Purpose{"NextWorkspace", "Next workspace"},
    Purpose{"Notifications", "Notifications"},
    Purpose{"Overview", "Overview"},
    Purpose{"PreviousPage", "Previous page"},
    Purpose{"PreviousWorkspace", "Previous workspace"},
    Purpose{"ProgramWindows", "Windows of the program"},
    Purpose{"Rotate", "Rotate"},
    Purpose{"Run", "Run a program"},
    Purpose{"Scroll", "Scroll"},
    Purpose{"Search", "Search"},
    Purpose{"UsualSize", "Usual size"},
    Purpose{"Workspaces", "Overview of the workspaces"},
    Purpose{"Zoom", "Zoom"},
};

std::string purposeText(const std::string& name) {
    const auto* const found = std::ranges::find(kPurposes, name, &Purpose::name);
    return found == kPurposes.end() ? "" : localizedString("Actions." + name, found->text);
}

/// A text with its "%@" filled in.
std::string filled(std::string text, const std::string& part) {
    const std::size_t place = text.find("%@");
    return place == std::string::npos ? text : text.replace(place, 2, part);
}

std::string fingersText(std::int32_t fingers) {
    if (fingers == 0) return localizedString("Actions.SameFingers", "the same fingers on a touchpad");
    return filled(localizedString("Actions.Fingers", "%@ fingers on a touchpad"), std::to_string(fingers));
}

std::string callText(const BusCall& call) {
    std::string text = call.service + " " + call.method;
    for (const platform::Value& argument : call.arguments) text += " \"" + argument.stringValue().value_or("") + "\"";
    return text;
}

std::string meansText(const DesktopAction& action) {
    switch (action.action.kind) {
    case Kind::Fingers:
        return fingersText(action.action.fingers);
    case Kind::Chord:
        return chordText(action.action);
    case Kind::RightClick:
        return localizedString("Actions.RightClick", "right click");
    case Kind::Call:
        return callText(action.call);
    case Kind::Nothing:
        break;
    }
    return localizedString("Actions.Nothing", "Nothing");
}

std::string wayText(std::string_view key, std::string_view name, const DesktopAction& action) {
    return localizedString(key, name) + ": " + textOf(action);
}

} // namespace

std::string chordText(const touch::Action& action) {
    std::string text;
    for (const std::int32_t key : action.keys) text.append(text.empty() ? "" : "+").append(touch::nameOfChordKey(key));
    return text;
}

std::string textOf(const DesktopAction& action) {
    const std::string means = meansText(action);
    const std::string purpose = action.action.kind == Kind::Nothing ? "" : purposeText(action.purpose);
    return purpose.empty() ? means : purpose + " (" + means + ")";
}

std::string textOf(const ActionsInForce& actions, touch::Gesture gesture) {
    const DesktopAction& left = actions.actionFor(gesture, Direction::Left);
    const DesktopAction& right = actions.actionFor(gesture, Direction::Right);
    if (!touch::hasWays(gesture) || textOf(left) == textOf(right)) return textOf(right);
    return wayText("Actions.Left", "left", left) + "; " + wayText("Actions.Right", "right", right);
}

} // namespace kelvo
