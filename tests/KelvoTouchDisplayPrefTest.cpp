#include "KelvoTouchDisplayPref.h"

#include "ShellFixture.h"
#include "TDCurrentDevice.h"
#include "TDMessages.h"
#include "TDNames.h"
#include "TDUtilities.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

namespace {

using namespace shell;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

using MainViewDidLoad = Pane;

TEST_F(MainViewDidLoad, ResetsTheInnerTabsOfSettingThenHardwareAndRefreshesNothing) {
    setUtilities({"A"}, true, 2);

    pane->mainViewDidLoad();

    EXPECT_THAT(calls, ElementsAre("setting resetTabView", "hardware resetTabView"));
    EXPECT_EQ(tabView().indexOfSelectedTabViewItem(), 0);
}

TEST_F(MainViewDidLoad, ClearsTheStateOfAnEarlierPane) {
    setUtilities({}, false);
    setModelType("old");
    setDevicesModel(std::vector<std::string>{"old"});
    gDriverEnable = true;

    pane->mainViewDidLoad();

    EXPECT_THAT(gModelType, Optional(std::string()));
    EXPECT_THAT(gDeviceModel, Optional(IsEmpty()));
    EXPECT_FALSE(gDriverEnable);
}

TEST_F(MainViewDidLoad, CreatesTheMissingUtilitiesFileAndIsThenDisconnected) {
    pane->mainViewDidLoad();

    expectDisconnected();
    EXPECT_THAT(platform.plist(kUtilitiesPath).allKeys(),
                ElementsAre("SelectedMenuItem", "IsShowStatuMenu", "DriverEnable", "CurrentDeviceType", "VerboseLog"));
}

TEST_F(MainViewDidLoad, WithoutDevicesLeavesTheChooserAsItIs) {
    setUtilities({}, true);
    selectDeviceView().setHidden(false);

    pane->mainViewDidLoad();

    expectDisconnected();
    EXPECT_FALSE(selectDeviceView().isHidden());
}

TEST_F(MainViewDidLoad, WithTheDriverOffShowsThatAndHidesTheChooser) {
    setUtilities({"A", "B"}, false);
    selectDeviceView().setHidden(false);

    pane->mainViewDidLoad();

    expectDriverDisabled();
}

TEST_F(MainViewDidLoad, WithOneDeviceChoosesItAndStoresItsNameBesideTheOtherKeys) {
    setUtilities({"A"}, true, 3);
    alertTextField().setHidden(false);
    selectDeviceView().setHidden(false);
    const NSMutableDictionary before = platform.plist(kUtilitiesPath);

    pane->mainViewDidLoad();

    expectSettingsShown();
    EXPECT_TRUE(alertTextField().isHidden());
    EXPECT_THAT(gModelType, Optional(std::string("A")));
    NSMutableDictionary expected = before;
    expected.setObjectForKey("A", keys::selectDeviceName);
    EXPECT_TRUE(platform.plist(kUtilitiesPath).isEqual(expected));
}

TEST_F(MainViewDidLoad, WithSeveralDevicesShowsTheChooserFilledInOrder) {
    setUtilities({"B", "A", "C"}, true);

    pane->mainViewDidLoad();

    expectChooser();
    EXPECT_THAT(selectDeviceBtn().itemTitles(), ElementsAre("B", "A", "C"));
    EXPECT_EQ(selectDeviceBtn().indexOfSelectedItem(), 0);
    EXPECT_THAT(gModelType, Optional(std::string()));
}

TEST_F(MainViewDidLoad, LogsItselfByTheVerbosityFromBeforeTheCall) {
    setUtilities({}, true);
    setUtilitiesItem(true, keys::verboseLog);

    pane->mainViewDidLoad();
    EXPECT_THAT(platform.log.lines, IsEmpty());
    EXPECT_TRUE(verboseLog);

    setUtilitiesItem(false, keys::verboseLog);
    pane->mainViewDidLoad();
    EXPECT_THAT(platform.log.lines, ElementsAre("mainViewDidLoad"));
    EXPECT_FALSE(verboseLog);
}

using WillSelect = Pane;

TEST_F(WillSelect, WithOneDeviceSelectsTheSavedTabAndRefreshesOnlyItsController) {
    setUtilities({"A"}, true, 2);
    pane->mainViewDidLoad();
    calls.clear();

    pane->willSelect();

    // Once by itself, and once through the tab view, which asks its delegate.
    EXPECT_THAT(calls, ElementsAre("hardware updateUIState", "hardware updateUIState"));
    EXPECT_EQ(tabView().indexOfSelectedTabViewItem(), 2);
    EXPECT_EQ(tabPopUp().indexOfSelectedItem(), 2);
    EXPECT_EQ(sharedPaneState::currentItemIndex(), 2);
    EXPECT_TRUE(utilitiesItem(keys::selectDeviceName).isEqual("A"));
    expectSettingsShown();
}

TEST_F(WillSelect, OnTheTabThatIsShownAlreadyRefreshesOnce) {
    setUtilities({"A"}, true, 0);

    pane->willSelect();

    EXPECT_THAT(calls, ElementsAre("calibration updateUIState"));
}

TEST_F(WillSelect, RefreshesTheTabBeforeItIsSelected) {
    setUtilities({"A"}, true, 1);
    std::vector<int> shownMeanwhile;
    settingTab->during = [&] { shownMeanwhile.push_back(tabView().indexOfSelectedTabViewItem()); };

    pane->willSelect();

    EXPECT_THAT(shownMeanwhile, ElementsAre(0, 0));
    EXPECT_EQ(tabView().indexOfSelectedTabViewItem(), 1);
}

TEST_F(WillSelect, WithASavedTabOfSevenRefreshesTheVersionTabAndAsksForTabSeven) {
    setUtilities({"A"}, true, 7);

    pane->willSelect();

    EXPECT_THAT(calls, ElementsAre("version updateUIState"));
    EXPECT_EQ(sharedPaneState::currentItemIndex(), 7);
    EXPECT_EQ(tabView().indexOfSelectedTabViewItem(), 0);
    EXPECT_EQ(tabPopUp().indexOfSelectedItem(), 0);
}

TEST_F(WillSelect, WithoutASavedTabSelectsTheFirst) {
    platform.setPlist(kUtilitiesPath,
                      dictionaryOf({{true, keys::driverEnable}, {arrayOf({"A"}), keys::currentDeviceType}}));

    pane->willSelect();

    EXPECT_THAT(calls, ElementsAre("calibration updateUIState"));
    EXPECT_EQ(statusBarState().state(), 0);
}

TEST_F(WillSelect, ReadsASavedTabBeyondThirtyTwoBitsAsTheLargest) {
    setUtilities({"A"}, true);
    setUtilitiesItem(std::int64_t{1} << 40, keys::selectedMenuItem);

    pane->willSelect();

    EXPECT_EQ(sharedPaneState::currentItemIndex(), std::numeric_limits<std::int32_t>::max());
}

TEST_F(WillSelect, WithTwoDevicesShowsOnlyTheChooserLogsReturnAndSelectsNoTab) {
    setUtilities({"A", "B"}, true, 2);
    pane->mainViewDidLoad();
    calls.clear();

    pane->willSelect();

    expectChooser();
    EXPECT_THAT(platform.log.lines, ElementsAre("return"));
    EXPECT_THAT(calls, IsEmpty());
    EXPECT_EQ(tabView().indexOfSelectedTabViewItem(), 0);
}

TEST_F(WillSelect, WithTwoDevicesOneOfThemChosenBeforeRefreshesItsTabBehindTheChooser) {
    setUtilities({"A", "B"}, true, 1);
    setModelType("B");

    pane->willSelect();

    expectChooser();
    EXPECT_THAT(calls, ElementsAre("setting updateUIState", "setting updateUIState"));
    EXPECT_THAT(platform.log.lines, IsEmpty());
}

TEST_F(WillSelect, WithoutDevicesHidesSettingsAndChooserAndLeavesTheAlertAsItIs) {
    setUtilities({}, true);
    selectDeviceView().setHidden(false);

    pane->willSelect();

    EXPECT_TRUE(isSettingsGroupHidden());
    EXPECT_TRUE(selectDeviceView().isHidden());
    EXPECT_TRUE(alertTextField().isHidden());
    EXPECT_EQ(alertTextField().stringValue(), "");
    EXPECT_THAT(platform.log.lines, ElementsAre("return"));
}

TEST_F(WillSelect, WithOneDeviceLeavesTheAlertAsItIs) {
    setUtilities({"A"}, true);
    alertTextField().setHidden(false);

    pane->willSelect();

    expectSettingsShown();
    EXPECT_FALSE(alertTextField().isHidden());
}

TEST_F(WillSelect, WithTheDriverOffShowsThatAndLogsReturn) {
    setUtilities({"A"}, false);

    pane->willSelect();

    expectDriverDisabled();
    EXPECT_THAT(platform.log.lines, ElementsAre("return"));
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(WillSelect, SetsTheStatusMenuCheckBoxFromTheFile) {
    setUtilities({"A"}, true);
    pane->willSelect();
    EXPECT_EQ(statusBarState().state(), 1);

    setUtilitiesItem(false, keys::isShowStatuMenu);
    pane->willSelect();
    EXPECT_EQ(statusBarState().state(), 0);
}

TEST_F(WillSelect, TwiceKeepsTheOneOpenPortAndAfterWillUnselectOpensANewOne) {
    setUtilities({"A"}, true);

    pane->willSelect();
    pane->willSelect();
    EXPECT_EQ(platform.ports.opened, 1);
    EXPECT_TRUE(platform.ports.isListening("PreferenceMessagePort"));

    pane->willUnselect();
    EXPECT_FALSE(platform.ports.isListening("PreferenceMessagePort"));

    pane->willSelect();
    EXPECT_EQ(platform.ports.opened, 2);
    EXPECT_TRUE(platform.ports.isListening("PreferenceMessagePort"));
}

TEST_F(WillSelect, OpensThePortInEveryState) {
    setUtilities({}, false);

    pane->willSelect();

    EXPECT_TRUE(platform.ports.isListening("PreferenceMessagePort"));
}

TEST_F(WillSelect, WithThePortsNameTakenTriesAgainTheNextTime) {
    setUtilities({"A"}, true);
    platform.ports.takenNames = {"PreferenceMessagePort"};
    pane->willSelect();
    EXPECT_FALSE(platform.ports.isListening("PreferenceMessagePort"));

    platform.ports.takenNames.clear();
    pane->willSelect();
    EXPECT_TRUE(platform.ports.isListening("PreferenceMessagePort"));
}

TEST_F(WillSelect, LeavesNoPortBehindWhenThePaneIsLeftWhileThatOpens) {
    setUtilities({"A"}, true);
    platform.ports.duringOpening = [&] { pane->willUnselect(); };

    pane->willSelect();

    EXPECT_FALSE(platform.ports.isListening("PreferenceMessagePort"));
}

TEST_F(WillSelect, LogsItselfByTheVerbosityFromBeforeTheCall) {
    setUtilities({}, true);
    setUtilitiesItem(true, keys::verboseLog);

    pane->willSelect();
    EXPECT_THAT(platform.log.lines, ElementsAre("return"));

    platform.log.lines.clear();
    pane->willSelect();
    EXPECT_THAT(platform.log.lines, ElementsAre("willSelect", "return"));
}

TEST_F(WillSelect, LogsAnErrorOfTheTabAndTakesItsRemainingSteps) {
    setUtilities({"A"}, true, 3);
    versionTab->during = [] { throw std::invalid_argument("a text is missing"); };

    pane->willSelect();

    EXPECT_THAT(platform.log.lines, ElementsAre("a text is missing", "a text is missing"));
    EXPECT_EQ(statusBarState().state(), 1);
    EXPECT_EQ(tabView().indexOfSelectedTabViewItem(), 3);
    EXPECT_EQ(tabPopUp().indexOfSelectedItem(), 3);
}

TEST_F(WillSelect, MakesThePaneTheSelectedOneUntilItIsGone) {
    setUtilities({}, true);

    pane->willSelect();
    EXPECT_EQ(sharedPaneState::panelPref(), pane.get());

    pane->willUnselect();
    EXPECT_EQ(sharedPaneState::panelPref(), pane.get());

    pane.reset();
    EXPECT_EQ(sharedPaneState::panelPref(), nullptr);
}

TEST_F(WillSelect, WithADamagedUtilitiesFileShowsNothingAndLeavesTheFileAsItIs) {
    platform.files.setText(kUtilitiesPath, "<plist><dict><key>CurrentDeviceType");

    pane->mainViewDidLoad();
    pane->willSelect();

    expectDisconnected();
    EXPECT_EQ(platform.files.textOf(kUtilitiesPath), "<plist><dict><key>CurrentDeviceType");
}

TEST_F(WillSelect, TakesADeviceListOfAnotherKindAsNone) {
    setUtilities({}, true);
    setUtilitiesItem("A", keys::currentDeviceType);

    pane->mainViewDidLoad();

    expectDisconnected();
    EXPECT_EQ(gDeviceModel, std::nullopt);
}

TEST_F(WillSelect, CountsOnlyTheNamesOfADeviceList) {
    setUtilities({17, "A", dictionaryOf({})}, true);

    pane->willSelect();

    expectSettingsShown();
    EXPECT_THAT(gModelType, Optional(std::string("A")));
}

TEST_F(WillSelect, ReadsTheFlagsFromNumbersAndTexts) {
    setUtilities({"A"}, false);
    setUtilitiesItem("YES", keys::driverEnable);
    setUtilitiesItem("2", keys::selectedMenuItem);
    setUtilitiesItem(1.0, keys::isShowStatuMenu);

    pane->willSelect();

    expectSettingsShown();
    EXPECT_EQ(sharedPaneState::currentItemIndex(), 2);
    EXPECT_EQ(statusBarState().state(), 1);
}

TEST(WillUnselect, WithoutAnOpenPortDoesNothing) {
    support::FakePlatform platform;
    Lines calls;
    auto newTab = [&] { return std::make_unique<RecordedTab>("tab", calls); };
    KelvoTouchDisplayPref pane({newTab(), newTab(), newTab(), newTab()});

    pane.willUnselect();

    EXPECT_THAT(calls, IsEmpty());
    EXPECT_THAT(platform.log.lines, IsEmpty());
}

using DeviceChooser = Pane;

TEST_F(DeviceChooser, SelectsTheDeviceChosenLast) {
    setUtilities({"A", "B"}, true);
    setUtilitiesItem("B", keys::selectDeviceName);

    pane->willSelect();

    EXPECT_THAT(selectDeviceBtn().titleOfSelectedItem(), Optional(std::string("B")));
}

TEST_F(DeviceChooser, IgnoresALastChoiceThatIsNotConnected) {
    setUtilities({"A", "B"}, true);
    setUtilitiesItem("C", keys::selectDeviceName);

    pane->willSelect();

    EXPECT_THAT(selectDeviceBtn().titleOfSelectedItem(), Optional(std::string("A")));
}

TEST_F(DeviceChooser, HasOneItemPerNameHoweverOftenItIsShown) {
    setUtilities({"A", "A", "B"}, true);

    pane->mainViewDidLoad();
    pane->willSelect();

    EXPECT_THAT(selectDeviceBtn().itemTitles(), ElementsAre("A", "A", "B"));
}

TEST_F(DeviceChooser, ChangesAsOftenForTenThousandNamesAsForTwo) {
    const auto changesFor = [&](int count) {
        auto names = platform::NSMutableArray::arrayWithObjects();
        for (int i = 0; i < count; ++i) names.addObject("Display " + std::to_string(i));
        setUtilitiesItem(names, keys::currentDeviceType);
        pane->mainViewDidLoad();
        int changes = 0;
        const platform::Subscription subscription = selectDeviceBtn().observeChanges([&] { ++changes; });
        pane->willSelect();
        EXPECT_EQ(selectDeviceBtn().itemTitles().size(), static_cast<std::size_t>(count));
        return changes;
    };
    setUtilities({}, true);
    const int changesForTwo = changesFor(2);
    EXPECT_EQ(changesFor(10'000), changesForTwo);
}

TEST_F(DeviceChooser, AChoiceStoresTheNameAndShowsTheSettings) {
    setUtilities({"A", "B"}, true, 0);
    show();
    alertTextField().setHidden(false);

    selectDeviceBtn().performSelectItemAtIndex(1);

    EXPECT_THAT(gModelType, Optional(std::string("B")));
    EXPECT_TRUE(utilitiesItem(keys::selectDeviceName).isEqual("B"));
    expectSettingsShown();
    EXPECT_TRUE(alertTextField().isHidden());
    EXPECT_EQ(statusBarState().state(), 1);
}

TEST_F(DeviceChooser, AChoiceOfTheSelectedItemCountsToo) {
    setUtilities({"A", "B"}, true, 0);
    show();

    selectDeviceBtn().performSelectItemAtIndex(0);

    EXPECT_THAT(gModelType, Optional(std::string("A")));
    expectSettingsShown();
}

TEST_F(DeviceChooser, AChoiceRefreshesTheLastTabBeforeThatIsSelectedAgain) {
    setUtilities({"A", "B"}, true);
    show();
    receive(kMessageIDForSelectedMenuItem, dictionaryOf({{1, keys::selectedMenuItem}}));
    calls.clear();
    std::vector<std::pair<int, bool>> shownMeanwhile;
    settingTab->during = [&] {
        shownMeanwhile.emplace_back(tabView().indexOfSelectedTabViewItem(), tabView().isHidden());
    };

    selectDeviceBtn().performSelectItemAtIndex(1);

    EXPECT_THAT(calls, ElementsAre("setting updateUIState", "setting updateUIState"));
    EXPECT_THAT(shownMeanwhile, ElementsAre(std::pair(0, true), std::pair(0, false)));
    EXPECT_EQ(tabView().indexOfSelectedTabViewItem(), 1);
    EXPECT_EQ(tabPopUp().indexOfSelectedItem(), 1);
}

TEST_F(DeviceChooser, AChoiceFromAnEmptyChooserLeavesNoDeviceAtAll) {
    setUtilities({"A", "B"}, true);
    show();
    selectDeviceBtn().removeAllItems();
    const std::string before = platform.files.textOf(kUtilitiesPath);

    pane->selectDeviceForSetting(selectDeviceBtn());

    EXPECT_EQ(gModelType, std::nullopt);
    EXPECT_EQ(platform.files.textOf(kUtilitiesPath), before);
    expectSettingsShown();
}

using TabSwitch = Pane;

TEST_F(TabSwitch, ByThePopUpLogsStoresTheIndexAndRefreshesTheTab) {
    setUtilities({"A"}, true);
    show();

    tabPopUp().performSelectItemAtIndex(2);

    EXPECT_THAT(platform.log.lines, ElementsAre("selectItem....."));
    EXPECT_EQ(tabView().indexOfSelectedTabViewItem(), 2);
    EXPECT_EQ(sharedPaneState::currentItemIndex(), 2);
    EXPECT_EQ(utilitiesItem(keys::selectedMenuItem).kind(), Value::Kind::Integer);
    EXPECT_TRUE(utilitiesItem(keys::selectedMenuItem).isEqual(2));
    EXPECT_THAT(calls, ElementsAre("hardware updateUIState"));
}

TEST_F(TabSwitch, ToTheTabThatIsShownChangesNothing) {
    setUtilities({"A"}, true);
    show();

    tabPopUp().performSelectItemAtIndex(0);

    EXPECT_THAT(platform.log.lines, ElementsAre("selectItem....."));
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(TabSwitch, LogsTheSaveWhenVerbose) {
    setUtilities({"A"}, true);
    show();
    verboseLog = true;

    tabPopUp().performSelectItemAtIndex(1);

    EXPECT_THAT(platform.log.lines, ElementsAre("selectItem.....", "save OK"));
}

TEST_F(TabSwitch, WithAFullDiskIsNotStoredAndSaysNothing) {
    setUtilities({"A"}, true);
    show();
    verboseLog = true;
    platform.files.isDiskFull = true;

    tabPopUp().performSelectItemAtIndex(1);

    EXPECT_THAT(platform.log.lines, ElementsAre("selectItem....."));
    EXPECT_TRUE(utilitiesItem(keys::selectedMenuItem).isEqual(0));
    EXPECT_THAT(calls, ElementsAre("setting updateUIState"));
}

TEST_F(TabSwitch, WithoutAUtilitiesFileStoresTheIndexAlone) {
    setUtilities({"A"}, true);
    show();
    platform.files.files.clear();

    tabPopUp().performSelectItemAtIndex(3);

    EXPECT_TRUE(platform.plist(kUtilitiesPath).isEqual(dictionaryOf({{3, keys::selectedMenuItem}})));
}

TEST_F(TabSwitch, WithNoDeviceChosenAndAnEmptyListLogsThatAndStoresNothing) {
    setUtilities({}, true);
    const std::string before = platform.files.textOf(kUtilitiesPath);

    tabView().selectTabViewItemAtIndex(2);

    EXPECT_THAT(platform.log.lines, ElementsAre("gModelType == nil"));
    EXPECT_EQ(platform.files.textOf(kUtilitiesPath), before);
    EXPECT_EQ(sharedPaneState::currentItemIndex(), 0);
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(TabSwitch, WithNoDeviceChosenAndAnEmptyTextInPlaceOfTheListStops) {
    setUtilities({}, true);
    setUtilitiesItem("", keys::currentDeviceType);

    tabView().selectTabViewItemAtIndex(2);

    EXPECT_THAT(platform.log.lines, ElementsAre("gModelType == nil"));
}

TEST_F(TabSwitch, WithNoDeviceChosenAndNoListAtAllGoesOnWithNoDevice) {
    platform.setPlist(kUtilitiesPath, dictionaryOf({{true, keys::driverEnable}}));

    tabView().selectTabViewItemAtIndex(2);

    EXPECT_EQ(gModelType, std::nullopt);
    EXPECT_TRUE(utilitiesItem(keys::selectedMenuItem).isEqual(2));
    EXPECT_THAT(calls, ElementsAre("hardware updateUIState"));
    EXPECT_THAT(platform.log.lines, IsEmpty());
}

TEST_F(TabSwitch, WithNoDeviceChosenTakesTheFirstNameOfTheList) {
    setUtilities({"A", "B"}, true);

    tabView().selectTabViewItemAtIndex(1);

    EXPECT_THAT(gModelType, Optional(std::string("A")));
    EXPECT_THAT(calls, ElementsAre("setting updateUIState"));
}

TEST_F(TabSwitch, WithNoDeviceChosenTakesATextInPlaceOfTheListAsItIs) {
    setUtilities({}, true);
    setUtilitiesItem("C", keys::currentDeviceType);

    tabView().selectTabViewItemAtIndex(1);

    EXPECT_THAT(gModelType, Optional(std::string("C")));
}

TEST_F(TabSwitch, LogsAnErrorOfTheTabAndShowsTheTab) {
    setUtilities({"A"}, true);
    show();
    versionTab->during = [] { throw std::invalid_argument("a text is missing"); };

    tabPopUp().performSelectItemAtIndex(3);

    EXPECT_THAT(platform.log.lines, ElementsAre("selectItem.....", "a text is missing"));
    EXPECT_EQ(tabView().indexOfSelectedTabViewItem(), 3);
}

using StatusMenu = Pane;

TEST_F(StatusMenu, SwitchedOnLaunchesTheUtilitySendsNothingAndStoresIt) {
    setUtilities({"A"}, true);
    setUtilitiesItem(false, keys::isShowStatuMenu);
    show();
    platform.ports.peers["StatusBarMessagePort"] = support::MemoryPorts::Peer::Answers;

    statusBarState().performClick();

    EXPECT_THAT(platform.application.requests,
                ElementsAre("launch /Library/Application Support/KelvoTouchDisplay/StatusBarApp/"
                            "KelvoTouchDisplaySettingUtility.app"));
    EXPECT_THAT(platform.ports.received, IsEmpty());
    EXPECT_EQ(utilitiesItem(keys::isShowStatuMenu).kind(), Value::Kind::Boolean);
    EXPECT_TRUE(utilitiesItem(keys::isShowStatuMenu).boolValue());
    EXPECT_EQ(statusBarState().state(), 1);
}

TEST_F(StatusMenu, SwitchedOnIsStoredAlsoWhenTheUtilityIsMissing) {
    setUtilities({"A"}, true);
    setUtilitiesItem(false, keys::isShowStatuMenu);
    show();
    platform.application.canLaunch = false;

    statusBarState().performClick();

    EXPECT_TRUE(utilitiesItem(keys::isShowStatuMenu).boolValue());
    EXPECT_THAT(platform.log.lines, IsEmpty());
}

TEST_F(StatusMenu, SwitchedOffTellsTheUtilityAndStoresIt) {
    setUtilities({"A"}, true);
    show();
    platform.ports.peers["StatusBarMessagePort"] = support::MemoryPorts::Peer::Answers;

    statusBarState().performClick();

    ASSERT_EQ(platform.ports.received.size(), 1U);
    EXPECT_EQ(platform.ports.received[0].port, "StatusBarMessagePort");
    EXPECT_EQ(platform.ports.received[0].id, 10);
    EXPECT_EQ(Value(platform.ports.received[0].payload).description(), "{ IsShowStatuMenu = 0; }");
    EXPECT_EQ(platform.ports.received[0].payload.objectForKey("IsShowStatuMenu").kind(), Value::Kind::Boolean);
    EXPECT_FALSE(utilitiesItem(keys::isShowStatuMenu).boolValue());
    EXPECT_THAT(platform.application.requests, IsEmpty());
}

TEST_F(StatusMenu, SwitchedOffWithNoUtilityRunningIsStoredAndLogsNothing) {
    setUtilities({"A"}, true);
    show();

    statusBarState().performClick();

    EXPECT_FALSE(utilitiesItem(keys::isShowStatuMenu).boolValue());
    EXPECT_THAT(platform.log.lines, IsEmpty());
}

TEST_F(StatusMenu, WithoutAUtilitiesFileStoresTheChoiceAlone) {
    setUtilities({"A"}, true);
    show();
    platform.files.files.clear();

    statusBarState().performClick();

    EXPECT_TRUE(platform.plist(kUtilitiesPath).isEqual(dictionaryOf({{false, keys::isShowStatuMenu}})));
}

TEST_F(StatusMenu, SwitchedOffByTheUtilityShowsWhenThePaneHearsOfItsDisplay) {
    setUtilities({"KD-55"}, true);
    show();
    EXPECT_EQ(statusBarState().state(), 1);

    setUtilitiesItem(false, keys::isShowStatuMenu);
    receive(kMessageIDForDeviceIsConnected, dictionaryOf({{true, keys::isConnected}}));

    EXPECT_EQ(statusBarState().state(), 0);
}

TEST_F(StatusMenu, HiddenByThePaneChangesPaneAndFileAndTellsNobody) {
    setUtilities({"A"}, true);
    show();
    platform.ports.peers["StatusBarMessagePort"] = support::MemoryPorts::Peer::Answers;

    pane->hideStatusBar();

    EXPECT_EQ(statusBarState().state(), 0);
    EXPECT_FALSE(utilitiesItem(keys::isShowStatuMenu).boolValue());
    EXPECT_THAT(platform.ports.received, IsEmpty());
    EXPECT_THAT(platform.application.requests, IsEmpty());
}

using Message8 = Pane;

TEST_F(Message8, WithoutDevicesDoesNothing) {
    setUtilities({}, true);
    show();

    receive(8, dictionaryOf({{2, "SelectedMenuItem"}}));

    EXPECT_EQ(tabView().indexOfSelectedTabViewItem(), 0);
    EXPECT_THAT(platform.application.requests, IsEmpty());
    EXPECT_EQ(platform.runLoop.pendingTimers(), 0U);
}

TEST_F(Message8, WithOneDeviceAndAnotherTabActivatesAndSelectsIt) {
    setUtilities({"A"}, true);
    show();

    receive(8, dictionaryOf({{2, "SelectedMenuItem"}}));

    EXPECT_THAT(platform.application.requests, ElementsAre("activate"));
    EXPECT_EQ(tabView().indexOfSelectedTabViewItem(), 2);
    EXPECT_EQ(tabPopUp().indexOfSelectedItem(), 2);
    EXPECT_THAT(calls, ElementsAre("hardware updateUIState"));
    EXPECT_TRUE(utilitiesItem(keys::selectDeviceName).isEqual("A"));
    platform.runLoop.advance(0.1);
    EXPECT_THAT(platform.application.requests, ElementsAre("activate", "endSheet"));
}

TEST_F(Message8, WithOneDeviceAndTheCurrentTabNeitherActivatesNorEndsASheetButStillSelectsIt) {
    setUtilities({"A"}, true, 2);
    show();
    tabPopUp().selectItemAtIndex(0);

    receive(8, dictionaryOf({{2, "SelectedMenuItem"}}));

    EXPECT_THAT(platform.application.requests, IsEmpty());
    EXPECT_EQ(platform.runLoop.pendingTimers(), 0U);
    EXPECT_EQ(tabPopUp().indexOfSelectedItem(), 2);
}

TEST_F(Message8, WithOneDeviceTakesTheLowEightBits) {
    setUtilities({"A"}, true);
    show();

    receive(8, dictionaryOf({{258, "SelectedMenuItem"}}));

    EXPECT_EQ(tabView().indexOfSelectedTabViewItem(), 2);
    EXPECT_EQ(sharedPaneState::currentItemIndex(), 2);
}

TEST_F(Message8, WithOneDeviceTakesTheLowBitsOfTheLargestNumbers) {
    setUtilities({"A"}, true);
    show();

    receive(8, dictionaryOf({{std::numeric_limits<std::uint64_t>::max() - 253, "SelectedMenuItem"}}));

    EXPECT_EQ(sharedPaneState::currentItemIndex(), 2);
}

TEST_F(Message8, WithTwoDevicesActivatesRemembersTheTabAndShowsTheChooser) {
    setUtilities({"A", "B"}, true);
    show();

    receive(8, dictionaryOf({{(std::int64_t{1} << 32) + 3, "SelectedMenuItem"}}));

    EXPECT_THAT(platform.application.requests, ElementsAre("activate"));
    EXPECT_EQ(sharedPaneState::currentItemIndex(), 3);
    expectChooser();
    EXPECT_EQ(tabView().indexOfSelectedTabViewItem(), 0);
}

TEST_F(Message8, SelectsInThePaneThatWasSelectedLast) {
    setUtilities({"A"}, true);
    Lines otherCalls;
    auto newTab = [&] { return std::make_unique<RecordedTab>("tab", otherCalls); };
    KelvoTouchDisplayPref other({newTab(), newTab(), newTab(), newTab()});
    auto& otherTabs = support::outlet<platform::NSTabView>(other, "tabView_");
    for (int i = 0; i < 4; ++i) otherTabs.addTabViewItem("tab");
    show();
    other.willSelect();

    receive(8, dictionaryOf({{3, "SelectedMenuItem"}}));

    EXPECT_EQ(otherTabs.indexOfSelectedTabViewItem(), 3);
    EXPECT_EQ(tabView().indexOfSelectedTabViewItem(), 0);
}

using Message7 = Pane;

TEST_F(Message7, LogsTheCurrentDeviceWithTwoBlanks) {
    setUtilities({"A"}, true);
    show();

    receive(7, dictionaryOf({{true, "IsConnected"}}));

    EXPECT_THAT(platform.log.lines, ElementsAre("kMessageIDForDeviceIsConnected  A"));
}

TEST_F(Message7, LogsNoDeviceAsNull) {
    setUtilities({}, true);
    show();
    setModelType(std::nullopt);

    receive(7, dictionaryOf({{true, "IsConnected"}}));

    EXPECT_THAT(platform.log.lines, ElementsAre("kMessageIDForDeviceIsConnected  (null)"));
}

TEST_F(Message7, ConnectedWithoutDevicesDoesNothing) {
    setUtilities({}, true);
    show();

    receive(7, dictionaryOf({{true, "IsConnected"}}));

    expectDisconnected();
    EXPECT_THAT(platform.application.requests, IsEmpty());
}

TEST_F(Message7, ConnectedWithOneDeviceChoosesItAndShowsItsSettings) {
    setUtilities({}, true, 1);
    show();
    setUtilities({"A"}, true, 1);

    receive(7, dictionaryOf({{true, "IsConnected"}}));

    expectSettingsShown();
    EXPECT_THAT(gModelType, Optional(std::string("A")));
    EXPECT_TRUE(utilitiesItem(keys::selectDeviceName).isEqual("A"));
    EXPECT_THAT(calls, ElementsAre("setting updateUIState", "setting updateUIState"));
    EXPECT_THAT(platform.application.requests, IsEmpty());
}

TEST_F(Message7, ConnectedWithTwoDevicesShowsTheChooserOnlyWhenTheFileSaysTheDriverIsOn) {
    setUtilities({"A"}, true);
    show();

    setUtilities({"A", "B"}, false);
    receive(7, dictionaryOf({{true, "IsConnected"}}));
    expectSettingsShown();

    setUtilities({"A", "B"}, true);
    receive(7, dictionaryOf({{true, "IsConnected"}}));
    expectChooser();
}

TEST_F(Message7, DisconnectedWithoutDevicesActivatesAndShowsThatAndEndsTheSheetATenthOfASecondLater) {
    setUtilities({"A"}, true);
    show();
    setUtilities({}, true);

    receive(7, dictionaryOf({{false, "IsConnected"}}));

    expectDisconnected();
    EXPECT_TRUE(selectDeviceView().isHidden());
    EXPECT_THAT(platform.application.requests, ElementsAre("activate"));
    platform.runLoop.advance(0.099);
    EXPECT_THAT(platform.application.requests, ElementsAre("activate"));
    platform.runLoop.advance(0.001);
    EXPECT_THAT(platform.application.requests, ElementsAre("activate", "endSheet"));
}

TEST_F(Message7, DisconnectedWithOneDeviceLeftActivatesAndChoosesIt) {
    setUtilities({"A", "B"}, true);
    show();
    setUtilities({"B"}, true);

    receive(7, dictionaryOf({{false, "IsConnected"}}));

    expectSettingsShown();
    EXPECT_THAT(gModelType, Optional(std::string("B")));
    EXPECT_THAT(platform.application.requests, ElementsAre("activate"));
}

TEST_F(Message7, DisconnectedWithTwoDevicesLeftOnlyActivates) {
    setUtilities({"A", "B", "C"}, true);
    show();
    selectDeviceBtn().performSelectItemAtIndex(2);
    setUtilities({"A", "B"}, true);

    receive(7, dictionaryOf({{false, "IsConnected"}}));

    expectSettingsShown();
    EXPECT_THAT(gModelType, Optional(std::string("C")));
    EXPECT_THAT(platform.application.requests, ElementsAre("activate"));
}

TEST_F(Message7, WithAnUndecodablePayloadReadsAsDisconnected) {
    setUtilities({"A"}, true);
    show();
    setUtilities({}, true);

    platform.ports.deliver(kPreferencePortName, 7, platform::NSData{0xFF, 0x00});

    expectDisconnected();
}

using Message4 = Pane;

TEST_F(Message4, OverridesTheFile) {
    setUtilities({"A"}, true);
    show();

    receive(4, dictionaryOf({{false, "DriverEnable"}}));

    EXPECT_FALSE(gDriverEnable);
    expectDriverDisabled();
}

TEST_F(Message4, OffWithOneDeviceShowsThatAndActivatesAfterwards) {
    setUtilities({"A"}, true);
    show();

    receive(4, dictionaryOf({{false, "DriverEnable"}}));

    expectDriverDisabled();
    EXPECT_THAT(platform.application.requests, ElementsAre("activate"));
    EXPECT_THAT(platform.log.lines, IsEmpty());
    platform.runLoop.advance(0.1);
    EXPECT_THAT(platform.application.requests, ElementsAre("activate", "endSheet"));
}

TEST_F(Message4, OffWithoutDevicesShowsThatNoneIsConnected) {
    setUtilities({}, true);
    pane->willSelect();

    receive(4, dictionaryOf({{false, "DriverEnable"}}));

    expectDisconnected();
}

TEST_F(Message4, OffIsLoggedWhenVerbose) {
    setUtilities({"A"}, true);
    show();
    verboseLog = true;

    receive(4, dictionaryOf({{false, "DriverEnable"}}));

    EXPECT_THAT(platform.log.lines, ElementsAre(" device  COMMAND_DRIVER_DISABLE "));
}

TEST_F(Message4, OnWithOneDeviceChoosesIt) {
    setUtilities({"A"}, false);
    show();
    setUtilities({"A"}, true);

    receive(4, dictionaryOf({{true, "DriverEnable"}}));

    expectSettingsShown();
    EXPECT_THAT(calls, ElementsAre("calibration updateUIState"));
    EXPECT_THAT(platform.application.requests, IsEmpty());
}

TEST_F(Message4, OnAgainstTheFileIsTakenBackByTheWillSelectThatFollows) {
    setUtilities({"A"}, false);
    show();

    receive(4, dictionaryOf({{true, "DriverEnable"}}));

    expectDriverDisabled();
    EXPECT_FALSE(gDriverEnable);
}

TEST_F(Message4, OnWithTwoDevicesShowsTheChooser) {
    setUtilities({"A", "B"}, false);
    show();

    receive(4, dictionaryOf({{true, "DriverEnable"}}));

    expectChooser();
    EXPECT_TRUE(gDriverEnable);
}

TEST_F(Message4, OnWithoutDevicesDoesNothing) {
    setUtilities({}, false);
    show();

    receive(4, dictionaryOf({{true, "DriverEnable"}}));

    expectDisconnected();
}

TEST_F(Message4, WithAnUndecodablePayloadReadsAsOff) {
    setUtilities({"A"}, true);
    show();

    platform.ports.deliver(kPreferencePortName, 4, platform::NSData{});

    expectDriverDisabled();
}

using AnyMessage = Pane;

TEST_F(AnyMessage, OfAnUnknownIdStillRereadsDevicesAndDriverFromTheFile) {
    setUtilities({"A"}, true);
    show();
    setUtilities({"B", "C"}, false);

    receive(9, dictionaryOf({}));

    EXPECT_THAT(gDeviceModel, Optional(ElementsAre("B", "C")));
    EXPECT_FALSE(gDriverEnable);
    expectSettingsShown();
    EXPECT_THAT(platform.log.lines, IsEmpty());
}

TEST_F(AnyMessage, DoesNotChangeTheVerbosity) {
    setUtilities({"A"}, true);
    show();
    setUtilitiesItem(true, keys::verboseLog);

    receive(9, dictionaryOf({}));

    EXPECT_FALSE(verboseLog);
}

TEST_F(AnyMessage, IsNotHeardOnceThePaneWasLeft) {
    setUtilities({"A"}, true);
    show();
    pane->willUnselect();

    receive(4, dictionaryOf({{false, "DriverEnable"}}));

    expectSettingsShown();
}

TEST_F(AnyMessage, ThatDisconnectsInTheMiddleOfASendLeavesTheChoiceOfTheStatusMenuStanding) {
    setUtilities({"A"}, true);
    show();
    platform.ports.peers["StatusBarMessagePort"] = support::MemoryPorts::Peer::Hung;
    platform.runLoop.scheduleTimer(0.5, [&] {
        setUtilitiesItem(arrayOf({}), keys::currentDeviceType);
        receive(7, dictionaryOf({{false, "IsConnected"}}));
    });

    statusBarState().performClick();

    expectDisconnected();
    EXPECT_FALSE(utilitiesItem(keys::isShowStatuMenu).boolValue());
    EXPECT_TRUE(utilitiesItem(keys::currentDeviceType).isEqual(arrayOf({})));
}

TEST_F(AnyMessage, ThatReloadsThePaneInTheMiddleOfASendTakesTheChoiceOfTheStatusMenuBackEverywhere) {
    setUtilities({"A"}, true);
    show();
    platform.ports.peers["StatusBarMessagePort"] = support::MemoryPorts::Peer::Hung;
    platform.runLoop.scheduleTimer(0.5, [&] { receive(4, dictionaryOf({{true, "DriverEnable"}})); });

    statusBarState().performClick();

    // The file, which was not written yet, is what the pane reloads from; file and check box stay in step.
    EXPECT_TRUE(utilitiesItem(keys::isShowStatuMenu).boolValue());
    EXPECT_EQ(statusBarState().state(), 1);
}

TEST_F(AnyMessage, ThatRefillsTheChooserInTheMiddleOfAChoiceLeavesTheChoiceStanding) {
    setUtilities({"A", "B"}, true, 1);
    show();
    receive(8, dictionaryOf({{1, "SelectedMenuItem"}}));
    platform.ports.peers["TouchDisplayDriverMessagePort"] = support::MemoryPorts::Peer::Hung;
    bool sent = false;
    settingTab->during = [&] {
        if (std::exchange(sent, true)) return;
        platform.runLoop.scheduleTimer(0.5, [&] {
            setUtilitiesItem(arrayOf({"C", "D", "E"}), keys::currentDeviceType);
            receive(7, dictionaryOf({{true, "IsConnected"}}));
        });
        resetDeviceParameter(payloads::doubleClickRate(0.5), kMessageIDForDoubleClickRate);
    };

    selectDeviceBtn().performSelectItemAtIndex(1);

    EXPECT_THAT(gModelType, Optional(std::string("B")));
    EXPECT_THAT(selectDeviceBtn().itemTitles(), ElementsAre("C", "D", "E"));
    expectSettingsShown();
}

TEST_F(AnyMessage, AndThePendingEndOfASheetAreForgottenWithThePane) {
    setUtilities({"A"}, true);
    show();
    setUtilities({}, true);
    receive(7, dictionaryOf({{false, "IsConnected"}}));

    pane.reset();
    platform.runLoop.advance(1.0);
    receive(7, dictionaryOf({{false, "IsConnected"}}));

    EXPECT_THAT(platform.application.requests, ElementsAre("activate"));
}

TEST(SecondPane, OfTheSameProcessStartsAnewAndTakesOverThePort) {
    support::FakePlatform platform;
    platform.setPlist(kUtilitiesPath,
                      dictionaryOf({{true, keys::driverEnable}, {arrayOf({"A"}), keys::currentDeviceType}}));
    Lines calls;
    auto newTab = [&] { return std::make_unique<RecordedTab>("tab", calls); };
    auto newPane = [&] {
        return std::make_unique<KelvoTouchDisplayPref>(
            KelvoTouchDisplayPref::Tabs{newTab(), newTab(), newTab(), newTab()});
    };
    auto first = newPane();
    first->mainViewDidLoad();
    first->willSelect();
    first->willUnselect();
    first.reset();

    auto second = newPane();
    second->mainViewDidLoad();
    second->willSelect();

    EXPECT_TRUE(platform.ports.isListening("PreferenceMessagePort"));
    EXPECT_EQ(sharedPaneState::panelPref(), second.get());
}

} // namespace
