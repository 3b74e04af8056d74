#pragma once

#include "KelvoTouchDisplayPref.h"
#include "TDCurrentDevice.h"
#include "TDNames.h"
#include "support/FakePlatform.h"
#include "support/FormStandIn.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

/// The pane shell on a platform without a system, with tabs that only note what is asked of them.
namespace shell {

using platform::NSMutableDictionary;
using platform::Value;
using support::arrayOf;
using support::dictionaryOf;
using Lines = std::vector<std::string>;

inline const std::string kUtilitiesPath = "/home/user/Library/Preferences/KelvoTouchDisplay/Utilities.plist";
inline const std::string kDisconnectText = "text of Alert.disconnect";
inline const std::string kDriverDisableText = "text of Alert.driverDisable";

/// Keeps what the shell asks of the tabs.
class RecordedTab : public TDPagedTabController {
public:
    RecordedTab(std::string name, Lines& calls) : TDPagedTabController(""), name_(std::move(name)), calls_(calls) {}
    void updateUIState() override {
        calls_.push_back(name_ + " updateUIState");
        if (during) during();
    }
    void resetTabView() override {
        calls_.push_back(name_ + " resetTabView");
        if (during) during();
    }

    /// What else happens in either.
    std::function<void()> during;

private:
    std::string name_;
    Lines& calls_;
};

class Pane : public testing::Test {
protected:
    Pane() { makePane(); }

    /// Lets `calls` tell from now on how each of the shell's controls stands whenever it changes, and that the host was
    /// activated.
    void tellOfControls() {
        watch(tabView(), [this] { return placeOf("tabs", tabView(), tabView().indexOfSelectedTabViewItem()); });
        watch(tabPopUp(), [this] { return placeOf("tab menu", tabPopUp(), tabPopUp().indexOfSelectedItem()); });
        watch(statusBarState(), [this] { return placeOf("status box", statusBarState(), statusBarState().state()); });
        watch(alertTextField(), [this] { return nameOf("alert", alertTextField()) + alertTextField().stringValue(); });
        watch(selectDeviceView(), [this] { return nameOf("chooser", selectDeviceView()); });
        watch(selectDeviceBtn(), [this] {
            return "devices " + std::to_string(selectDeviceBtn().itemTitles().size()) + " at " +
                   std::to_string(selectDeviceBtn().indexOfSelectedItem());
        });
        platform.application.onActivation = [this] { calls.emplace_back("activate"); };
    }

    void makePane() {
        pane.reset();
        auto newTab = [&](const char* name) { return std::make_unique<RecordedTab>(name, calls); };
        auto calibration = newTab("calibration");
        auto hardware = newTab("hardware");
        auto setting = newTab("setting");
        auto version = newTab("version");
        hardwareTab = hardware.get();
        settingTab = setting.get();
        versionTab = version.get();
        tabsByName = {{"calibrationVC_", calibration.get()},
                      {"hardwareInformationVC_", hardware.get()},
                      {"settingVC_", setting.get()},
                      {"VersionVC_", version.get()}};
        pane = std::make_unique<KelvoTouchDisplayPref>(KelvoTouchDisplayPref::Tabs{
            std::move(calibration), std::move(hardware), std::move(setting), std::move(version)});
        support::connect(*pane, "tabPopUp_", "selectItem:");
        support::connect(*pane, "selectDeviceBtn_", "selectDeviceForSetting:");
        support::connect(*pane, "statusBarState_", "showOrHideStatusBarApp:");
        for (const char* label : {"Calibration", "Touch", "Hardware", "Version"}) {
            tabView().addTabViewItem(label);
            tabPopUp().addItemWithTitle(label);
        }
        selectDeviceView().setHidden(true);
        alertTextField().setHidden(true);
    }

