#include "fuzz/PaneOnFakes.h"

#include "TDCurrentDevice.h"
#include "TDGestureCatalogue.h"
#include "TDNames.h"
#include "fuzz/Require.h"
#include "support/FormStandIn.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>
#include <sstream>
#include <variant>

namespace fuzzing {

using support::connect;
using support::outlet;

namespace {

constexpr int kTabs = 4;
constexpr double kViewSize = 100.0;

const std::array kNumbers = {0.0,
                             1.0,
                             -1.0,
                             0.5,
                             32.0,
                             -0.0,
                             129.0,
                             4096.5,
                             2147483648.0,
                             -2147483649.0,
                             1e19,
                             std::numeric_limits<double>::max(),
                             std::numeric_limits<double>::lowest(),
                             std::numeric_limits<double>::denorm_min(),
                             std::numeric_limits<double>::infinity(),
                             -std::numeric_limits<double>::infinity(),
                             std::numeric_limits<double>::quiet_NaN()};

const std::array<std::string, 13> kTexts = {
    "", "12", "-5", "4097", " 33 ", "1e99", "-1e999", "nan", "0x10", "1,5", "\xFF", "%@%n", std::string("7\0", 2)};

constexpr std::array<double, 4> kDelays = {0.01, 0.1, 0.5, 20.0};
constexpr std::array<std::int32_t, 5> kMessageIds = {COMMAND_DRIVER_DISABLE, kMessageIDForDeviceIsConnected,
                                                     kMessageIDForSelectedMenuItem, 9, -1};

template <typename Sequence>
std::string listed(const Sequence& titles) {
    std::string text;
    for (const std::string& title : titles) text += '"' + title + "\" ";
    return text;
}

/// The controls among the outlets of `owner`.
void addControls(std::vector<platform::NSView*>& controls, platform::NSNibOwner& owner) {
    for (const platform::NSOutlet& outlet : owner.outlets()) {
        if (auto* const* view = std::get_if<platform::NSView*>(&outlet.target)) controls.push_back(*view);
    }
}

/// Draws the area, which is what can be hit, and double-clicks in or beside it.
void doubleClick(TDTestView& view, Input& script) {
    view.setFrame({0.0, 0.0, kViewSize, kViewSize});
    view.drawRect(view.bounds());
    const platform::NSEvent event{{kViewSize / 2, kViewSize / 2 + script.oneOf(kNumbers)}};
    view.mouseDown(event);
    view.mouseUp(event);
    view.mouseDown(event);
    view.mouseUp(event);
}

/// Two that collide, since a whole catalogue takes most of a run's time. Made once.
const platform::NSData& fewGestures() {
    static const platform::NSData contents = [] {
        const auto list =
            support::arrayOf({newGestureDictionary("SwipeBetweenPages",
                                                   {"ScrollLeftOrRightWithTwoFingers", "SwipeWithThreeFingers"}, true),
                              newGestureDictionary("FullScreenApps", {"SwipeLeftOrRightWithThreeFingers"}, true)});
        return kelvo::PlistCoder().createXMLData(support::dictionaryOf({{list, keys::gestureArray}})).value();
    }();
    return contents;
}

void requireMirror(TDGesturesCellView& row) {
    const platform::NSMutableDictionary& record = row.actionInfo();
    const std::vector<platform::NSOutlet> outlets = row.outlets();
    const auto& box = outlet<platform::NSButton>(outlets, "clickBtn");
    const auto& menu = outlet<TDCustemorPopUpButton>(outlets, "m_gestures");
    const bool isEnabled = record.objectForKey(keys::isEnable).boolValue();
    const std::int64_t index = record.objectForKey(keys::selectedIndex).intValue();
    const std::size_t actions = record.objectForKey(keys::descriptor).array().count();

    require((box.state() != 0) == isEnabled, "a row's check box mirrors its record");
    require(menu.itemTitles().size() == actions + 1, "a row's menu has an empty entry and the record's actions");
    require(menu.title() == menu.titleOfSelectedItem(), "a row's menu bears the title of its chosen action");
    require(menu.isRespond() == (actions != 1), "a row's menu opens unless there is one action");
    if (actions != 1) require(menu.isEnabled() == isEnabled, "a row's menu is enabled with its gesture");
    if (index >= 0 && index < static_cast<std::int64_t>(actions)) {
        require(menu.indexOfSelectedItem() == index + 1, "a row's menu mirrors its record");
    }
}

} // namespace

std::string Shell::description() const {
    std::ostringstream text;
    text << "hidden: tabs " << isTabViewHidden << ", status box " << isStatusBarStateHidden << ", tab menu "
         << isTabPopUpHidden << ", alert " << isAlertHidden << ", chooser " << isChooserHidden << "; alert \"" << alert
         << "\"; chooser " << listed(chooserTitles) << "at " << chosen << "; tab " << tab << ", its item " << tabItem
         << "; status box " << statusBarState << "; device "
         << (modelType ? '"' + *modelType + '"' : std::string("none")) << " of "
         << (devices ? listed(*devices) : std::string("no list ")) << "; driver " << isDriverEnabled << ", verbose "
         << isVerbose << ", index " << currentItemIndex << ", listening " << isListening;
    return text.str();
}

PaneOnFakes::PaneOnFakes()
    : pane_(std::make_unique<KelvoTouchDisplayPref>(newTabs())),
      tabView_(outlet<platform::NSTabView>(*pane_, "tabView_")),
      tabPopUp_(outlet<platform::NSPopUpButton>(*pane_, "tabPopUp_")),
      statusBarState_(outlet<platform::NSButton>(*pane_, "statusBarState_")),
      alert_(outlet<platform::NSTextField>(*pane_, "alertTextField_")),
      chooserView_(outlet<platform::NSView>(*pane_, "selectDeviceView_")),
      chooser_(outlet<platform::NSPopUpButton>(*pane_, "selectDeviceBtn_")),
      calibrationMode_(outlet<platform::NSMatrix>(*calibration_, "CalibrationMode")),
      width_(outlet<platform::NSTextField>(*calibration_, "ResolutionWidth")),
      height_(outlet<platform::NSTextField>(*calibration_, "ResolutionHeight")),
      gestureView_(outlet<platform::NSView>(*setting_, "gestureView_")) {
    bindForms();
}

KelvoTouchDisplayPref::Tabs PaneOnFakes::newTabs() {
    auto calibration = std::make_unique<TDCalibrationViewCtl>();
    auto hardware = std::make_unique<TDHardwareInformationViewCtl>();
    auto setting = std::make_unique<TDSettingViewCtl>();
    auto version = std::make_unique<TDVersionViewCtl>();
    calibration_ = calibration.get();
    hardware_ = hardware.get();
    setting_ = setting.get();
    version_ = version.get();
    return {.calibration = std::move(calibration),
            .hardwareInformation = std::move(hardware),
            .setting = std::move(setting),
            .version = std::move(version)};
}

void PaneOnFakes::storeSettings() {
    for (const char* name : {"A", "B"}) platform.files.files[kFolder + "Settings_" + name + ".plist"] = fewGestures();
}

void PaneOnFakes::bindForms() {
    for (int i = 0; i < kTabs; ++i) {
        tabView_.addTabViewItem("tab");
        tabPopUp_.addItemWithTitle("tab");
    }
    connect(*pane_, "tabPopUp_", "selectItem:");
    connect(*pane_, "selectDeviceBtn_", "selectDeviceForSetting:");
    connect(*pane_, "statusBarState_", "showOrHideStatusBarApp:");
    hideStatusBar_.setAction([this](platform::NSControl&) { pane_->hideStatusBar(); });

    calibrationMode_.setNumberOfRows(2);
    connect(*calibration_, "CalibrationMode", "changeCalibrationMode:");
    connect(*calibration_, "applyBtn", "setOSDResolution:");

    outlet<platform::NSTabView>(*hardware_, "hardwareInfoTabView_").addTabViewItem("rotation");
    outlet<platform::NSMatrix>(*hardware_, "rotateMode_").setNumberOfRows(4);
    connect(*hardware_, "rotateMode_", "changeRotateState:");

    for (const char* page : {"touch", "gestures"}) {
        outlet<platform::NSTabView>(*setting_, "settingTabView_").addTabViewItem(page);
    }
    outlet<platform::NSSlider>(*setting_, "rateSlider_").setBounds(0.0, 0.9);
    outlet<platform::NSSlider>(*setting_, "rangeSlider_").setBounds(8.0, 128.0);
    outlet<platform::NSSlider>(*setting_, "longPressInterval_").setBounds(0.3, 3.0);
    outlet<platform::NSTextField>(*setting_, "rengeText_").setFormatter(platform::NSNumberFormatter{8.0, 128.0});
    connect(*setting_, "rateSlider_", "rateSliderValueChange:");
    connect(*setting_, "rangeSlider_", "rangeSliderValueChange:");
    connect(*setting_, "rightClickBotton_", "setRightClickParameters:");
    connect(*setting_, "longPressInterval_", "setRightClickParameters:");
    normalSpeed_.setAction([this](platform::NSControl& sender) { setting_->doubleClickSpeedNormal(sender); });
    normalRange_.setAction([this](platform::NSControl& sender) { setting_->doubleClickRangeNormal(sender); });
}

void PaneOnFakes::load() {
    (void)pane_->loadMainView();
    for (TDTabController* tab : {static_cast<TDTabController*>(calibration_), static_cast<TDTabController*>(hardware_),
                                 static_cast<TDTabController*>(setting_), static_cast<TDTabController*>(version_)}) {
        (void)tab->view();
    }
    pane_->mainViewDidLoad();
}

void PaneOnFakes::deliver(std::int32_t id, std::span<const std::uint8_t> payload) {
    platform.ports.deliver(kPreferencePortName, id, platform::NSData(payload.begin(), payload.end()));
}

void PaneOnFakes::useEveryControl(Input& script) {
    // An act may replace the rows, so they are looked up anew for each.
    for (std::size_t i = 0;; ++i) {
        const std::vector<platform::NSView*> there = controls();
        if (i >= there.size()) return;
        use(*there[i], script);
    }
}

void PaneOnFakes::act(Input& script) {
    switch (script.below(8)) {
    case 0:
        platform.runLoop.advance(script.oneOf(kDelays));
        break;
    case 1:
        closeAlert(script);
        break;
    case 2:
        changePeer(script);
        break;
    case 3:
        scheduleMessage(script);
        break;
    default:
        use(*script.oneOf(controls()), script);
        break;
    }
}

void PaneOnFakes::actOnTabs(Input& script) {
    switch (script.below(4)) {
    case 0:
        closeAlert(script);
        break;
    case 1:
        changePeer(script);
        break;
    default:
        use(*script.oneOf(tabControls()), script);
        break;
    }
}

void PaneOnFakes::use(platform::NSView& view, Input& script) {
    if (auto* popUp = dynamic_cast<platform::NSPopUpButton*>(&view)) {
        // The script's end picks the second item, since a pull-down does not offer its first.
        popUp->performSelectItemAtIndex(static_cast<int>((script.below(6) + 1) % 6));
    } else if (auto* button = dynamic_cast<platform::NSButton*>(&view)) {
        button->performClick();
    } else if (auto* slider = dynamic_cast<platform::NSSlider*>(&view)) {
        slider->performSetDoubleValue(script.oneOf(kNumbers));
    } else if (auto* field = dynamic_cast<platform::NSTextField*>(&view)) {
        const std::string& text = script.oneOf(kTexts);
        field->performEdit(text);
        (void)field->performEndEditing(text);
    } else if (auto* matrix = dynamic_cast<platform::NSMatrix*>(&view)) {
        matrix->performSelectRow(static_cast<int>(script.below(5)));
    } else if (auto* tabs = dynamic_cast<platform::NSTabView*>(&view)) {
        tabs->selectTabViewItemAtIndex(static_cast<int>(script.below(5)));
    } else if (auto* area = dynamic_cast<TDTestView*>(&view)) {
        doubleClick(*area, script);
    }
}

void PaneOnFakes::closeAlert(Input& script) {
    const std::size_t alert = script.byte();
    const int returnCode = static_cast<int>(script.below(3)) - 1;
    if (alert < platform.application.sheets.size()) platform.application.endSheet(alert, returnCode);
}

void PaneOnFakes::changePeer(Input& script) {
    using Peer = support::MemoryPorts::Peer;
    const char* name = script.below(2) == 0 ? kTouchDisplayDriverPortName : kStatusBarPortName;
    const std::array peers = {Peer::Answers, Peer::AnswersWithData, Peer::Slow, Peer::Hung};
    const std::size_t peer = script.below(peers.size() + 1);
    if (peer < peers.size()) {
        platform.ports.peers[name] = peers[peer];
    } else {
        platform.ports.peers.erase(name);
    }
}

void PaneOnFakes::scheduleMessage(Input& script) {
    const std::int32_t id = script.oneOf(kMessageIds);
    const std::uint8_t value = script.byte();
    platform.runLoop.scheduleTimer(script.oneOf(kDelays), [this, id, value] {
        platform.ports.deliver(
            kPreferencePortName, id,
            support::dictionaryOf(
                {{value, keys::selectedMenuItem}, {value != 0, keys::isConnected}, {value != 0, keys::driverEnable}}));
    });
}

Shell PaneOnFakes::shell() {
    return {.isTabViewHidden = tabView_.isHidden(),
            .isStatusBarStateHidden = statusBarState_.isHidden(),
            .isTabPopUpHidden = tabPopUp_.isHidden(),
            .isAlertHidden = alert_.isHidden(),
            .isChooserHidden = chooserView_.isHidden(),
            .alert = alert_.stringValue(),
            .chooserTitles = chooser_.itemTitles(),
            .chosen = chooser_.indexOfSelectedItem(),
            .tab = tabView_.indexOfSelectedTabViewItem(),
            .tabItem = tabPopUp_.indexOfSelectedItem(),
            .statusBarState = statusBarState_.state(),
            .modelType = gModelType,
            .devices = gDeviceModel,
            .isDriverEnabled = gDriverEnable,
            .isVerbose = verboseLog,
            .currentItemIndex = sharedPaneState::currentItemIndex(),
            .isListening = platform.ports.isListening(kPreferencePortName)};
}

void PaneOnFakes::requireMirrors() {
    for (TDGesturesCellView* row : rows()) requireMirror(*row);

    const bool isManual = calibrationMode_.selectedRow() != 0;
    require(width_.isEnabled() == isManual && height_.isEnabled() == isManual,
            "the resolution can be edited in manual mode alone");
    require(tabView_.isHidden() == tabPopUp_.isHidden() && tabView_.isHidden() == statusBarState_.isHidden(),
            "the settings are shown and hidden together");
}

void PaneOnFakes::requireDecodablePayloads() {
    for (const support::ReceivedMessage& message : platform.ports.received) {
        require(static_cast<bool>(message.payload), "what was sent is a dictionary");
    }
}

std::vector<TDGesturesCellView*> PaneOnFakes::rows() {
    std::vector<TDGesturesCellView*> found;
    for (const auto& view : gestureView_.subviews()) {
        // The last at that place; those before it are gone.
        const auto& views = platform.nibs.views;
        const auto place = std::find(views.rbegin(), views.rend(), view.get());
        const auto index = std::distance(views.begin(), place.base()) - 1;
        found.push_back(dynamic_cast<TDGesturesCellView*>(platform.nibs.owners[static_cast<std::size_t>(index)]));
    }
    return found;
}

std::vector<platform::NSView*> PaneOnFakes::tabControls() {
    std::vector<platform::NSView*> found;
    addControls(found, *calibration_);
    addControls(found, *hardware_);
    addControls(found, *setting_);
    found.push_back(&normalSpeed_);
    found.push_back(&normalRange_);
    for (TDGesturesCellView* row : rows()) addControls(found, *row);
    return found;
}

std::vector<platform::NSView*> PaneOnFakes::controls() {
    std::vector<platform::NSView*> found;
    addControls(found, *pane_);
    found.push_back(&hideStatusBar_);
    const std::vector<platform::NSView*> ofTabs = tabControls();
    found.insert(found.end(), ofTabs.begin(), ofTabs.end());
    return found;
}

} // namespace fuzzing
