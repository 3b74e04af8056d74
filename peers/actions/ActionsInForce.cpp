#include "peers/actions/ActionsInForce.h"

#include "TDUtilities.h"
#include "platform/Files.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <utility>

namespace kelvo {

namespace {

using platform::NSFileManager;
using platform::NSMutableDictionary;
using touch::Direction;
using touch::Gesture;

constexpr std::string_view kDefaultDesktop = "Default";

std::string fileIn(const std::string& folder, const std::string& desktop) { return folder + "/" + desktop + ".plist"; }

/// The folders of the product and of the administrator, in this order.
std::vector<std::string> folders() {
    return {NSFileManager::defaultManager().localLibraryDirectory() + "/Application Support/KelvoTouchDisplay/Actions",
            getSystemPreferenceFolderPath() + "/Actions"};
}

/// The first name of the session for which a file exists.
std::string desktopOf(const DesktopSession& session) {
    for (const std::string& name : session.names) {
        for (const std::string& folder : folders()) {
            if (NSFileManager::defaultManager().fileExistsAtPath(fileIn(folder, name))) return name;
        }
    }
    return std::string(kDefaultDesktop);
}

/// The names of the sections that apply to this session, the more specific ones later.
std::vector<std::string> sectionsOf(const DesktopSession& session, const std::string& desktop) {
    std::vector<std::string> sections{desktop};
    if (!session.version.empty()) sections.push_back("Version " + session.version);
    sections.emplace_back(session.isWayland ? "Wayland" : "X11");
    return sections;
}

/// The purposes of built-in actions that do the same on every desktop.
std::string_view purposeOf(Gesture gesture, Direction direction) {
    switch (gesture) {
    case Gesture::SecondaryClick:
        return "ContextMenu";
    case Gesture::LookUp:
        return "Search";
    case Gesture::Scroll:
        return "Scroll";
    case Gesture::ZoomInOrOut:
        return "Zoom";
    case Gesture::SmartZoom:
        return "UsualSize";
    case Gesture::Rotate:
        return "Rotate";
    case Gesture::SwipeBetweenPages:
        return direction == Direction::Left ? "NextPage" : "PreviousPage";
    case Gesture::NotificationCenter:
        return "Notifications";
    case Gesture::ScrollDirection:
    case Gesture::FullScreenApps:
    case Gesture::MissionControl:
    case Gesture::AppExpose:
    case Gesture::Launchpad:
    case Gesture::ShowDesktop:
        break;
    }
    return "";
}

DesktopAction ownAction(const touch::ActionTable& table, Gesture gesture, Direction direction) {
    return {table.actionFor(gesture, direction), {}, std::string(purposeOf(gesture, direction)), ""};
}

bool isSectionName(const std::string& name) {
    return name == "X11" || name == "Wayland" || name.starts_with("Version ");
}

} // namespace

ActionsInForce::ActionsInForce() : desktop_(kDefaultDesktop) {
    const touch::ActionTable table;
    for (std::size_t i = 0; i < touch::kGestureCount; ++i) {
        const auto gesture = static_cast<Gesture>(i);
        ways_[i] = {ownAction(table, gesture, Direction::Left), ownAction(table, gesture, Direction::None)};
    }
}

ActionsInForce::ActionsInForce(const DesktopSession& session) : ActionsInForce() {
    desktop_ = desktopOf(session);
    const std::vector<std::string> sections = sectionsOf(session, desktop_);
    for (const std::string& folder : folders()) takeFile(fileIn(folder, desktop_), sections);
    takeFile(userActionsPath(), sections);
}

const DesktopAction& ActionsInForce::actionFor(Gesture gesture, Direction direction) const {
    const Ways& ways = ways_[static_cast<std::size_t>(gesture)];
    return direction == Direction::Left ? ways.left : ways.other;
}

touch::ActionTable ActionsInForce::table() const {
    touch::ActionTable table;
    for (std::size_t i = 0; i < touch::kGestureCount; ++i) {
        const auto gesture = static_cast<Gesture>(i);
        table.set(gesture, ways_[i].other.action);
        table.set(gesture, Direction::Left, ways_[i].left.action);
    }
    return table;
}

void ActionsInForce::set(Gesture gesture, const DesktopAction& action) {
    ways_[static_cast<std::size_t>(gesture)] = {action, action};
}

void ActionsInForce::takeFile(const std::string& path, const std::vector<std::string>& sections) {
    if (!NSFileManager::defaultManager().fileExistsAtPath(path)) return;
    const auto file = NSMutableDictionary::dictionaryWithContentsOfFile(path);
    if (!file) {
        complaints_.push_back(path + " cannot be read as a property list; repair or remove it");
        return;
    }
    takeSection(file, path, sections);
}

/// First the general entries, then the sections for this session, which can have sections of their own.
void ActionsInForce::takeSection(const NSMutableDictionary& section, const std::string& path,
                                 const std::vector<std::string>& sections) {
    for (const auto& [name, value] : section.entries()) {
        if (const auto gesture = gestureWritten(name)) {
            takeGesture(*gesture, value, path);
            continue;
        }
        const auto inner = value.dictionary();
        const bool isPart = isSectionName(name) || std::ranges::find(sections, name) != sections.end();
        if (inner && (isPart || !inner.objectForKey("Kind"))) continue;
        complaints_.push_back(std::string(path).append(": there is no gesture \"").append(name).append("\""));
    }
    for (std::size_t i = 0; i < sections.size(); ++i) {
        const auto inner = section.objectForKey(sections[i]).dictionary();
        const std::vector<std::string> further(sections.begin() + static_cast<std::ptrdiff_t>(i) + 1, sections.end());
        if (inner) takeSection(inner, path, further);
    }
}

void ActionsInForce::takeGesture(Gesture gesture, const platform::Value& stored, const std::string& path) {
    Ways& ways = ways_[static_cast<std::size_t>(gesture)];
    const auto takeOne = [&](const platform::Value& value) {
        DesktopAction action = storedActionIn(value, gesture);
        action.file = path;
        return action;
    };
    try {
        const auto both = stored.dictionary();
        const platform::Value left = both.objectForKey(kLeftKey);
        const platform::Value right = both.objectForKey(kRightKey);
        if (!left && !right) return set(gesture, takeOne(stored));
        if (!touch::hasWays(gesture)) throw std::runtime_error("it has no separate actions for left and right");
        Ways taken = ways;
        if (left) taken.left = takeOne(left);
        if (right) taken.other = takeOne(right);
        ways = taken;
    } catch (const std::runtime_error& error) {
        complaints_.push_back(path + ": " + std::string(nameOf(gesture)) + ": " + error.what());
    }
}

std::vector<std::optional<platform::NSDate>> actionFileDates(const DesktopSession& session) {
    std::vector<std::string> names = session.names;
    names.emplace_back(kDefaultDesktop);
    std::vector<std::optional<platform::NSDate>> dates;
    NSFileManager& files = NSFileManager::defaultManager();
    for (const std::string& folder : folders()) {
        for (const std::string& name : names) dates.push_back(files.modificationDateAtPath(fileIn(folder, name)));
    }
    dates.push_back(files.modificationDateAtPath(userActionsPath()));
    return dates;
}

std::optional<Gesture> gestureWritten(std::string_view name) {
    return name == "AppExpose" ? Gesture::AppExpose : touch::gestureNamed(name);
}

std::string userActionsPath() { return getPreferenceFolderPath() + "/Actions.plist"; }

} // namespace kelvo
