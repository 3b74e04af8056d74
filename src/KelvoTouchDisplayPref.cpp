#include "KelvoTouchDisplayPref.h"

#include "TDCurrentDevice.h"
#include "TDMessages.h"
#include "TDNames.h"
#include "TDUtilities.h"
#include "platform/Application.h"
#include "platform/Log.h"

#include <exception>
#include <optional>

using platform::NSLog;
using platform::NSMutableDictionary;
using platform::Value;

namespace {

/// The current tab: 0 calibration, 1 touch settings, 2 hardware information, 3 version.
std::int32_t _currentItemIndex = 0;
/// The pane that was selected last; null once it is gone.
KelvoTouchDisplayPref* _panelPref = nullptr;

/// A sheet that was open when the host became active is closed this much later.
constexpr double kEndSheetDelaySeconds = 0.1;

/// The names in a stored device list; none when there is no list. Elements that are no names do not count.
std::optional<std::vector<std::string>> deviceNames(const Value& stored) {
    const platform::NSMutableArray list = stored.array();
    if (!list) return std::nullopt;
    std::vector<std::string> names;
    for (std::size_t i = 0; i < list.count(); ++i) {
        if (auto name = list.objectAtIndex(i).string()) names.push_back(std::move(*name));
    }
    return names;
}

/// What a stored device list gives as one device: a list its first name, an empty list the empty string, a text itself.
std::optional<std::string> deviceNameFromList(const Value& stored) {
    const auto names = deviceNames(stored);
    if (!names) return stored.string();
    return names->empty() ? "" : names->front();
}

void readDevicesAndDriver(const NSMutableDictionary& utilities) {
    setDevicesModel(deviceNames(utilities.objectForKey(keys::currentDeviceType)));
    gDriverEnable = utilities.objectForKey(keys::driverEnable).boolValue();
}

std::size_t countOfDevices() { return gDeviceModel ? gDeviceModel->size() : 0; }

void saveSelectDeviceName() {
    saveSettingItemsToPlist(NSMutableDictionary::dictionaryWithObjectsAndKeys({{gModelType, keys::selectDeviceName}}),
                            getUilitiesFilePath());
}

void chooseFirstDevice() {
    setModelType(gDeviceModel->front());
    saveSelectDeviceName();
}

void chooseSingleDevice(KelvoTouchDisplayPref& pane) {
    chooseFirstDevice();
    pane.willSelect();
}

void activate(KelvoTouchDisplayPref& pane) {
    platform::NSApplication::sharedApplication().activateIgnoringOtherApps();
    platform::NSTimer::scheduledTimerWithTimeInterval(kEndSheetDelaySeconds, pane, [&pane] { pane.endSheet(); });
}

void selectedMenuItem(KelvoTouchDisplayPref& pane, const NSMutableDictionary& payload) {
    const std::uint64_t item = payload.objectForKey(keys::selectedMenuItem).lowBits();
    if (countOfDevices() == 0) return;
    if (countOfDevices() == 1) {
        if (static_cast<std::int64_t>(item) != _currentItemIndex) activate(pane);
        chooseFirstDevice();
        if (_panelPref) _panelPref->selectView(static_cast<std::uint8_t>(item));
        return;
    }
    activate(pane);
    _currentItemIndex = static_cast<std::int32_t>(static_cast<std::uint32_t>(item));
    pane.showSelectDeviceView();
}

void deviceIsConnected(KelvoTouchDisplayPref& pane) {
    if (countOfDevices() == 1) {
        chooseSingleDevice(pane);
    } else if (countOfDevices() >= 2 && gDriverEnable) {
        pane.showSelectDeviceView();
    }
}

void deviceIsDisconnected(KelvoTouchDisplayPref& pane) {
    activate(pane);
    if (countOfDevices() == 0) {
        pane.disableSettingsForString(localizedString("Alert.disconnect"));
        pane.unselectedView();
    } else if (countOfDevices() == 1) {
        chooseSingleDevice(pane);
    }
}

void driverIsEnabled(KelvoTouchDisplayPref& pane) {
    if (countOfDevices() == 1) {
        chooseSingleDevice(pane);
    } else if (countOfDevices() >= 2) {
        pane.showSelectDeviceView();
    }
}

void driverIsDisabled(KelvoTouchDisplayPref& pane) {
    if (verboseLog) NSLog(" device  COMMAND_DRIVER_DISABLE ");
    pane.disableSettingsForString(localizedString(countOfDevices() >= 1 ? "Alert.driverDisable" : "Alert.disconnect"));
    pane.unselectedView();
    activate(pane);
}

} // namespace

