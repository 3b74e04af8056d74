#pragma once

#include "Properties/TDGesturesCellView.h"
#include "Properties/TDTestView.h"
#include "TDTabController.h"
#include "platform/Controls.h"
#include "platform/Notifications.h"
#include "platform/PropertyList.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// The touch settings tab: double-click speed and range, right click by long press, areas to try them, and the list of
/// gestures. Every change is sent to the driver at once; the settings file is only read, but for a gesture list that it
/// lacks.
class TDSettingViewCtl : public TDPagedTabController, private platform::NSTextFieldDelegate {
public:
    TDSettingViewCtl();
    ~TDSettingViewCtl() override;

    [[nodiscard]] std::vector<platform::NSOutlet> outlets() override;
    [[nodiscard]] std::vector<platform::NSNibAction> actions() override;

    /// The user switched right click by long press on or off, or changed how long a press is long.
    void setRightClickParameters(platform::NSControl& sender);
    bool controlTextShouldEndEditing(platform::NSTextField& control, const std::string& editor) override;
    bool controlDidFailToFormatStringErrorDescription(platform::NSTextField& control, const std::string& text,
                                                      const std::string& error) override;

    /// Waits, but not for long, while the system writes its preferences, then switches off every gesture whose
    /// counterpart the system has switched off. Nothing is saved or sent.
    void systemPreferenceFileCheck();
    /// Reloads the whole tab for the current device. May wait for the system's preferences for about eleven seconds.
    void updateUIState() override;

    /// Stores one value in the current device's settings file. False when it is the one stored already.
    bool saveItemToInfoPlistForKey(const platform::Value& item, std::string_view key);

    void doubleClickSpeedNormal(platform::NSControl& sender);
    void doubleClickRangeNormal(platform::NSControl& sender);
    void rateSliderValueChange(platform::NSControl& sender);
    void rangeSliderValueChange(platform::NSControl& sender);

    /// Shows the range in every control that does.
    void setRenge();
    void doubleClickOnTestView(const platform::NSNotification& notification);
    void doubleClickOnRateView(const platform::NSNotification& notification);
    void awakeFromNib() override;
    void resetTabView() override;

private:
    void removeRows();
    void takeNewCatalogue(const std::string& settingsPath);
    void setRate(double rate);
    void setRateInTestAreas();
    void loadRightClick(const platform::NSMutableDictionary& settings);
    void buildRows();
    void sendRate();
    void sendRange(const platform::Value& range);

    platform::NSTabView settingTabView_;
    std::vector<std::shared_ptr<TDGesturesCellView>> gersturesViewArray;
    TDTestView rangeView_;
    TDTestView rateView_;
    TDTestView testView_;
    platform::NSSlider rangeSlider_;
    platform::NSSlider rateSlider_;
    platform::NSTextField rengeText_;
    platform::NSMutableArray actionArr;
    platform::NSView gestureView_;
    double doubleClickRate_ = 0.0;
    std::int32_t doubleClickRange_ = 0;
    platform::NSButton rightClickBotton_{platform::NSButton::Type::Switch};
    platform::NSSlider longPressInterval_;
};
