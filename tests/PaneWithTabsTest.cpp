#include "HardwareInfo/TDHardwareInformationViewCtl.h"
#include "Information/TDVersionViewCtl.h"
#include "KelvoTouchDisplayPref.h"
#include "Properties/TDSettingViewCtl.h"
#include "TDCalibrationViewCtl.h"
#include "TDCurrentDevice.h"
#include "TDGestureCatalogue.h"
#include "TDNames.h"
#include "support/FakePlatform.h"
#include "support/FormStandIn.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using support::arrayOf;
using support::dictionaryOf;
using testing::SizeIs;

constexpr char kDriver[] = "TouchDisplayDriverMessagePort";
const std::string kFolder = "/home/user/Library/Preferences/KelvoTouchDisplay";

/// The whole pane, shown at its touch settings tab for one display with a stored gesture list.
class PaneWithTabs : public testing::Test {
protected:
    PaneWithTabs() {
        platform.setPlist(kFolder + "/Utilities.plist", dictionaryOf({{1, keys::selectedMenuItem},
                                                                      {true, keys::driverEnable},
                                                                      {arrayOf({"A"}), keys::currentDeviceType}}));
        platform.setPlist(kFolder + "/Settings_A.plist",
                          dictionaryOf({{initGesturesInformationForLion(), keys::gestureArray}}));
        platform.setPlist("/home/user/Library/Preferences/.GlobalPreferences.plist",
                          dictionaryOf({{true, "AppleEnableSwipeNavigateWithScrolls"}}));
        auto setting = std::make_unique<TDSettingViewCtl>();
        auto version = std::make_unique<TDVersionViewCtl>();
        settingTab = setting.get();
        versionTab = version.get();
        pane = std::make_unique<KelvoTouchDisplayPref>(KelvoTouchDisplayPref::Tabs{
            .calibration = std::make_unique<TDCalibrationViewCtl>(),
            .hardwareInformation = std::make_unique<TDHardwareInformationViewCtl>(),
            .setting = std::move(setting),
            .version = std::move(version),
        });
        for (int i = 0; i < 4; ++i) support::outlet<platform::NSTabView>(*pane, "tabView_").addTabViewItem("tab");
        (void)settingTab->view();
        pane->mainViewDidLoad();
        pane->willSelect();
        platform.log.lines.clear();
    }

    /// The rows shown now.
    std::vector<platform::NSNibOwner*> rows() {
        const auto& owners = platform.nibs.owners;
        return {owners.end() - static_cast<std::ptrdiff_t>(shownRows()), owners.end()};
    }
    std::size_t shownRows() { return support::outlet<platform::NSView>(*settingTab, "gestureView_").subviews().size(); }

    void connectAgain() { platform.ports.deliver(kPreferencePortName, 7, dictionaryOf({{true, keys::isConnected}})); }

    support::FakePlatform platform;
    TDSettingViewCtl* settingTab = nullptr;
    TDVersionViewCtl* versionTab = nullptr;
    std::unique_ptr<KelvoTouchDisplayPref> pane;
};

TEST_F(PaneWithTabs, RebuildsItsRowsWhileOneOfThemIsSendingAndThatOneFinishes) {
    ASSERT_THAT(rows(), SizeIs(12));
    constexpr std::size_t pages = 6;
    constexpr std::size_t fullScreen = 7;
    const platform::NSMutableArray oldList = gSettings;
    platform.ports.peers[kDriver] = support::MemoryPorts::Peer::Hung;
    platform.runLoop.scheduleTimer(0.5, [this] { connectAgain(); });

    support::outlet<platform::NSPopUpButton>(*rows()[pages], "m_gestures").performSelectItemAtIndex(2);

    const auto record = [](const platform::NSMutableArray& list, std::size_t i) {
        return platform::Value(list.objectAtIndex(i)).dictionary().objectForKey(keys::selectedIndex).intValue();
    };
    EXPECT_EQ(record(oldList, pages), 1);
    EXPECT_EQ(record(oldList, fullScreen), 1);
    ASSERT_THAT(rows(), SizeIs(12));
    EXPECT_FALSE(gSettings.isIdenticalTo(oldList));
    EXPECT_EQ(record(gSettings, pages), 0);
    auto& newMenu = support::outlet<platform::NSPopUpButton>(*rows()[pages], "m_gestures");
    EXPECT_EQ(newMenu.indexOfSelectedItem(), 1);
    // The row that made way sent before it was replaced, the chosen one afterwards, with the list there is by then.
    ASSERT_THAT(platform.ports.received, SizeIs(2));
    EXPECT_TRUE(platform.ports.received[0].payload.objectForKey(keys::gestureArray).isEqual(oldList));
    EXPECT_TRUE(platform.ports.received[1].payload.objectForKey(keys::gestureArray).isEqual(gSettings));
}

TEST_F(PaneWithTabs, RebuildsItsRowsWhileTheSenderIsACheckBox) {
    platform.ports.peers[kDriver] = support::MemoryPorts::Peer::Hung;
    platform.runLoop.scheduleTimer(0.5, [this] { connectAgain(); });

    support::outlet<platform::NSButton>(*rows()[0], "clickBtn").performClick();

    ASSERT_THAT(rows(), SizeIs(12));
    EXPECT_EQ(support::outlet<platform::NSButton>(*rows()[0], "clickBtn").state(), 1);
}

TEST_F(PaneWithTabs, LogsAMissingDriverVersionShowsItsTabAndKeepsTheOldText) {
    auto& text = support::outlet<platform::NSTextField>(*versionTab, "versionText_");
    text.setStringValue("0.7");

    support::outlet<platform::NSTabView>(*pane, "tabView_").selectTabViewItemAtIndex(3);

    EXPECT_THAT(platform.log.lines, SizeIs(1));
    EXPECT_EQ(text.stringValue(), "0.7");
    EXPECT_EQ(support::outlet<platform::NSTabView>(*pane, "tabView_").indexOfSelectedTabViewItem(), 3);
}

} // namespace