KelvoTouchDisplayPref::KelvoTouchDisplayPref(Tabs tabs)
    : NSPreferencePane("KelvoTouchDisplayPref"),
      calibrationVC_(std::move(tabs.calibration)),
      hardwareInformationVC_(std::move(tabs.hardwareInformation)),
      settingVC_(std::move(tabs.setting)),
      VersionVC_(std::move(tabs.version)) {
    tabView_.setDelegate(this);
}

KelvoTouchDisplayPref::~KelvoTouchDisplayPref() {
    if (_panelPref == this) _panelPref = nullptr;
}

std::vector<platform::NSOutlet> KelvoTouchDisplayPref::outlets() {
    return {{"selectDeviceBtn_", &selectDeviceBtn_},
            {"selectDeviceView_", &selectDeviceView_},
            {"tabPopUp_", &tabPopUp_},
            {"tabView_", &tabView_},
            {"statusBarState_", &statusBarState_},
            {"alertTextField_", &alertTextField_},
            {"calibrationVC_", calibrationVC_.get()},
            {"hardwareInformationVC_", hardwareInformationVC_.get()},
            {"settingVC_", settingVC_.get()},
            {"VersionVC_", VersionVC_.get()}};
}

std::vector<platform::NSNibAction> KelvoTouchDisplayPref::actions() {
    using platform::NSControl;
    return {{"selectItem:", [this](NSControl& sender) { selectItem(sender); }},
            {"selectDeviceForSetting:", [this](NSControl& sender) { selectDeviceForSetting(sender); }},
            {"showOrHideStatusBarApp:", [this](NSControl& sender) { showOrHideStatusBarApp(sender); }},
            {"hideStatusBar", [this](NSControl&) { hideStatusBar(); }}};
}

void KelvoTouchDisplayPref::mainViewDidLoad() {
    if (verboseLog) NSLog("mainViewDidLoad");
    settingVC_->resetTabView();
    hardwareInformationVC_->resetTabView();
    setModelType("");
    setDevicesModel(std::nullopt);
    gDriverEnable = false;
    readDeviceState(readUtilitiesDictionary());

    if (countOfDevices() == 0) {
        setSettingsHidden(true);
        alertTextField_.setHidden(false);
        alertTextField_.setStringValue(localizedString("Alert.disconnect"));
    } else if (!gDriverEnable) {
        disableSettingsForString(localizedString("Alert.driverDisable"));
    } else if (countOfDevices() == 1) {
        setSettingsHidden(false);
        alertTextField_.setHidden(true);
        selectDeviceView_.setHidden(true);
        chooseFirstDevice();
    } else {
        showSelectDeviceView();
    }
}

void KelvoTouchDisplayPref::willSelect() {
    if (verboseLog) NSLog("willSelect");
    const NSMutableDictionary utilities = readUtilitiesDictionary();
    readDeviceState(utilities);

    if (countOfDevices() == 0) {
        setSettingsHidden(true);
        selectDeviceView_.setHidden(true);
    } else if (!gDriverEnable) {
        disableSettingsForString(localizedString("Alert.driverDisable"));
    } else if (countOfDevices() == 1) {
        setSettingsHidden(false);
        selectDeviceView_.setHidden(true);
        chooseFirstDevice();
    } else {
        showSelectDeviceView();
    }

    _panelPref = this;
    isSelected_ = true;
    if (!localPortForSBApp_) openPort();
    if (gModelType == "" || !gDriverEnable) {
        NSLog("return");
        return;
    }
    statusBarIsShow_ = utilities.objectForKey(keys::isShowStatuMenu).boolValue();
    _currentItemIndex = utilities.objectForKey(keys::selectedMenuItem).intValue();
    updateTab(_currentItemIndex);
    statusBarState_.setState(statusBarIsShow_ ? 1 : 0);
    tabView_.selectTabViewItemAtIndex(_currentItemIndex);
    tabPopUp_.selectItemAtIndex(_currentItemIndex);
}

