#include "peers/touchctl/GestureRules.h"

#include "TDGestureCatalogue.h"
#include "TDNames.h"
#include "platform/SystemVersion.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>

namespace kelvo::touchctl {

namespace {

using platform::NSMutableArray;
using platform::NSMutableDictionary;

/// The actions of each gesture.
using Actions = std::map<std::string, std::set<std::string>>;

std::string nameOf(const NSMutableDictionary& record) { return record.objectForKey(keys::name).string().value_or(""); }

std::vector<std::string> actionsOf(const NSMutableDictionary& record) {
    const NSMutableArray descriptor = record.objectForKey(keys::descriptor).array();
    std::vector<std::string> actions;
    for (const platform::Value& action : descriptor.objects()) actions.push_back(action.string().value_or(""));
    return actions;
}

void add(Actions& known, const NSMutableArray& list) {
    for (const platform::Value& element : list.objects()) {
        const NSMutableDictionary record = element.dictionary();
        for (const std::string& action : actionsOf(record)) known[nameOf(record)].insert(action);
    }
}

NSMutableDictionary recordOf(const NSMutableArray& list, std::string_view name) {
    for (const platform::Value& element : list.objects()) {
        if (nameOf(element.dictionary()) == name) return element.dictionary();
    }
    return {};
}

std::size_t indexOf(const NSMutableDictionary& record) {
    return static_cast<std::size_t>(record.objectForKey(keys::selectedIndex).longLongValue());
}

bool isOn(const NSMutableDictionary& record) { return record.objectForKey(keys::isEnable).boolValue(); }

bool takesThreeFingers(const NSMutableDictionary& record) {
    const std::vector<std::string> actions = actionsOf(record);
    if (indexOf(record) >= actions.size()) return false;
    const std::string& action = actions[indexOf(record)];
    return action == gestures::swipeWithThreeFingers || action == gestures::swipeWithTwoOrThreeFingers ||
           action == gestures::swipeLeftOrRightWithThreeFingers;
}

/// Pages move full screen to its second action, which has four fingers. Full screen moves pages to their first one, and
/// switches them off if that also has three fingers.
bool doPagesAndFullScreenCollide(const NSMutableArray& list) {
    const NSMutableDictionary pages = recordOf(list, gestures::swipeBetweenPages);
    const NSMutableDictionary fullScreen = recordOf(list, gestures::fullScreenApps);
    if (!takesThreeFingers(pages) || !takesThreeFingers(fullScreen)) return false;
    const bool canFullScreenMove = actionsOf(fullScreen).size() > 1;
    const bool wereMadeWay = indexOf(pages) == 0 && !isOn(pages);
    return canFullScreenMove && !wereMadeWay;
}

/// Each follows the other if it has an action at the same position.
bool doMissionControlAndExposeDiffer(const NSMutableArray& list) {
    const NSMutableDictionary control = recordOf(list, gestures::missionControl);
    const NSMutableDictionary expose = recordOf(list, gestures::appExpose);
    return indexOf(control) != indexOf(expose) && indexOf(control) < actionsOf(expose).size() &&
           indexOf(expose) < actionsOf(control).size();
}

} // namespace

std::vector<std::string> odditiesOf(const NSMutableArray& list, const NSMutableArray& stored) {
    Actions known;
    add(known, gestureCatalogueForVersion(platform::Gestalt(platform::gestaltSystemVersion)));
    add(known, stored);

    std::vector<std::string> oddities;
    std::set<std::string> seen;
    for (const platform::Value& element : list.objects()) {
        const std::string name = nameOf(element.dictionary());
        if (!seen.insert(name).second) oddities.push_back("duplicate gesture \"" + name + "\"");
        const auto gesture = known.find(name);
        if (gesture == known.end()) {
            oddities.push_back("unknown gesture \"" + name + "\"");
            continue;
        }
        std::set<std::string> actions;
        for (const std::string& action : actionsOf(element.dictionary())) {
            const std::string title = std::string("action \"").append(action).append("\" of ").append(name);
            if (!actions.insert(action).second) oddities.push_back("duplicate " + title);
            if (!gesture->second.contains(action)) oddities.push_back("unknown " + title);
        }
    }
    if (doPagesAndFullScreenCollide(list)) {
        oddities.emplace_back("SwipeBetweenPages and FullScreenApps both use three fingers");
    }
    if (doMissionControlAndExposeDiffer(list)) {
        oddities.emplace_back("MissionControl and AppExpos\u00e9 do not use the same number of fingers");
    }
    return oddities;
}

} // namespace kelvo::touchctl
