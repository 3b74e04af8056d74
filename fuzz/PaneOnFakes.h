#pragma once

#include "HardwareInfo/TDHardwareInformationViewCtl.h"
#include "Information/TDVersionViewCtl.h"
#include "KelvoTouchDisplayPref.h"
#include "Properties/TDSettingViewCtl.h"
#include "TDCalibrationViewCtl.h"
#include "fuzz/Input.h"
#include "support/FakePlatform.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace fuzzing {

inline const std::string kPreferences = "/home/user/Library/Preferences/";
inline const std::string kFolder = kPreferences + "KelvoTouchDisplay/";
inline const std::string kUtilities = kFolder + "Utilities.plist";

/// What the pane shell shows, and the state behind it.
struct Shell {
    bool isTabViewHidden = false;
    bool isStatusBarStateHidden = false;
    bool isTabPopUpHidden = false;
    bool isAlertHidden = false;
    bool isChooserHidden = false;
    std::string alert;
    std::vector<std::string> chooserTitles;
    int chosen = -1;
    int tab = 0;
    int tabItem = 0;
    int statusBarState = 0;
    std::optional<std::string> modelType = "";
    std::optional<std::vector<std::string>> devices;
    bool isDriverEnabled = false;
    bool isVerbose = false;
    std::int32_t currentItemIndex = 0;
    bool isListening = false;

    bool operator==(const Shell&) const = default;
    [[nodiscard]] std::string description() const;
};

/// The whole pane with its real tabs on a platform without a system. What its forms give the controls, bounds, items
/// and actions, is given here.
class PaneOnFakes {
public:
    PaneOnFakes();

    support::FakePlatform platform;

    /// Stores settings with a few gestures for each of the displays "A" and "B".
    void storeSettings();
    [[nodiscard]] KelvoTouchDisplayPref& pane() { return *pane_; }

    /// What a host does before it shows the pane for the first time.
    void load();
    /// A message from a peer.
    void deliver(std::int32_t id, std::span<const std::uint8_t> payload);

    /// Shows a tab as the user does.
    void showTab(int index) { tabPopUp_.performSelectItemAtIndex(index); }
    /// Shows a tab as the tab view itself does.
    void selectTab(int index) { tabView_.selectTabViewItemAtIndex(index); }
    void pickDevice(int index) { chooser_.performSelectItemAtIndex(index); }
    void clickStatusBox() { statusBarState_.performClick(); }
    /// Does something to each control there is, in turn.
    void useEveryControl(Input& script);
    /// One thing that may happen while the pane is shown: an act of the user on any control, time that passes, an alert
    /// that is closed, a peer that comes or goes, or a message in the middle of the next send.
    void act(Input& script);
    /// The same, but the user acts on the tabs alone and no message comes.
    void actOnTabs(Input& script);

    [[nodiscard]] Shell shell();
    /// Ends the run unless the tabs' controls mirror the records they stand for.
    void requireMirrors();
    /// Ends the run unless every message that was sent was a dictionary.
    void requireDecodablePayloads();

private:
    [[nodiscard]] KelvoTouchDisplayPref::Tabs newTabs();
    void bindForms();
    void use(platform::NSView& view, Input& script);
    void closeAlert(Input& script);
    void changePeer(Input& script);
    void scheduleMessage(Input& script);
    /// The rows in the gesture list's area, those that were left standing included.
    [[nodiscard]] std::vector<TDGesturesCellView*> rows();
    [[nodiscard]] std::vector<platform::NSView*> tabControls();
    [[nodiscard]] std::vector<platform::NSView*> controls();

    TDCalibrationViewCtl* calibration_ = nullptr;
    TDHardwareInformationViewCtl* hardware_ = nullptr;
    TDSettingViewCtl* setting_ = nullptr;
    TDVersionViewCtl* version_ = nullptr;
    // Buttons that only have an action.
    platform::NSButton normalSpeed_;
    platform::NSButton normalRange_;
    platform::NSButton hideStatusBar_;
    std::unique_ptr<KelvoTouchDisplayPref> pane_;

    // The controls that are looked at again and again.
    platform::NSTabView& tabView_;
    platform::NSPopUpButton& tabPopUp_;
    platform::NSButton& statusBarState_;
    platform::NSTextField& alert_;
    platform::NSView& chooserView_;
    platform::NSPopUpButton& chooser_;
    platform::NSMatrix& calibrationMode_;
    platform::NSTextField& width_;
    platform::NSTextField& height_;
    platform::NSView& gestureView_;
};

/// The bytes of a text.
[[nodiscard]] inline std::span<const std::uint8_t> bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

} // namespace fuzzing
