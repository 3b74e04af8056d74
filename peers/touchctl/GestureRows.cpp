#include "peers/touchctl/GestureRows.h"

#include "Properties/TDGesturesCellView.h"
#include "TDCurrentDevice.h"
#include "TDGestureCatalogue.h"
#include "TDNames.h"
#include "peers/touchctl/Settings.h"
#include "platform/SystemVersion.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

namespace kelvo::touchctl {

namespace {

using platform::NSMutableArray;
using platform::NSMutableDictionary;
using Row = std::shared_ptr<TDGesturesCellView>;

/// The first menu item is empty.
constexpr int kFirstActionItem = 1;

/// An alternative spelling for the only name that not every keyboard can type.
constexpr std::string_view kPlainAppExpose = "AppExpose";

template <typename Control>
Control& outletOf(TDGesturesCellView& row, std::string_view name) {
    for (const platform::NSOutlet& outlet : row.outlets()) {
        if (outlet.name == name) return dynamic_cast<Control&>(*std::get<platform::NSView*>(outlet.target));
    }
    throw std::logic_error("a gesture row has no " + std::string(name));
}

/// A row for each record, without a form; the rows still notify each other.
std::vector<Row> rowsOf(const NSMutableArray& list) {
    std::vector<Row> rows;
    for (std::size_t i = 0; i < list.count(); ++i) {
        rows.push_back(std::make_shared<TDGesturesCellView>());
        rows.back()->initCurrentStateWithActionInformation(list.objectAtIndex(i).dictionary());
    }
    return rows;
}

std::string nameOf(const Row& row) { return row->actionInfo().objectForKey(keys::name).string().value_or(""); }

std::vector<std::string> actionsOf(const Row& row) {
    const NSMutableArray descriptor = row->actionInfo().objectForKey(keys::descriptor).array();
    std::vector<std::string> actions;
    for (std::size_t i = 0; i < descriptor.count(); ++i) {
        actions.push_back(descriptor.objectAtIndex(i).string().value_or(""));
    }
    return actions;
}

std::string listed(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text.append(text.empty() ? "" : ", ").append(word);
    return text;
}

const Row& rowNamed(const std::vector<Row>& rows, const std::string& name) {
    const std::string_view wanted = name == kPlainAppExpose ? gestures::appExpose : std::string_view(name);
    const auto found = std::find_if(rows.begin(), rows.end(), [&](const Row& row) { return nameOf(row) == wanted; });
    if (found != rows.end()) return *found;
    std::vector<std::string> names;
    std::transform(rows.begin(), rows.end(), std::back_inserter(names), nameOf);
    throw Failure(Status::Usage, "there is no gesture \"" + name + "\"; the gestures are " + listed(names));
}

bool isSwitch(const std::string& deed) { return deed == "on" || deed == "off"; }

[[noreturn]] void refuse(const Row& row, const std::string& deed) {
    throw Failure(Status::Usage,
                  nameOf(row) + " can be on, off, or one of " + listed(actionsOf(row)) + ", not \"" + deed + "\"");
}

/// The menu item for the action among the arguments; none if they only switch the gesture.
std::optional<int> itemFor(const Row& row, const Words& deeds) {
    const std::string& action = deeds.back();
    if (deeds.size() == 1 && isSwitch(action)) return std::nullopt;
    const std::vector<std::string> actions = actionsOf(row);
    const auto found = std::find(actions.begin(), actions.end(), action);
    if (found == actions.end()) refuse(row, action);
    return static_cast<int>(found - actions.begin()) + kFirstActionItem;
}

} // namespace

NSMutableArray gestureListOf(const NSMutableDictionary& settings) {
    if (settings.objectForKey(keys::gestureArray)) {
        const auto profile = NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{settings.objectForKey(keys::gestureArray), keys::gestureArray}});
        (void)messagesOfProfile(profile);
        return profile.objectForKey(keys::gestureArray).array();
    }
    NSMutableArray catalogue = gestureCatalogueForVersion(platform::Gestalt(platform::gestaltSystemVersion));
    if (!catalogue) throw Failure(Status::Failure, "this system version has no gestures; check KELVO_SYSTEM_VERSION");
    return catalogue;
}

void changeGesture(const std::string& name, const Words& deeds) {
    const std::vector<Row> rows = rowsOf(gSettings);
    const Row& row = rowNamed(rows, name);
    // The switch and the action can each be given only once.
    if (deeds.size() > 1 && !isSwitch(deeds.front())) refuse(row, deeds[0] + " " + deeds[1]);
    const std::optional<int> item = itemFor(row, deeds);
    auto& menu = outletOf<platform::NSPopUpButton>(*row, "m_gestures");
    outletOf<platform::NSButton>(*row, "clickBtn").setState(deeds.front() == "off" ? 0 : 1);
    if (item) menu.selectItemAtIndex(*item);
    row->changeAction(menu);
}

} // namespace kelvo::touchctl
