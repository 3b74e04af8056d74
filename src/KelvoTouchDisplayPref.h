#pragma once

#include "TDTabController.h"
#include "platform/Controls.h"
#include "platform/MessagePorts.h"
#include "platform/NSPreferencePane.h"
#include "platform/PropertyList.h"
#include "platform/RunLoop.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The pane: decides from the utilities file which of its four display states to show, chooses the current device,
/// switches tabs, and hears of devices and driver on its own message port.
class KelvoTouchDisplayPref : public platform::NSPreferencePane, private platform::NSTabViewDelegate {
public:
    /// The controllers of the four tabs.
    struct Tabs {
        std::unique_ptr<TDTabController> calibration;
        std::unique_ptr<TDPagedTabController> hardwareInformation;
        std::unique_ptr<TDPagedTabController> setting;
        std::unique_ptr<TDTabController> version;
    };

    explicit KelvoTouchDisplayPref(Tabs tabs);
    ~KelvoTouchDisplayPref() override;

    [[nodiscard]] std::vector<platform::NSOutlet> outlets() override;
    [[nodiscard]] std::vector<platform::NSNibAction> actions() override;

    void mainViewDidLoad() override;
    void willSelect() override;
    void willUnselect() override;

    /// Makes the tab at `index` the current one in the tab view and in its pop-up.
    void selectView(std::uint8_t index);
    /// The user picked a tab in `tabPopUp_`.
    void selectItem(platform::NSControl& sender);
    /// The user picked a device in `selectDeviceBtn_`.
    void selectDeviceForSetting(platform::NSControl& sender);
    /// The user switched the status-bar menu on or off in `statusBarState_`.
    void showOrHideStatusBarApp(platform::NSControl& sender);
    /// Switches the status-bar menu off here and in the file; the utility is not told.
    void hideStatusBar();

    /// Shows the chooser with the connected devices instead of the settings.
    void showSelectDeviceView();
    /// Shows `text` instead of the settings.
    void disableSettingsForString(const std::string& text);
    /// Called before the port is closed and after the settings are disabled; there is nothing to do.
    void unselectedView() {}
    /// Ends the sheet that is the host's key window.
    void endSheet();
    /// Stores one value in the utilities file, without the defaults where there is no file.
    void saveItemToInfoPlistForKey(const platform::Value& item, std::string_view key);

private:
    void tabViewWillSelectTabViewItem(platform::NSTabView& tabView, const platform::NSTabViewItem& item) override;

    void readDeviceState(const platform::NSMutableDictionary& utilities);
    void setSettingsHidden(bool hidden);
    void openPort();
    void updateTab(int index);
    [[nodiscard]] TDTabController& controllerOfTab(int index);
    void saveStatusMenuState();

    platform::NSPopUpButton selectDeviceBtn_;
    platform::NSView selectDeviceView_;
    bool statusBarIsShow_ = false;
    platform::NSPopUpButton tabPopUp_;
    platform::NSTabView tabView_;
    platform::NSButton statusBarState_{platform::NSButton::Type::Switch};
    platform::NSTextField alertTextField_;
    std::unique_ptr<TDTabController> calibrationVC_;
    std::unique_ptr<TDPagedTabController> hardwareInformationVC_;
    std::unique_ptr<TDPagedTabController> settingVC_;
    std::unique_ptr<TDTabController> VersionVC_;
    // Both belong to the port on which the pane receives all its messages, whatever their names say.
    std::unique_ptr<platform::CFMessagePort> localPortForSBApp_;
    std::unique_ptr<platform::CFRunLoopSource> RunLoopForSBApp_;
    [[maybe_unused]] std::unique_ptr<platform::CFMessagePort> localPortForDeviceDriver_;
    [[maybe_unused]] std::unique_ptr<platform::CFRunLoopSource> RunLoopForDeviceDriver_;
    // Between willSelect and willUnselect.
    bool isSelected_ = false;
};

/// Handles one message on the port of `context`, which is the pane that opened it. Messages are not replied to.
void preferencePortCallBack(platform::CFMessagePort& local, std::int32_t messageId, std::span<const std::uint8_t> data,
                            KelvoTouchDisplayPref& context);

/// A door for tests to the state that all panes of a process share.
namespace sharedPaneState {
[[nodiscard]] std::int32_t currentItemIndex();
[[nodiscard]] const KelvoTouchDisplayPref* panelPref();
/// As in a process that has just started.
void reset();
} // namespace sharedPaneState
