#include "HardwareInfo/TDHardwareInformationViewCtl.h"

#include "TDCurrentDevice.h"
#include "TDNames.h"
#include "TDUtilities.h"
#include "support/FakePlatform.h"
#include "support/FormStandIn.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>

namespace {

using platform::Value;
using support::arrayOf;
using support::dictionaryOf;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string kSettingsPath = "/home/user/Library/Preferences/KelvoTouchDisplay/Settings_Wall.plist";
const std::string kDeskSettingsPath = "/home/user/Library/Preferences/KelvoTouchDisplay/Settings_Desk.plist";

constexpr std::int32_t kConfirmed = 1;
constexpr std::int32_t kDeclined = 0;
constexpr std::int32_t kEndedByProgram = -1000;

class HardwareInformationTab : public testing::Test {
protected:
    HardwareInformationTab() {
        platform.ports.peers[kTouchDisplayDriverPortName] = support::MemoryPorts::Peer::Answers;
        setModelType("Wall");
        rotateMode().setNumberOfRows(4);
        support::connect(*tab, "rotateMode_", "changeRotateState:");
    }

    platform::NSMatrix& rotateMode() { return support::outlet<platform::NSMatrix>(*tab, "rotateMode_"); }

    void setStoredMode(const Value& mode) {
        platform.setPlist(kSettingsPath, dictionaryOf({{mode, keys::rotateMode}}));
    }

    /// The tab with the mode stored and shown.
    void show(const Value& mode) {
        setStoredMode(mode);
        tab->updateUIState();
        platform.log.lines.clear();
    }

    void endSheet(std::int32_t returnCode) {
        platform.application.endSheet(platform.application.sheets.size() - 1, returnCode);
    }

    /// Exactly one message went out, and it is this rotation for this device.
    void expectSent(int mode, const std::string& device) {
        ASSERT_EQ(platform.ports.received.size(), 1U);
        const support::ReceivedMessage& message = platform.ports.received.front();
        EXPECT_EQ(message.port, "TouchDisplayDriverMessagePort");
        EXPECT_EQ(message.id, 3);
        EXPECT_THAT(message.payload.allKeys(), ElementsAre("RotateMode", "DeviceName"));
        EXPECT_EQ(message.payload.objectForKey("RotateMode").kind(), Value::Kind::Integer);
        EXPECT_EQ(message.payload.objectForKey("RotateMode").intValue(), mode);
        EXPECT_EQ(message.payload.objectForKey("DeviceName").string(), device);
    }

    void expectNothingHappens() {
        platform.runLoop.advance(60.0);
        EXPECT_THAT(platform.application.sheets, IsEmpty());
        EXPECT_THAT(platform.ports.received, IsEmpty());
    }