    platform::NSPopUpButton& selectDeviceBtn() {
        return support::outlet<platform::NSPopUpButton>(*pane, "selectDeviceBtn_");
    }
    platform::NSView& selectDeviceView() { return support::outlet<platform::NSView>(*pane, "selectDeviceView_"); }
    platform::NSPopUpButton& tabPopUp() { return support::outlet<platform::NSPopUpButton>(*pane, "tabPopUp_"); }
    platform::NSTabView& tabView() { return support::outlet<platform::NSTabView>(*pane, "tabView_"); }
    platform::NSButton& statusBarState() { return support::outlet<platform::NSButton>(*pane, "statusBarState_"); }
    platform::NSTextField& alertTextField() { return support::outlet<platform::NSTextField>(*pane, "alertTextField_"); }

    /// The utilities file as the driver leaves it.
    void setUtilities(std::initializer_list<Value> devices, bool driverEnable, int selectedMenuItem = 0) {
        platform.setPlist(kUtilitiesPath, dictionaryOf({{selectedMenuItem, keys::selectedMenuItem},
                                                        {true, keys::isShowStatuMenu},
                                                        {driverEnable, keys::driverEnable},
                                                        {arrayOf(devices), keys::currentDeviceType},
                                                        {false, keys::verboseLog}}));
    }

    void setUtilitiesItem(const Value& item, std::string_view key) {
        auto utilities = platform.plist(kUtilitiesPath);
        utilities.setObjectForKey(item, key);
        platform.setPlist(kUtilitiesPath, utilities);
    }

    Value utilitiesItem(std::string_view key) { return platform.plist(kUtilitiesPath).objectForKey(key); }

    void receive(std::int32_t id, const NSMutableDictionary& payload) {
        platform.ports.deliver(kPreferencePortName, id, payload);
    }

    void show() {
        pane->mainViewDidLoad();
        pane->willSelect();
        calls.clear();
        platform.log.lines.clear();
        platform.application.requests.clear();
    }

    bool isSettingsGroupHidden() {
        EXPECT_EQ(tabView().isHidden(), statusBarState().isHidden());
        EXPECT_EQ(tabView().isHidden(), tabPopUp().isHidden());
        return tabView().isHidden();
    }

    void expectDisconnected() {
        EXPECT_TRUE(isSettingsGroupHidden());
        EXPECT_FALSE(alertTextField().isHidden());
        EXPECT_EQ(alertTextField().stringValue(), kDisconnectText);
    }

    void expectDriverDisabled() {
        EXPECT_TRUE(isSettingsGroupHidden());
        EXPECT_FALSE(alertTextField().isHidden());
        EXPECT_EQ(alertTextField().stringValue(), kDriverDisableText);
        EXPECT_TRUE(selectDeviceView().isHidden());
    }

    void expectSettingsShown() {
        EXPECT_FALSE(isSettingsGroupHidden());
        EXPECT_TRUE(selectDeviceView().isHidden());
    }

    void expectChooser() {
        EXPECT_TRUE(isSettingsGroupHidden());
        EXPECT_TRUE(alertTextField().isHidden());
        EXPECT_FALSE(selectDeviceView().isHidden());
    }

    void watch(platform::NSView& view, const std::function<std::string()>& line) {
        watched.push_back(view.observeChanges([this, line] { calls.push_back(line()); }));
    }

    static std::string nameOf(const std::string& name, const platform::NSView& view) {
        return name + (view.isHidden() ? " hidden " : " shown ");
    }

    static std::string placeOf(const std::string& name, const platform::NSView& view, int place) {
        return nameOf(name, view) + std::to_string(place);
    }

    support::FakePlatform platform;
    Lines calls;
    std::vector<platform::Subscription> watched;
    std::unique_ptr<KelvoTouchDisplayPref> pane;
    RecordedTab* hardwareTab = nullptr;
    RecordedTab* settingTab = nullptr;
    RecordedTab* versionTab = nullptr;
    std::map<std::string, platform::NSViewController*> tabsByName;
};

} // namespace shell
