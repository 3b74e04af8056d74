#include "fuzz/ExpectedPane.h"

#include <algorithm>

namespace fuzzing {

namespace {

constexpr int kTabs = 4;
constexpr double kSheetDelay = 0.1;
const std::string kDisconnected = "text of Alert.disconnect";
const std::string kDriverDisabled = "text of Alert.driverDisable";

} // namespace

void ExpectedPane::mainViewDidLoad() {
    if (shell.isVerbose) log.emplace_back("mainViewDidLoad");
    shell.modelType = "";
    const UtilitiesFile utilities = read();
    shell.isVerbose = utilities.verboseLog.value_or(false);
    readDevices(utilities);
    switch (state()) {
    case State::Disconnected:
        showSettings(false);
        shell.isAlertHidden = false;
        shell.alert = kDisconnected;
        break;
    case State::DriverDisabled:
        showAlert(kDriverDisabled);
        break;
    case State::OneDevice:
        showSettings(true);
        shell.isAlertHidden = true;
        shell.isChooserHidden = true;
        takeFirstDevice();
        break;
    case State::SeveralDevices:
        showChooser();
        break;
    }
}

void ExpectedPane::willSelect() {
    if (shell.isVerbose) log.emplace_back("willSelect");
    const UtilitiesFile utilities = read();
    shell.isVerbose = utilities.verboseLog.value_or(false);
    readDevices(utilities);
    switch (state()) {
    case State::Disconnected:
        showSettings(false);
        shell.isChooserHidden = true;
        break;
    case State::DriverDisabled:
        showAlert(kDriverDisabled);
        break;
    case State::OneDevice:
        showSettings(true);
        shell.isChooserHidden = true;
        takeFirstDevice();
        break;
    case State::SeveralDevices:
        showChooser();
        break;
    }
    shell.isListening = true;
    if (shell.modelType == "" || !shell.isDriverEnabled) {
        log.emplace_back("return");
        return;
    }
    isStatusBarShown_ = utilities.isShowStatuMenu.value_or(false);
    // A number beyond 32 bits is held to their bounds.
    shell.currentItemIndex = static_cast<std::int32_t>(
        std::clamp<std::int64_t>(utilities.selectedMenuItem.value_or(0), INT32_MIN, INT32_MAX));
    shell.statusBarState = isStatusBarShown_ ? 1 : 0;
    pickTab(shell.currentItemIndex);
    selectItem(shell.currentItemIndex);
}

void ExpectedPane::willUnselect() { shell.isListening = false; }

void ExpectedPane::driverMessage(const Payload& payload) {
    readDevices(read());
    shell.isDriverEnabled = payload.driverEnable.value_or(false);
    if (!shell.isDriverEnabled) {
        if (shell.isVerbose) log.emplace_back(" device  COMMAND_DRIVER_DISABLE ");
        showAlert(count() >= 1 ? kDriverDisabled : kDisconnected);
        activate();
    } else if (count() == 1) {
        chooseSingleDevice();
    } else if (count() >= 2) {
        showChooser();
    }
}

void ExpectedPane::connectionMessage(const Payload& payload) {
    readDevices(read());
    log.push_back("kMessageIDForDeviceIsConnected  " + shell.modelType.value_or("(null)"));
    if (payload.isConnected.value_or(false)) {
        if (count() == 1) chooseSingleDevice();
        if (count() >= 2 && shell.isDriverEnabled) showChooser();
        return;
    }
    activate();
    if (count() == 0) showAlert(kDisconnected);
    if (count() == 1) chooseSingleDevice();
}

void ExpectedPane::tabMessage(const Payload& payload) {
    readDevices(read());
    const std::int64_t item = payload.selectedMenuItem.value_or(0);
    if (count() == 1) {
        if (item != shell.currentItemIndex) activate();
        takeFirstDevice();
        selectView(static_cast<std::uint8_t>(item));
    } else if (count() >= 2) {
        activate();
        shell.currentItemIndex = static_cast<std::int32_t>(static_cast<std::uint32_t>(item));
        showChooser();
    }
}

void ExpectedPane::otherMessage() { readDevices(read()); }

void ExpectedPane::pickDevice(int index) {
    shell.chosen = index;
    isStatusBarShown_ = read().isShowStatuMenu.value_or(false);
    const std::string name = shell.chooserTitles[static_cast<std::size_t>(index)];
    shell.modelType = name;
    merge([&](UtilitiesFile& stored) { stored.selectDeviceName = name; });
    shell.isChooserHidden = true;
    showSettings(true);
    shell.isAlertHidden = true;
    selectView(static_cast<std::uint8_t>(shell.currentItemIndex));
    shell.statusBarState = isStatusBarShown_ ? 1 : 0;
}

void ExpectedPane::pickTabItem(int index) {
    shell.tabItem = index;
    log.emplace_back("selectItem.....");
    pickTab(index);
}

void ExpectedPane::pickTab(int index) {
    if (index < 0 || index >= kTabs || index == shell.tab) return;
    shell.tab = index;
    if (shell.modelType == "") {
        const auto devices = read().devices;
        shell.modelType = std::nullopt;
        if (devices) shell.modelType = devices->empty() ? "" : devices->front();
        if (shell.modelType == "") {
            log.emplace_back("gModelType == nil");
            return;
        }
    }
    shell.currentItemIndex = index;
    const bool isSaved = merge([&](UtilitiesFile& stored) { stored.selectedMenuItem = index; });
    if (isSaved && shell.isVerbose) log.emplace_back("save OK");
}

void ExpectedPane::clickStatusBox() {
    shell.statusBarState = shell.statusBarState == 0 ? 1 : 0;
    isStatusBarShown_ = shell.statusBarState == 1;
    ++(isStatusBarShown_ ? launches : statusMessages);
}

void ExpectedPane::storeStatusBox() {
    merge([&](UtilitiesFile& stored) { stored.isShowStatuMenu = isStatusBarShown_; });
}

std::size_t ExpectedPane::endedSheets() const {
    return static_cast<std::size_t>(std::count_if(
        activations.begin(), activations.end(), [&](double activation) { return activation + kSheetDelay <= now_(); }));
}

UtilitiesFile ExpectedPane::read() {
    if (!file.exists && !isDiskFull) {
        file = {.exists = true,
                .devices = std::vector<std::string>(),
                .driverEnable = true,
                .verboseLog = false,
                .isShowStatuMenu = true,
                .selectedMenuItem = 0};
    }
    return file.isDamaged ? UtilitiesFile() : file;
}

/// Whether the change was written.
template <typename Change>
bool ExpectedPane::merge(Change change) {
    if (file.isDamaged || isDiskFull) return false;
    file.exists = true;
    change(file);
    return true;
}

void ExpectedPane::readDevices(const UtilitiesFile& utilities) {
    shell.devices = utilities.devices;
    shell.isDriverEnabled = utilities.driverEnable.value_or(false);
}

std::size_t ExpectedPane::count() const { return shell.devices ? shell.devices->size() : 0; }

ExpectedPane::State ExpectedPane::state() const {
    if (count() == 0) return State::Disconnected;
    if (!shell.isDriverEnabled) return State::DriverDisabled;
    return count() == 1 ? State::OneDevice : State::SeveralDevices;
}

void ExpectedPane::showSettings(bool isShown) {
    shell.isTabViewHidden = !isShown;
    shell.isStatusBarStateHidden = !isShown;
    shell.isTabPopUpHidden = !isShown;
}

void ExpectedPane::showAlert(const std::string& text) {
    showSettings(false);
    shell.isAlertHidden = false;
    shell.isChooserHidden = true;
    shell.alert = text;
}

void ExpectedPane::showChooser() {
    showSettings(false);
    shell.isAlertHidden = true;
    shell.isChooserHidden = false;
    shell.chooserTitles = *shell.devices;
    shell.chosen = 0;
    const auto last = read().selectDeviceName;
    if (!last) return;
    const auto place = std::find(shell.chooserTitles.begin(), shell.chooserTitles.end(), *last);
    if (place != shell.chooserTitles.end()) shell.chosen = static_cast<int>(place - shell.chooserTitles.begin());
}

void ExpectedPane::takeFirstDevice() {
    const std::string name = shell.devices->front();
    shell.modelType = name;
    merge([&](UtilitiesFile& stored) { stored.selectDeviceName = name; });
}

void ExpectedPane::chooseSingleDevice() {
    takeFirstDevice();
    willSelect();
}

void ExpectedPane::activate() { activations.push_back(now_()); }

void ExpectedPane::selectView(std::uint8_t index) {
    shell.currentItemIndex = index;
    pickTab(index);
    selectItem(index);
}

void ExpectedPane::selectItem(std::int32_t index) {
    if (index >= 0 && index < kTabs) shell.tabItem = index;
}

} // namespace fuzzing
