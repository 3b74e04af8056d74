#include "peers/status-bar/StatusMenu.h"

#include "TDNames.h"
#include "TDUtilities.h"

#include <utility>

namespace kelvo {

namespace {

/// Every text of the menu.
namespace texts {
constexpr const char* tabs[] = {"Calibration", "Touch and Gestures", "Display", "Version"};
constexpr char driver[] = "Driver";
constexpr char driverIsOn[] = "Driver: on";
constexpr char driverIsOff[] = "Driver: off";
constexpr char driverNotRunning[] = ", not running";
constexpr char driverNotAnswering[] = ", not answering";
constexpr char driverAnswering[] = ", answering";
constexpr char quit[] = "Quit";
} // namespace texts

std::string titleOf(PortAnswer answer) {
    switch (answer) {
    case PortAnswer::NotRunning:
        return texts::driverNotRunning;
    case PortAnswer::NotAnswering:
        return texts::driverNotAnswering;
    case PortAnswer::Answering:
        break;
    }
    return texts::driverAnswering;
}

/// As the pane reads the flag: one that is missing is false.
std::string driverSwitchTitle() {
    return readUtilitiesDictionary().objectForKey(keys::driverEnable).boolValue() ? texts::driverIsOn
                                                                                  : texts::driverIsOff;
}

} // namespace

StatusMenu::StatusMenu(Deeds deeds) : deeds_(std::move(deeds)), driverTitle_(texts::driver) {}

std::vector<StatusMenu::Item> StatusMenu::items() const {
    const Item separator;
    std::vector<Item> items;
    std::int32_t tab = 0;
    for (const char* title : texts::tabs) {
        items.push_back({title, [this, tab] { deeds_.openPaneAtTab(tab); }});
        ++tab;
    }
    items.push_back(separator);
    items.push_back({driverTitle_, nullptr});
    items.push_back(separator);
    items.push_back({texts::quit, deeds_.quit});
    return items;
}

void StatusMenu::open(const std::function<void()>& changed) {
    const std::string switchTitle = driverSwitchTitle();
    driverTitle_ = switchTitle;
    changed();
    deeds_.askDriver([this, switchTitle, changed](PortAnswer answer) {
        driverTitle_ = switchTitle + titleOf(answer);
        changed();
    });
}

} // namespace kelvo