void KelvoTouchDisplayPref::willUnselect() {
    isSelected_ = false;
    unselectedView();
    if (RunLoopForSBApp_) platform::CFRunLoop::getCurrent().removeSource(*RunLoopForSBApp_);
    localPortForSBApp_.reset();
    RunLoopForSBApp_.reset();
}

void KelvoTouchDisplayPref::selectView(std::uint8_t index) {
    _currentItemIndex = index;
    tabView_.selectTabViewItemAtIndex(index);
    tabPopUp_.selectItemAtIndex(index);
}

void KelvoTouchDisplayPref::selectItem(platform::NSControl& sender) {
    NSLog("selectItem.....");
    tabView_.selectTabViewItemAtIndex(dynamic_cast<platform::NSPopUpButton&>(sender).indexOfSelectedItem());
}

void KelvoTouchDisplayPref::selectDeviceForSetting(platform::NSControl& sender) {
    statusBarIsShow_ = readUtilitiesDictionary().objectForKey(keys::isShowStatuMenu).boolValue();
    setModelType(dynamic_cast<platform::NSPopUpButton&>(sender).titleOfSelectedItem());
    saveSelectDeviceName();
    updateTab(_currentItemIndex);
    selectDeviceView_.setHidden(true);
    setSettingsHidden(false);
    alertTextField_.setHidden(true);
    selectView(static_cast<std::uint8_t>(_currentItemIndex));
    statusBarState_.setState(statusBarIsShow_ ? 1 : 0);
}

void KelvoTouchDisplayPref::showOrHideStatusBarApp(platform::NSControl& sender) {
    statusBarIsShow_ = dynamic_cast<platform::NSButton&>(sender).state() == 1;
    if (statusBarIsShow_) {
        platform::NSWorkspace::sharedWorkspace().launchApplication(utilitiesAppInStatusBarFullPath());
    } else {
        sendDisplayStateToStatusBarState(payloads::statusMenu(false), kMessageIDForStatusMenu);
    }
    saveStatusMenuState();
}

void KelvoTouchDisplayPref::hideStatusBar() {
    statusBarIsShow_ = false;
    statusBarState_.setState(0);
    saveStatusMenuState();
}

void KelvoTouchDisplayPref::showSelectDeviceView() {
    setSettingsHidden(true);
    alertTextField_.setHidden(true);
    selectDeviceView_.setHidden(false);

    selectDeviceBtn_.removeAllItems();
    if (gDeviceModel) selectDeviceBtn_.addItemsWithTitles(*gDeviceModel);

    const auto lastChosen = readUtilitiesDictionary().objectForKey(keys::selectDeviceName).string();
    if (lastChosen) selectDeviceBtn_.selectItemAtIndex(selectDeviceBtn_.indexOfItemWithTitle(*lastChosen));
}

void KelvoTouchDisplayPref::disableSettingsForString(const std::string& text) {
    setSettingsHidden(true);
    alertTextField_.setHidden(false);
    selectDeviceView_.setHidden(true);
    alertTextField_.setStringValue(text);
}

void KelvoTouchDisplayPref::endSheet() { platform::NSApplication::sharedApplication().endSheetInKeyWindow(); }

void KelvoTouchDisplayPref::saveItemToInfoPlistForKey(const Value& item, std::string_view key) {
    const auto items = NSMutableDictionary::dictionaryWithObjectsAndKeys({{item, key}});
    if (saveSettingItemsToPlist(items, getUilitiesFilePath()) && verboseLog) NSLog("save OK");
}