    support::FakePlatform platform;
    std::unique_ptr<TDHardwareInformationViewCtl> tab = std::make_unique<TDHardwareInformationViewCtl>();
};

TEST_F(HardwareInformationTab, ExportsTheWordsOfTheHardwareState) {
    EXPECT_EQ(kLEDState, "LEDState");
    EXPECT_EQ(kSensorState, "SensorState");
    EXPECT_EQ(kSensState, "SensState");
    EXPECT_EQ(kArea, "Area");
    EXPECT_EQ(kNumber, "number");
    EXPECT_EQ(kPoint, "point");
    EXPECT_EQ(kPointCount, "Point");
    EXPECT_EQ(kName, "Name");
}

TEST_F(HardwareInformationTab, ComesFromTheFormOfItsName) { EXPECT_EQ(tab->nibName(), "TDHardwareInformationViewCtl"); }

TEST_F(HardwareInformationTab, ResetTabViewShowsTheFirstPage) {
    auto& tabView = support::outlet<platform::NSTabView>(*tab, "hardwareInfoTabView_");
    tabView.addTabViewItem("Rotation");
    tabView.addTabViewItem("Sensor");
    tabView.selectTabViewItemAtIndex(1);

    tab->resetTabView();

    EXPECT_EQ(tabView.indexOfSelectedTabViewItem(), 0);
}

TEST_F(HardwareInformationTab, ResetTabViewWithoutPagesDoesNothing) {
    tab->resetTabView();

    EXPECT_EQ(support::outlet<platform::NSTabView>(*tab, "hardwareInfoTabView_").indexOfSelectedTabViewItem(), -1);
}

using HardwareUpdateUIState = HardwareInformationTab;

TEST_F(HardwareUpdateUIState, LogsThePathAndSelectsTheStoredMode) {
    setStoredMode(3);

    tab->updateUIState();

    EXPECT_EQ(rotateMode().selectedRow(), 3);
    EXPECT_THAT(platform.log.lines, ElementsAre("updateUIState " + kSettingsPath));
}

TEST_F(HardwareUpdateUIState, LogsThePathAndChangesNothingWithoutASettingsFile) {
    rotateMode().selectCellAtRowColumn(2, 0);

    tab->updateUIState();

    EXPECT_EQ(rotateMode().selectedRow(), 2);
    EXPECT_THAT(platform.log.lines, ElementsAre("updateUIState " + kSettingsPath));
    EXPECT_FALSE(platform.files.files.contains(kSettingsPath));
}

TEST_F(HardwareUpdateUIState, SelectsTheFirstRowForTheFalseOfANewSettingsFile) {
    rotateMode().selectCellAtRowColumn(2, 0);
    const auto settings = readSettingItemsFromPlist(kSettingsPath);
    ASSERT_EQ(settings.objectForKey(keys::rotateMode).kind(), Value::Kind::Boolean);

    tab->updateUIState();

    EXPECT_EQ(rotateMode().selectedRow(), 0);
}

TEST_F(HardwareUpdateUIState, SelectsTheFirstRowForAFileWithoutAMode) {
    rotateMode().selectCellAtRowColumn(2, 0);
    platform.setPlist(kSettingsPath, dictionaryOf({{arrayOf({}), keys::gestureArray}}));

    tab->updateUIState();

    EXPECT_EQ(rotateMode().selectedRow(), 0);
}

TEST_F(HardwareUpdateUIState, SelectsTheFirstRowForAFileThatIsNoPropertyList) {
    rotateMode().selectCellAtRowColumn(2, 0);
    platform.files.setText(kSettingsPath, "no property list");

    tab->updateUIState();

    EXPECT_EQ(rotateMode().selectedRow(), 0);
}

TEST_F(HardwareUpdateUIState, ReadsModesOfOtherKindsByTheirNumber) {
    show("2");
    EXPECT_EQ(rotateMode().selectedRow(), 2);

    show(1.9);
    EXPECT_EQ(rotateMode().selectedRow(), 1);

    show(arrayOf({3}));
    EXPECT_EQ(rotateMode().selectedRow(), 0);
}

TEST_F(HardwareUpdateUIState, LeavesAModeOutsideTheRowsToTheMatrix) {
    rotateMode().selectCellAtRowColumn(2, 0);

    for (const std::int64_t mode : {std::int64_t{4}, std::int64_t{-1}, std::numeric_limits<std::int64_t>::max()}) {
        show(mode);
        EXPECT_EQ(rotateMode().selectedRow(), 2) << mode;
    }
}

TEST_F(HardwareUpdateUIState, FiresNoActionThoughTheRowChanges) {
    show(3);

    expectNothingHappens();
}

TEST_F(HardwareUpdateUIState, ReadsTheFileOfNoDeviceAtAllByThePlatformsNameForNothing) {
    setModelType(std::nullopt);

    tab->updateUIState();

    EXPECT_THAT(platform.log.lines,
                ElementsAre("updateUIState /home/user/Library/Preferences/KelvoTouchDisplay/Settings_(null).plist"));
}

using ReloadRotateMode = HardwareInformationTab;

TEST_F(ReloadRotateMode, SelectsTheStoredModeWithoutALogLine) {
    setStoredMode(3);

    tab->reloadRotateMode();

    EXPECT_EQ(rotateMode().selectedRow(), 3);
    EXPECT_THAT(platform.log.lines, IsEmpty());
}

TEST_F(ReloadRotateMode, SelectsTheFirstRowWithoutASettingsFile) {
    rotateMode().selectCellAtRowColumn(2, 0);

    tab->reloadRotateMode();

    EXPECT_EQ(rotateMode().selectedRow(), 0);
}

using ChangeRotateState = HardwareInformationTab;

TEST_F(ChangeRotateState, AsksNothingForTheStoredMode) {
    show(2);

    rotateMode().performSelectRow(2);

    expectNothingHappens();
}

TEST_F(ChangeRotateState, AsksNothingForTheFirstRowWithoutASettingsFile) {
    rotateMode().selectCellAtRowColumn(2, 0);

    rotateMode().performSelectRow(0);

    expectNothingHappens();
}

TEST_F(ChangeRotateState, AsksForAnyOtherRowWithoutASettingsFile) {
    for (const int row : {1, 2, 3}) rotateMode().performSelectRow(row);

    EXPECT_EQ(platform.application.sheets.size(), 3U);
}

TEST_F(ChangeRotateState, AsksWithTheTextsOfTheBundleAndSendsNothingYet) {
    platform.bundle.strings["Alert.HotKey.Title"] = "Rotate?";
    platform.bundle.strings["Alert.Rotate"] = "Touches turn too.";
    platform.bundle.strings["Alert.Button.YES"] = "Rotate";
    platform.bundle.strings["Alert.Button.NO"] = "Cancel";
    show(0);

    rotateMode().performSelectRow(1);

    ASSERT_EQ(platform.application.sheets.size(), 1U);
    const platform::NSAlertSheet& sheet = platform.application.sheets.front();
    EXPECT_EQ(sheet.title, "Rotate?");
    EXPECT_EQ(sheet.message, "Touches turn too.");
    EXPECT_EQ(sheet.defaultButton, "Rotate");
    EXPECT_EQ(sheet.alternateButton, "Cancel");
    EXPECT_THAT(platform.ports.received, IsEmpty());
    EXPECT_EQ(rotateMode().selectedRow(), 1);
}

TEST_F(ChangeRotateState, ShowsTheKeysOfTextsThatAreMissing) {
    show(0);

    rotateMode().performSelectRow(1);

    ASSERT_EQ(platform.application.sheets.size(), 1U);
    const platform::NSAlertSheet& sheet = platform.application.sheets.front();
    EXPECT_EQ(sheet.title, "Alert.HotKey.Title");
    EXPECT_EQ(sheet.message, "Alert.Rotate");
    EXPECT_EQ(sheet.defaultButton, "Alert.Button.YES");
    EXPECT_EQ(sheet.alternateButton, "Alert.Button.NO");
}

TEST_F(ChangeRotateState, ShowsTheKeysWhenTheBundleIsNotToBeFound) {
    platform.bundle.isLoaded = false;

    rotateMode().performSelectRow(1);

    ASSERT_EQ(platform.application.sheets.size(), 1U);
    EXPECT_EQ(platform.application.sheets.front().message, "Alert.Rotate");
}

TEST_F(ChangeRotateState, TakesTheMessageAsAFormatWithoutArguments) {
    platform.bundle.strings["Alert.Rotate"] = "%%100%% %@ %d %%@ %%% %";
    platform.bundle.strings["Alert.HotKey.Title"] = "100%%";
    show(0);

    rotateMode().performSelectRow(1);

    ASSERT_EQ(platform.application.sheets.size(), 1U);
    EXPECT_EQ(platform.application.sheets.front().message, "%100% %@ %d %@ %% %");
    EXPECT_EQ(platform.application.sheets.front().title, "100%%");
}

TEST_F(ChangeRotateState, LogsNothing) {
    show(0);

    rotateMode().performSelectRow(1);

    EXPECT_THAT(platform.log.lines, IsEmpty());
}

using SheetDidEnd = HardwareInformationTab;

TEST_F(SheetDidEnd, ConfirmedSendsTheRowOnceAndLeavesTheSettingsFile) {
    show(0);
    const std::string before = platform.files.textOf(kSettingsPath);
    rotateMode().performSelectRow(2);

    endSheet(kConfirmed);

    platform.runLoop.advance(60.0);
    expectSent(2, "Wall");
    EXPECT_EQ(rotateMode().selectedRow(), 2);
    EXPECT_EQ(platform.files.textOf(kSettingsPath), before);
    EXPECT_EQ(platform.files.writes, 0);
}

TEST_F(SheetDidEnd, DeclinedRestoresTheStoredModeJustAfterTheSheetHasEnded) {
    show(1);
    rotateMode().performSelectRow(2);

    endSheet(kDeclined);

    EXPECT_EQ(rotateMode().selectedRow(), 2);
    platform.runLoop.advance(0.009);
    EXPECT_EQ(rotateMode().selectedRow(), 2);
    platform.runLoop.advance(0.002);
    EXPECT_EQ(rotateMode().selectedRow(), 1);
    EXPECT_THAT(platform.ports.received, IsEmpty());
    EXPECT_EQ(platform.application.sheets.size(), 1U);
    EXPECT_EQ(platform.runLoop.pendingTimers(), 0U);
}

TEST_F(SheetDidEnd, DeclinedWithoutASettingsFileReturnsToTheFirstRow) {
    rotateMode().performSelectRow(2);

    endSheet(kDeclined);
    platform.runLoop.advance(0.02);

    EXPECT_EQ(rotateMode().selectedRow(), 0);
}

TEST_F(SheetDidEnd, EndedByTheProgramSendsAndSchedulesNothing) {
    show(1);
    rotateMode().performSelectRow(2);

    endSheet(kEndedByProgram);

    EXPECT_EQ(platform.runLoop.pendingTimers(), 0U);
    EXPECT_THAT(platform.ports.received, IsEmpty());
    EXPECT_EQ(rotateMode().selectedRow(), 2);

    tab->updateUIState();

    EXPECT_EQ(rotateMode().selectedRow(), 1);
}

TEST_F(SheetDidEnd, AnyReturnCodeButTheTwoOfTheButtonsDoesNothing) {
    show(1);
    for (const std::int32_t code :
         {-1, 2, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()}) {
        tab->sheetDidEndReturnCodeContextInfo({}, code, rotateMode());
    }

    EXPECT_EQ(platform.runLoop.pendingTimers(), 0U);
    EXPECT_THAT(platform.ports.received, IsEmpty());
}

TEST_F(SheetDidEnd, SendsTheRowThatIsSelectedWhenItEnds) {
    show(0);
    rotateMode().performSelectRow(2);
    rotateMode().selectCellAtRowColumn(3, 0);

    endSheet(kConfirmed);

    expectSent(3, "Wall");
}

TEST_F(SheetDidEnd, SendsForTheDeviceThatIsCurrentWhenItEnds) {
    show(0);
    rotateMode().performSelectRow(2);
    setModelType("Desk");

    endSheet(kConfirmed);

    expectSent(2, "Desk");
}

TEST_F(SheetDidEnd, DeclinedRestoresTheModeOfTheDeviceThatIsCurrentByThen) {
    platform.setPlist(kDeskSettingsPath, dictionaryOf({{3, keys::rotateMode}}));
    show(0);
    rotateMode().performSelectRow(2);

    endSheet(kDeclined);
    setModelType("Desk");
    platform.runLoop.advance(0.02);

    EXPECT_EQ(rotateMode().selectedRow(), 3);
}

TEST_F(SheetDidEnd, LeavesOutTheDeviceNameWhenThereIsNoDeviceAtAll) {
    rotateMode().performSelectRow(2);
    setModelType(std::nullopt);

    endSheet(kConfirmed);

    ASSERT_EQ(platform.ports.received.size(), 1U);
    EXPECT_THAT(platform.ports.received.front().payload.allKeys(), ElementsAre("RotateMode"));
}

TEST_F(SheetDidEnd, PickingTheStoredModeAfterAnotherWasConfirmedAsksNothing) {
    show(0);
    rotateMode().performSelectRow(2);
    endSheet(kConfirmed);

    rotateMode().performSelectRow(0);

    EXPECT_EQ(platform.application.sheets.size(), 1U);
    EXPECT_EQ(platform.ports.received.size(), 1U);
}

TEST_F(SheetDidEnd, PickingTheJustConfirmedModeAgainAsksAgain) {
    show(0);
    rotateMode().performSelectRow(2);
    endSheet(kConfirmed);

    rotateMode().performSelectRow(2);

    EXPECT_EQ(platform.application.sheets.size(), 2U);
    EXPECT_EQ(platform.ports.received.size(), 1U);
}

TEST_F(SheetDidEnd, SaysNothingOfADriverThatDoesNotRun) {
    platform.ports.peers.clear();
    show(0);
    rotateMode().performSelectRow(2);

    endSheet(kConfirmed);

    EXPECT_THAT(platform.ports.lookUps, ElementsAre("TouchDisplayDriverMessagePort"));
    EXPECT_THAT(platform.log.lines, IsEmpty());
    EXPECT_EQ(rotateMode().selectedRow(), 2);
}

TEST_F(SheetDidEnd, IsNotToldToATabThatIsGone) {
    show(0);
    rotateMode().performSelectRow(2);
    tab.reset();

    endSheet(kConfirmed);

    EXPECT_THAT(platform.ports.received, IsEmpty());
}

TEST_F(SheetDidEnd, DeclinedRestoresNothingOnceTheTabIsGone) {
    show(0);
    rotateMode().performSelectRow(2);
    endSheet(kDeclined);
    tab.reset();
    const auto logged = platform.log.lines;

    platform.runLoop.advance(0.02);

    EXPECT_EQ(platform.runLoop.pendingTimers(), 0U);
    EXPECT_EQ(platform.log.lines, logged);
}

TEST_F(HardwareInformationTab, SheetDidDismissOnlyLogsAndIsNotConnected) {
    show(0);
    rotateMode().performSelectRow(2);
    endSheet(kDeclined);
    platform.runLoop.advance(0.02);
    EXPECT_THAT(platform.log.lines, IsEmpty());

    tab->sheetDidDismissReturnCodeContextInfo({}, -3, rotateMode());

    EXPECT_THAT(platform.log.lines, ElementsAre("sheetDidDismiss = -3"));
    EXPECT_EQ(platform.runLoop.pendingTimers(), 0U);
    EXPECT_THAT(platform.ports.received, IsEmpty());
}

} // namespace
