// What the shell does is seen by others while it does it: by the tabs, the host, and whoever reads the files. So the
// order of its steps is told here as it is seen, each from a state in which every step makes a difference.

#include "ShellFixture.h"
#include "TDMessages.h"
#include "TDUtilities.h"

#include <gmock/gmock.h>

namespace {

using namespace shell;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

class Steps : public Pane {
protected:
    void fill() {
        setUtilities({"A"}, true);
        show();
    }

    void hideAll() {
        tabView().setHidden(true);
        tabPopUp().setHidden(true);
        statusBarState().setHidden(true);
        alertTextField().setHidden(true);
        selectDeviceView().setHidden(true);
    }

    void showAll() {
        tabView().setHidden(false);
        tabPopUp().setHidden(false);
        statusBarState().setHidden(false);
        alertTextField().setHidden(false);
        selectDeviceView().setHidden(false);
    }
};

using StepsOfMainViewDidLoad = Steps;

TEST_F(StepsOfMainViewDidLoad, WithoutDevices) {
    setUtilities({}, true);
    showAll();
    alertTextField().setHidden(true);
    tellOfControls();

    pane->mainViewDidLoad();

    EXPECT_THAT(calls,
                ElementsAre("setting resetTabView", "hardware resetTabView", "tabs hidden 0", "status box hidden 0",
                            "tab menu hidden 0", "alert shown ", "alert shown text of Alert.disconnect"));
}

TEST_F(StepsOfMainViewDidLoad, WithTheDriverOff) {
    setUtilities({"A"}, false);
    showAll();
    alertTextField().setHidden(true);
    tellOfControls();

    pane->mainViewDidLoad();

    EXPECT_THAT(calls, ElementsAre("setting resetTabView", "hardware resetTabView", "tabs hidden 0",
                                   "status box hidden 0", "tab menu hidden 0", "alert shown ", "chooser hidden ",
                                   "alert shown text of Alert.driverDisable"));
}

TEST_F(StepsOfMainViewDidLoad, WithOneDevice) {
    setUtilities({"A"}, true);
    hideAll();
    alertTextField().setHidden(false);
    selectDeviceView().setHidden(false);
    tellOfControls();
    std::optional<std::string> chosenWhenTheChooserWent;
    watch(selectDeviceView(), [&] {
        chosenWhenTheChooserWent = gModelType;
        return std::string("looked");
    });

    pane->mainViewDidLoad();

    EXPECT_THAT(calls,
                ElementsAre("setting resetTabView", "hardware resetTabView", "tabs shown 0", "status box shown 0",
                            "tab menu shown 0", "alert hidden ", "chooser hidden ", "looked"));
    EXPECT_THAT(chosenWhenTheChooserWent, Optional(std::string()));
}

TEST_F(StepsOfMainViewDidLoad, ResetTheTabsBeforeTheDeviceIsForgotten) {
    setUtilities({}, true);
    setModelType("old");
    Lines chosen;
    for (RecordedTab* tab : {settingTab, hardwareTab}) {
        tab->during = [&] { chosen.push_back(gModelType.value_or("none")); };
    }

    pane->mainViewDidLoad();

    EXPECT_THAT(chosen, ElementsAre("old", "old"));
}

using StepsOfWillSelect = Steps;

TEST_F(StepsOfWillSelect, WithoutDevices) {
    setUtilities({}, true);
    showAll();
    tellOfControls();

    pane->willSelect();

    EXPECT_THAT(calls, ElementsAre("tabs hidden 0", "status box hidden 0", "tab menu hidden 0", "chooser hidden "));
}

TEST_F(StepsOfWillSelect, WithOneDevice) {
    setUtilities({"A"}, true, 2);
    hideAll();
    selectDeviceView().setHidden(false);
    tellOfControls();
    std::optional<std::string> chosenWhenTheChooserWent;
    watch(selectDeviceView(), [&] {
        chosenWhenTheChooserWent = gModelType;
        return std::string("looked");
    });

    pane->willSelect();

    EXPECT_THAT(calls, ElementsAre("tabs shown 0", "status box shown 0", "tab menu shown 0", "chooser hidden ",
                                   "looked", "hardware updateUIState", "status box shown 1", "hardware updateUIState",
                                   "tabs shown 2", "tab menu shown 2"));
    EXPECT_THAT(chosenWhenTheChooserWent, Optional(std::string()));
}

TEST_F(StepsOfWillSelect, WithSeveralDevices) {
    setUtilities({"A", "B"}, true);
    setUtilitiesItem("B", keys::selectDeviceName);
    showAll();
    selectDeviceView().setHidden(true);
    selectDeviceBtn().addItemWithTitle("an earlier one");
    tellOfControls();

    pane->willSelect();

    EXPECT_THAT(calls, ElementsAre("tabs hidden 0", "status box hidden 0", "tab menu hidden 0", "alert hidden ",
                                   "chooser shown ", "devices 0 at -1", "devices 2 at 0", "devices 2 at 1"));
}

TEST_F(StepsOfWillSelect, WithADeviceChosenAndTheDriverSwitchedOffSinceEndsBeforeTheTab) {
    setUtilities({"A"}, true);
    show();
    setUtilitiesItem(false, keys::driverEnable);

    pane->willSelect();

    EXPECT_THAT(gModelType, Optional(std::string("A")));
    EXPECT_THAT(platform.log.lines, ElementsAre("return"));
    EXPECT_THAT(calls, IsEmpty());
}

using StepsOfAChoice = Steps;

TEST_F(StepsOfAChoice, AreStoringRefreshingShowingAndSelecting) {
    setUtilities({"A", "B"}, true);
    show();
    receive(kMessageIDForSelectedMenuItem, dictionaryOf({{1, keys::selectedMenuItem}}));
    statusBarState().setState(0);
    alertTextField().setHidden(false);
    calls.clear();
    tellOfControls();
    std::vector<std::string> stored;
    settingTab->during = [&] { stored.push_back(utilitiesItem(keys::selectDeviceName).string().value_or("none")); };

    selectDeviceBtn().performSelectItemAtIndex(1);

    EXPECT_THAT(calls, ElementsAre("devices 2 at 1", "setting updateUIState", "chooser hidden ", "tabs shown 0",
                                   "status box shown 0", "tab menu shown 0", "alert hidden ", "setting updateUIState",
                                   "tabs shown 1", "tab menu shown 1", "status box shown 1"));
    EXPECT_THAT(stored, ElementsAre("B", "B"));
}

TEST_F(StepsOfAChoice, LeaveTheStatusBoxOffWhereTheFileSaysSo) {
    setUtilities({"A", "B"}, true);
    setUtilitiesItem(false, keys::isShowStatuMenu);
    show();
    statusBarState().setState(1);

    selectDeviceBtn().performSelectItemAtIndex(1);

    EXPECT_EQ(statusBarState().state(), 0);
}

TEST_F(Steps, OfATabSwitchStoreTheIndexBeforeTheTabIsRefreshed) {
    fill();
    Value stored;
    settingTab->during = [&] { stored = utilitiesItem(keys::selectedMenuItem); };

    tabPopUp().performSelectItemAtIndex(1);

    EXPECT_TRUE(stored.isEqual(1));
}

TEST_F(Steps, OfHidingTheStatusMenuClearTheBoxBeforeTheFile) {
    fill();
    bool wasStoredAsShown = false;
    watch(statusBarState(), [&] {
        wasStoredAsShown = utilitiesItem(keys::isShowStatuMenu).boolValue();
        return std::string();
    });

    pane->hideStatusBar();

    EXPECT_TRUE(wasStoredAsShown);
    EXPECT_FALSE(utilitiesItem(keys::isShowStatuMenu).boolValue());
}

using StepsOfMessage8 = Steps;

TEST_F(StepsOfMessage8, WithOneDeviceLeftChooseAndStoreThatOne) {
    setUtilities({"A", "B"}, true);
    show();
    selectDeviceBtn().performSelectItemAtIndex(1);
    setUtilitiesItem(arrayOf({"A"}), keys::currentDeviceType);

    receive(kMessageIDForSelectedMenuItem, dictionaryOf({{0, keys::selectedMenuItem}}));

    EXPECT_THAT(gModelType, Optional(std::string("A")));
    EXPECT_TRUE(utilitiesItem(keys::selectDeviceName).isEqual("A"));
}

TEST_F(StepsOfMessage8, WithOneDeviceActivateBeforeTheDeviceIsChosen) {
    setUtilities({"A", "B"}, true);
    show();
    selectDeviceBtn().performSelectItemAtIndex(1);
    setUtilitiesItem(arrayOf({"A"}), keys::currentDeviceType);
    std::optional<std::string> chosen;
    std::size_t timers = 1;
    platform.application.onActivation = [&] {
        chosen = gModelType;
        timers = platform.runLoop.pendingTimers();
    };

    receive(kMessageIDForSelectedMenuItem, dictionaryOf({{2, keys::selectedMenuItem}}));

    EXPECT_THAT(chosen, Optional(std::string("B")));
    EXPECT_EQ(timers, 0U) << "a sheet is ended later than the host is activated";
    EXPECT_EQ(platform.runLoop.pendingTimers(), 1U);
}

TEST_F(StepsOfMessage8, RememberATabThatIsShownAlready) {
    setUtilities({"A", "B"}, true);
    show();
    receive(kMessageIDForSelectedMenuItem, dictionaryOf({{3, keys::selectedMenuItem}}));
    setUtilitiesItem(arrayOf({"A"}), keys::currentDeviceType);

    receive(kMessageIDForSelectedMenuItem, dictionaryOf({{0, keys::selectedMenuItem}}));

    EXPECT_EQ(sharedPaneState::currentItemIndex(), 0);
}

TEST_F(StepsOfMessage8, WithOneDeviceSelectTheTabBeforeItsItemInTheMenu) {
    fill();
    tellOfControls();

    receive(kMessageIDForSelectedMenuItem, dictionaryOf({{2, keys::selectedMenuItem}}));

    EXPECT_THAT(calls, ElementsAre("activate", "hardware updateUIState", "tabs shown 2", "tab menu shown 2"));
}

TEST_F(StepsOfMessage8, WithSeveralDevicesActivateRememberAndShowTheChooser) {
    setUtilities({"A", "B"}, true);
    show();
    selectDeviceBtn().performSelectItemAtIndex(1);
    calls.clear();
    tellOfControls();
    std::int32_t remembered = -1;
    watch(tabView(), [&] {
        remembered = sharedPaneState::currentItemIndex();
        return std::string("looked");
    });
    std::int32_t rememberedWhenActivated = -1;
    platform.application.onActivation = [&] {
        calls.emplace_back("activate");
        rememberedWhenActivated = sharedPaneState::currentItemIndex();
    };

    receive(kMessageIDForSelectedMenuItem, dictionaryOf({{3, keys::selectedMenuItem}}));

    EXPECT_THAT(calls, ElementsAre("activate", "tabs hidden 0", "looked", "status box hidden 1", "tab menu hidden 0",
                                   "chooser shown ", "devices 0 at -1", "devices 2 at 0", "devices 2 at 1"));
    EXPECT_EQ(rememberedWhenActivated, 0);
    EXPECT_EQ(remembered, 3);
}

TEST_F(Steps, OfAConnectedDeviceChooseItThoughTheDriverIsOff) {
    setUtilities({}, false);
    show();
    setUtilitiesItem(arrayOf({"A"}), keys::currentDeviceType);

    receive(kMessageIDForDeviceIsConnected, dictionaryOf({{true, keys::isConnected}}));

    EXPECT_THAT(gModelType, Optional(std::string("A")));
    EXPECT_TRUE(utilitiesItem(keys::selectDeviceName).isEqual("A"));
    expectDriverDisabled();
}

TEST_F(Steps, OfALostDeviceActivateBeforeAnythingIsHidden) {
    fill();
    setUtilitiesItem(arrayOf({}), keys::currentDeviceType);
    tellOfControls();

    receive(kMessageIDForDeviceIsConnected, dictionaryOf({{false, keys::isConnected}}));

    EXPECT_THAT(calls, ElementsAre("activate", "tabs hidden 0", "status box hidden 1", "tab menu hidden 0",
                                   "alert shown ", "alert shown text of Alert.disconnect"));
}

TEST_F(Steps, OfADriverThatIsSwitchedOffActivateAfterEverythingIsHidden) {
    fill();
    selectDeviceView().setHidden(false);
    tellOfControls();

    receive(COMMAND_DRIVER_DISABLE, dictionaryOf({{false, keys::driverEnable}}));

    EXPECT_THAT(calls, ElementsAre("tabs hidden 0", "status box hidden 1", "tab menu hidden 0", "alert shown ",
                                   "chooser hidden ", "alert shown text of Alert.driverDisable", "activate"));
}

using Published = Pane;

TEST_F(Published, AreTheTabsUnderTheNamesOfTheirFields) {
    for (const auto& [name, tab] : tabsByName) {
        bool isFound = false;
        for (const platform::NSOutlet& outlet : pane->outlets()) {
            if (outlet.name != name) continue;
            isFound = true;
            EXPECT_EQ(std::get<platform::NSViewController*>(outlet.target), tab) << name;
        }
        EXPECT_TRUE(isFound) << name;
    }
}

TEST_F(Published, IsTheHidingOfTheStatusMenuAsAnAction) {
    setUtilities({"A"}, true);
    show();
    platform::NSButton anyButton;

    for (const platform::NSNibAction& action : pane->actions()) {
        if (action.selector == "hideStatusBar") action.perform(anyButton);
    }

    EXPECT_FALSE(utilitiesItem(keys::isShowStatuMenu).boolValue());
}

TEST_F(Published, IsAFormOfTheSameName) {
    (void)pane->loadMainView();

    EXPECT_THAT(platform.nibs.loaded, ElementsAre("KelvoTouchDisplayPref"));
}

} // namespace