void KelvoTouchDisplayPref::tabViewWillSelectTabViewItem(platform::NSTabView& tabView,
                                                         const platform::NSTabViewItem& item) {
    if (gModelType == "") {
        setModelType(deviceNameFromList(readUtilitiesDictionary().objectForKey(keys::currentDeviceType)));
        if (gModelType == "") {
            NSLog("gModelType == nil");
            return;
        }
    }
    _currentItemIndex = tabView.indexOfTabViewItem(item);
    saveItemToInfoPlistForKey(_currentItemIndex, keys::selectedMenuItem);
    updateTab(_currentItemIndex);
}

void KelvoTouchDisplayPref::readDeviceState(const NSMutableDictionary& utilities) {
    verboseLog = utilities.objectForKey(keys::verboseLog).boolValue();
    readDevicesAndDriver(utilities);
}

void KelvoTouchDisplayPref::setSettingsHidden(bool hidden) {
    tabView_.setHidden(hidden);
    statusBarState_.setHidden(hidden);
    tabPopUp_.setHidden(hidden);
}

void KelvoTouchDisplayPref::openPort() {
    auto port = platform::CFMessagePorts::current().createLocal(
        kPreferencePortName,
        [this](platform::CFMessagePort& local, std::int32_t messageId, std::span<const std::uint8_t> data) {
            preferencePortCallBack(local, messageId, data, *this);
        });
    // Opening may run the main loop, in which the host may leave the pane.
    if (!port || !isSelected_) return;
    localPortForSBApp_ = std::move(port);
    RunLoopForSBApp_ = localPortForSBApp_->createRunLoopSource();
    platform::CFRunLoop::getCurrent().addSource(*RunLoopForSBApp_);
}

void KelvoTouchDisplayPref::updateTab(int index) {
    try {
        controllerOfTab(index).updateUIState();
    } catch (const std::exception& error) {
        NSLog("%@", error.what());
    }
}

TDTabController& KelvoTouchDisplayPref::controllerOfTab(int index) {
    switch (index) {
    case 0:
        return *calibrationVC_;
    case 1:
        return *settingVC_;
    case 2:
        return *hardwareInformationVC_;
    default:
        return *VersionVC_;
    }
}

void KelvoTouchDisplayPref::saveStatusMenuState() {
    saveSettingItemsToPlist(
        NSMutableDictionary::dictionaryWithObjectsAndKeys({{statusBarIsShow_, keys::isShowStatuMenu}}),
        getUilitiesFilePath());
}

void preferencePortCallBack(platform::CFMessagePort& /*local*/, std::int32_t messageId,
                            std::span<const std::uint8_t> data, KelvoTouchDisplayPref& context) {
    readDevicesAndDriver(readUtilitiesDictionary());
    const NSMutableDictionary payload = Helpers::NSMutableDictionary::dictionaryWithContentsOfData(data);

    switch (messageId) {
    case kMessageIDForSelectedMenuItem:
        selectedMenuItem(context, payload);
        break;
    case kMessageIDForDeviceIsConnected:
        NSLog("kMessageIDForDeviceIsConnected  %@", gModelType);
        if (payload.objectForKey(keys::isConnected).boolValue()) {
            deviceIsConnected(context);
        } else {
            deviceIsDisconnected(context);
        }
        break;
    case COMMAND_DRIVER_DISABLE:
        gDriverEnable = payload.objectForKey(keys::driverEnable).boolValue();
        if (gDriverEnable) {
            driverIsEnabled(context);
        } else {
            driverIsDisabled(context);
        }
        break;
    default:
        break;
    }
}

std::int32_t sharedPaneState::currentItemIndex() { return _currentItemIndex; }

const KelvoTouchDisplayPref* sharedPaneState::panelPref() { return _panelPref; }

void sharedPaneState::reset() {
    _currentItemIndex = 0;
    _panelPref = nullptr;
    gSettings = {};
    setModelType("");
    setDevicesModel(std::nullopt);
    gDriverEnable = false;
    verboseLog = false;
}
