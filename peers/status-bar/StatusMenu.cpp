#include "peers/status-bar/StatusMenu.h"

#include "TDNames.h"
#include "TDUtilities.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace kelvo {

namespace {

constexpr double kNextLookSeconds = 10.0;

/// A text of the pane's bundle, and what stands for it where that is not installed.
struct Text {
    std::string_view key;
    std::string_view english;

    operator std::string() const { return localizedString(key, english); }
};

/// Every text of the menu.
namespace texts {
constexpr Text tabs[] = {{"Tab.Calibration", "Calibration"},
                         {"Tab.Settings", "Touch and gestures"},
                         {"Tab.HardwareInformation", "Rotation"},
                         {"Tab.Version", "Version"}};
constexpr Text driver{"Menu.Driver", "Driver"};
constexpr Text driverIsOn{"Menu.Driver.On", "Driver: on"};
constexpr Text driverIsOff{"Menu.Driver.Off", "Driver: off"};
constexpr Text onNotRunning{"Menu.Driver.On.NotRunning", "Driver: on, not running"};
constexpr Text onNotAnswering{"Menu.Driver.On.NotAnswering", "Driver: on, not responding"};
constexpr Text onAnswering{"Menu.Driver.On.Answering", "Driver: on, responding"};
constexpr Text offNotRunning{"Menu.Driver.Off.NotRunning", "Driver: off, not running"};
constexpr Text offNotAnswering{"Menu.Driver.Off.NotAnswering", "Driver: off, not responding"};
constexpr Text offAnswering{"Menu.Driver.Off.Answering", "Driver: off, responding"};
constexpr Text startDriver{"Menu.Driver.Start", "Changes have no effect. Start the driver or log in again."};
constexpr Text restartDriver{"Menu.Driver.Restart", "Changes have no effect. Restart the driver or this computer."};
constexpr Text switchDriverOn{"Menu.Driver.SwitchOn", "Settings are not available. Enable the driver."};
constexpr Text enableDriver{"Menu.Driver.Enable", "Enable driver"};
constexpr Text gestures{"Menu.Gestures", "What gestures do"};
constexpr Text calibrate{"CalibrationTool.Title", "Calibrate touchscreen"};
constexpr Text quit{"Menu.Quit", "Quit"};
} // namespace texts

/// As the pane reads the flag: one that is missing is false.
bool isDriverOnIn(const platform::NSMutableDictionary& utilities) {
    return utilities.objectForKey(keys::driverEnable).boolValue();
}

/// The display whose settings the window shows; empty while there is none.
std::string currentDisplayIn(const platform::NSMutableDictionary& utilities) {
    const platform::Value name = utilities.objectForKey(keys::selectDeviceName);
    const platform::NSMutableArray connected = utilities.objectForKey(keys::currentDeviceType).array();
    const bool isConnected =
        std::ranges::any_of(connected.objects(), [&](const auto& each) { return each.isEqual(name); });
    return isConnected ? name.stringValue().value_or("") : std::string();
}

Text titleOf(bool isOn, PortAnswer answer) {
    switch (answer) {
    case PortAnswer::NotRunning:
        return isOn ? texts::onNotRunning : texts::offNotRunning;
    case PortAnswer::NotAnswering:
        return isOn ? texts::onNotAnswering : texts::offNotAnswering;
    case PortAnswer::Answering:
        break;
    }
    return isOn ? texts::onAnswering : texts::offAnswering;
}

std::string adviceFor(bool isOn, PortAnswer answer) {
    if (answer == PortAnswer::NotRunning) return texts::startDriver;
    if (answer == PortAnswer::NotAnswering) return texts::restartDriver;
    return isOn ? std::string() : texts::switchDriverOn;
}

} // namespace

StatusMenu::StatusMenu(Deeds deeds) : deeds_(std::move(deeds)), driverTitle_(texts::driver) {}

StatusMenu::~StatusMenu() {
    if (nextLook_) nextLook_->invalidate();
}

std::vector<StatusMenu::Item> StatusMenu::items() {
    const Item separator{"", nullptr, true};
    std::vector<Item> items{{displayName_, nullptr, false, !displayName_.empty()}};
    std::int32_t tab = 0;
    for (const Text& title : texts::tabs) {
        items.push_back({title, [this, tab] { deeds_.openPaneAtTab(tab); }});
        ++tab;
    }
    items.push_back(separator);
    items.push_back({driverTitle_, nullptr});
    items.push_back({advice_, nullptr, false, !advice_.empty()});
    items.push_back({.title = texts::enableDriver,
                     .choose = [this] { deeds_.switchDriver(!isDriverOn_, [this] { refresh(); }); },
                     .isTicked = isDriverOn_,
                     .isOffered = isDriverThere_});
    items.push_back({texts::gestures, deeds_.showGestures});
    items.push_back({texts::calibrate, deeds_.calibrate});
    items.push_back(separator);
    items.push_back({texts::quit, deeds_.quit});
    return items;
}

void StatusMenu::open(std::function<void()> changed) {
    changed_ = std::move(changed);
    deeds_.watchDriver();
    refresh();
}

void StatusMenu::refresh() {
    if (!changed_) return;
    if (nextLook_) nextLook_->invalidate();
    const platform::NSMutableDictionary utilities = readUtilitiesDictionary();
    displayName_ = currentDisplayIn(utilities);
    isDriverOn_ = isDriverOnIn(utilities);
    driverTitle_ = isDriverOn_ ? texts::driverIsOn : texts::driverIsOff;
    changed_();
    deeds_.askDriver([this](PortAnswer answer) { tell(answer); });
}

void StatusMenu::tell(PortAnswer answer) {
    isDriverThere_ = answer != PortAnswer::NotRunning;
    driverTitle_ = titleOf(isDriverOn_, answer);
    advice_ = adviceFor(isDriverOn_, answer);
    changed_();
    if (answer != PortAnswer::NotAnswering) return;
    nextLook_ = platform::NSTimer::scheduledTimerWithTimeInterval(kNextLookSeconds, *this, [this] { refresh(); });
}

} // namespace kelvo
