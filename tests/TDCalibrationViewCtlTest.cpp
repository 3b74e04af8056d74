#include "TDCalibrationViewCtl.h"

#include "TDCurrentDevice.h"
#include "TDNames.h"
#include "support/FakePlatform.h"
#include "support/FormStandIn.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using platform::NSMutableDictionary;
using platform::Value;
using support::arrayOf;
using support::dictionaryOf;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string kSettingsPath = "/home/user/Library/Preferences/KelvoTouchDisplay/Settings_Wall.plist";
constexpr int kAutomatic = 0;
constexpr int kManual = 1;

class CalibrationTab : public testing::Test {
protected:
    CalibrationTab() {
        platform.ports.peers[kTouchDisplayDriverPortName] = support::MemoryPorts::Peer::Answers;
        setModelType("Wall");
        mode().setNumberOfRows(2);
        support::connect(tab, "CalibrationMode", "changeCalibrationMode:");
        support::connect(tab, "applyBtn", "setOSDResolution:");
    }

    platform::NSMatrix& mode() { return support::outlet<platform::NSMatrix>(tab, "CalibrationMode"); }
    platform::NSTextField& width() { return support::outlet<platform::NSTextField>(tab, "ResolutionWidth"); }
    platform::NSTextField& height() { return support::outlet<platform::NSTextField>(tab, "ResolutionHeight"); }
    platform::NSButton& applyBtn() { return support::outlet<platform::NSButton>(tab, "applyBtn"); }

    void setSettings(std::initializer_list<NSMutableDictionary::ObjectAndKey> pairs) {
        platform.setPlist(kSettingsPath, dictionaryOf(pairs));
    }

    static NSMutableDictionary resolution(const Value& width, const Value& height) {
        return dictionaryOf({{width, keys::OSDWidth}, {height, keys::OSDHeight}});
    }

    /// The tab with a settings file of manual mode and the stored resolution 1280 x 800.
    void showManual() {
        setSettings({{false, keys::autoCalibration}, {resolution(1280.0, 800.0), keys::manualCalibration}});
        tab.updateUIState();
    }

    void type(const std::string& widthText, const std::string& heightText) {
        width().performEndEditing(widthText);
        height().performEndEditing(heightText);
    }

    void expectFieldsEnabled(bool enabled) {
        EXPECT_EQ(width().isEnabled(), enabled);
        EXPECT_EQ(height().isEnabled(), enabled);
    }

    void expectTexts(const std::string& widthText, const std::string& heightText) {
        EXPECT_EQ(width().stringValue(), widthText);
        EXPECT_EQ(height().stringValue(), heightText);
    }

    /// Exactly one message went out, and it is a calibration with this payload.
    void expectSent(const NSMutableDictionary& payload) {
        ASSERT_EQ(platform.ports.received.size(), 1U);
        const support::ReceivedMessage& message = platform.ports.received.front();
        EXPECT_EQ(message.port, "TouchDisplayDriverMessagePort");
        EXPECT_EQ(message.id, 6);
        EXPECT_TRUE(message.payload.isEqual(payload)) << Value(message.payload).description();
    }

    void expectManualSent(double sentWidth, double sentHeight) {
        expectSent(
            dictionaryOf({{false, "AutoCalibration"},
                          {dictionaryOf({{sentWidth, "OSDWidth"}, {sentHeight, "OSDHeight"}}), "ManualCalibration"},
                          {"Wall", "DeviceName"}}));
    }

    support::FakePlatform platform;
    TDCalibrationViewCtl tab;
};

using CalibrationUpdateUIState = CalibrationTab;

TEST_F(CalibrationUpdateUIState, BeginsInAutomaticModeWithNothingToApply) {
    EXPECT_EQ(tab.nibName(), "TDCalibrationViewCtl");
    EXPECT_EQ(mode().selectedRow(), kAutomatic);
    expectFieldsEnabled(false);
    EXPECT_FALSE(applyBtn().isEnabled());
}

TEST_F(CalibrationUpdateUIState, LeavesEveryControlAsItIsWithoutASettingsFile) {
    mode().performSelectRow(kManual);
    type("640", "480");

    tab.updateUIState();

    EXPECT_EQ(mode().selectedRow(), kManual);
    expectFieldsEnabled(true);
    expectTexts("640", "480");
    EXPECT_FALSE(applyBtn().isEnabled());
    EXPECT_FALSE(platform.files.files.contains(kSettingsPath));
}

TEST_F(CalibrationUpdateUIState, ShowsStoredManualCalibrationForEditing) {
    setSettings({{false, keys::autoCalibration}, {resolution(1024.5, 800), keys::manualCalibration}});

    tab.updateUIState();

    EXPECT_EQ(mode().selectedRow(), kManual);
    expectFieldsEnabled(true);
    expectTexts("1024.5", "800");
    EXPECT_TRUE(applyBtn().isEnabled());
}

TEST_F(CalibrationUpdateUIState, ShowsTheStoredResolutionInAutomaticModeTooButNotForEditing) {
    showManual();
    setSettings({{true, keys::autoCalibration}, {resolution(1920.0, 1080.0), keys::manualCalibration}});

    tab.updateUIState();

    EXPECT_EQ(mode().selectedRow(), kAutomatic);
    expectFieldsEnabled(false);
    expectTexts("1920", "1080");
    EXPECT_TRUE(applyBtn().isEnabled());
}

TEST_F(CalibrationUpdateUIState, ShowsManualModeForASettingsFileWithoutAutoCalibration) {
    setSettings({{"0.8.0.3", keys::driverVersion}});

    tab.updateUIState();

    EXPECT_EQ(mode().selectedRow(), kManual);
    expectFieldsEnabled(true);
}

TEST_F(CalibrationUpdateUIState, EmptiesTheFieldsWhereNoResolutionIsStored) {
    showManual();
    setSettings({{true, keys::autoCalibration}});

    tab.updateUIState();

    expectTexts("", "");
}

TEST_F(CalibrationUpdateUIState, ShowsTheHalfOfTheResolutionThatIsStored) {
    setSettings({{dictionaryOf({{600, keys::OSDHeight}}), keys::manualCalibration}});

    tab.updateUIState();

    expectTexts("", "600");
}

TEST_F(CalibrationUpdateUIState, ReadsAFileThatIsNoPropertyListAsManualModeWithoutAResolution) {
    showManual();
    platform.files.setText(kSettingsPath, "no property list");

    tab.updateUIState();

    EXPECT_EQ(mode().selectedRow(), kManual);
    expectFieldsEnabled(true);
    expectTexts("", "");
    EXPECT_TRUE(applyBtn().isEnabled());
}

TEST_F(CalibrationUpdateUIState, ReadsValuesOfOtherKindsByTheirMeaning) {
    setSettings({{"YES", keys::autoCalibration}, {resolution("1280", arrayOf({800})), keys::manualCalibration}});

    tab.updateUIState();

    EXPECT_EQ(mode().selectedRow(), kAutomatic);
    expectTexts("1280", "");
}

TEST_F(CalibrationUpdateUIState, ReadsAResolutionThatIsNoDictionaryAsNone) {
    setSettings({{"1280x800", keys::manualCalibration}});

    tab.updateUIState();

    expectTexts("", "");
}

TEST_F(CalibrationUpdateUIState, ShowsTheSettingsOfTheDeviceThatIsCurrentNow) {
    showManual();
    platform.setPlist("/home/user/Library/Preferences/KelvoTouchDisplay/Settings_Desk.plist",
                      dictionaryOf({{true, keys::autoCalibration}}));
    setModelType("Desk");

    tab.updateUIState();

    EXPECT_EQ(mode().selectedRow(), kAutomatic);
    expectTexts("", "");
}

TEST_F(CalibrationUpdateUIState, TwiceShowsAndSendsNothingElse) {
    showManual();

    tab.updateUIState();

    EXPECT_EQ(mode().selectedRow(), kManual);
    expectTexts("1280", "800");
    EXPECT_THAT(platform.ports.received, IsEmpty());
    EXPECT_THAT(platform.log.lines, IsEmpty());
}

using ChangeCalibrationMode = CalibrationTab;

TEST_F(ChangeCalibrationMode, ToAutomaticRestoresTheStoredResolutionWhichManualModeThenKeeps) {
    showManual();
    type("640", "480");

    mode().performSelectRow(kAutomatic);

    expectTexts("1280", "800");
    expectFieldsEnabled(false);

    mode().performSelectRow(kManual);

    expectTexts("1280", "800");
    expectFieldsEnabled(true);
}

TEST_F(ChangeCalibrationMode, ToAutomaticEmptiesAFieldWhoseValueIsNotStored) {
    showManual();
    setSettings({{dictionaryOf({{1280, keys::OSDWidth}}), keys::manualCalibration}});

    mode().performSelectRow(kAutomatic);

    expectTexts("1280", "");
}

TEST_F(ChangeCalibrationMode, ToAutomaticOnlyDisablesTheFieldsWithoutASettingsFile) {
    mode().performSelectRow(kManual);
    type("640", "480");

    mode().performSelectRow(kAutomatic);

    expectTexts("640", "480");
    expectFieldsEnabled(false);
}

TEST_F(ChangeCalibrationMode, ToManualKeepsWhatWasTypedWhenItWasManualAlready) {
    showManual();
    type("640", "480");

    mode().performSelectRow(kManual);

    expectTexts("640", "480");
    expectFieldsEnabled(true);
}

TEST_F(ChangeCalibrationMode, SendsNothingAndLeavesTheSettingsFile) {
    showManual();
    const std::string before = platform.files.textOf(kSettingsPath);

    mode().performSelectRow(kAutomatic);
    mode().performSelectRow(kManual);

    EXPECT_THAT(platform.ports.received, IsEmpty());
    EXPECT_EQ(platform.files.textOf(kSettingsPath), before);
}

using SetOSDResolution = CalibrationTab;

TEST_F(SetOSDResolution, SendsManualModeAsTypedFractionsIncluded) {
    showManual();
    type("1024.5", "768");

    applyBtn().performClick();

    expectManualSent(1024.5, 768.0);
    expectTexts("1024.5", "768");
}

TEST_F(SetOSDResolution, SendsRealsEvenOfWholeNumbersAndTheDeviceLast) {
    showManual();

    applyBtn().performClick();

    ASSERT_EQ(platform.ports.received.size(), 1U);
    const NSMutableDictionary payload = platform.ports.received.front().payload;
    EXPECT_THAT(payload.allKeys(), ElementsAre("AutoCalibration", "ManualCalibration", "DeviceName"));
    EXPECT_EQ(payload.objectForKey("AutoCalibration").kind(), Value::Kind::Boolean);
    const NSMutableDictionary sent = payload.objectForKey("ManualCalibration").dictionary();
    EXPECT_EQ(sent.objectForKey("OSDWidth").kind(), Value::Kind::Real);
    EXPECT_EQ(sent.objectForKey("OSDHeight").kind(), Value::Kind::Real);
}

TEST_F(SetOSDResolution, BringsAWidthTooLargeAndANegativeHeightBackIntoTheirBounds) {
    showManual();
    type("5000", "-3");

    applyBtn().performClick();

    expectTexts("4096", "0");
    expectManualSent(4096.0, 0.0);
}

TEST_F(SetOSDResolution, BringsANegativeWidthAndAHeightTooLargeBackIntoTheirBounds) {
    showManual();
    type("-0.5", "4096");

    applyBtn().performClick();

    expectTexts("0", "2160");
    expectManualSent(0.0, 2160.0);
}

TEST_F(SetOSDResolution, KeepsTheLargestWidthAndHeightAsTyped) {
    showManual();
    type("4096", "2160");

    applyBtn().performClick();

    expectTexts("4096", "2160");
    expectManualSent(4096.0, 2160.0);
}

TEST_F(SetOSDResolution, RewritesAHeightOneAboveTheLargest) {
    showManual();
    type("1280", "2161");

    applyBtn().performClick();

    expectTexts("1280", "2160");
}

TEST_F(SetOSDResolution, ReadsTextsAsSinglePrecision) {
    showManual();
    type("4096.0001", "0.1");

    applyBtn().performClick();

    expectTexts("4096.0001", "0.1");
    expectManualSent(4096.0, static_cast<double>(0.1F));
}

TEST_F(SetOSDResolution, ReadsTheNumberThatATextBeginsWith) {
    showManual();
    type("  800px", "wide");

    applyBtn().performClick();

    expectTexts("  800px", "wide");
    expectManualSent(800.0, 0.0);
}

TEST_F(SetOSDResolution, KeepsATextThatSaysNotANumberAndSendsItAsZero) {
    showManual();
    type("nan", "-nan(1)");

    applyBtn().performClick();

    expectTexts("nan", "-nan(1)");
    expectManualSent(0.0, 0.0);
}

TEST_F(SetOSDResolution, BringsNumbersBeyondSinglePrecisionIntoTheirBounds) {
    showManual();
    type("1e39", "-1e999");

    applyBtn().performClick();

    expectTexts("4096", "0");
    expectManualSent(4096.0, 0.0);
}

TEST_F(SetOSDResolution, RewritesTheFieldsInAutomaticModeTooButDoesNotSendThem) {
    showManual();
    type("9999", "800");
    platform.files.files.erase(kSettingsPath);
    mode().performSelectRow(kAutomatic);

    applyBtn().performClick();

    expectTexts("4096", "800");
    expectSent(dictionaryOf({{true, "AutoCalibration"}, {"Wall", "DeviceName"}}));
}

TEST_F(SetOSDResolution, CompletesAnEmptyFieldFromTheSettingsFileBeforeSending) {
    showManual();
    type("", "600");

    applyBtn().performClick();

    expectTexts("1280", "600");
    expectManualSent(1280.0, 600.0);
}

TEST_F(SetOSDResolution, CompletesBothFieldsWhenBothAreEmpty) {
    showManual();
    type("", "");

    applyBtn().performClick();

    expectManualSent(1280.0, 800.0);
}

TEST_F(SetOSDResolution, BringsACompletedValueIntoItsBoundsToo) {
    setSettings({{resolution(8000, -1), keys::manualCalibration}});
    tab.updateUIState();
    type("", "");

    applyBtn().performClick();

    expectTexts("4096", "0");
}

TEST_F(SetOSDResolution, LeavesABlankFieldAndSendsZero) {
    showManual();
    type(" ", "600");

    applyBtn().performClick();

    expectTexts(" ", "600");
    expectManualSent(0.0, 600.0);
}

TEST_F(SetOSDResolution, SendsAnEmptyFieldAsZeroWithoutASettingsFile) {
    showManual();
    platform.files.files.erase(kSettingsPath);
    type("", "600");

    applyBtn().performClick();

    expectTexts("", "600");
    expectManualSent(0.0, 600.0);
}

TEST_F(SetOSDResolution, SendsAnEmptyFieldAsZeroWhereNothingIsStoredForIt) {
    setSettings({{false, keys::autoCalibration}});
    tab.updateUIState();

    applyBtn().performClick();

    expectTexts("", "");
    expectManualSent(0.0, 0.0);
}

TEST_F(SetOSDResolution, LogsTheTextsAsTheyWereThenTheNumbersBeforeTheyAreBroughtIntoBounds) {
    showManual();
    type("", "2161");

    applyBtn().performClick();

    EXPECT_THAT(platform.log.lines, ElementsAre("ResolutionWidth :", "ResolutionHeight :2161", "resetCalibration",
                                                "1280.000000,2161.000000"));
}

TEST_F(SetOSDResolution, LogsBothNumbersBeforeEitherIsBroughtIntoBounds) {
    showManual();
    type("4097", "-1");

    applyBtn().performClick();

    EXPECT_EQ(platform.log.lines.back(), "4097.000000,-1.000000");
    expectTexts("4096", "0");
}

TEST_F(SetOSDResolution, LogsTheSameLinesInAutomaticMode) {
    showManual();
    mode().performSelectRow(kAutomatic);

    applyBtn().performClick();

    EXPECT_THAT(platform.log.lines, ElementsAre("ResolutionWidth :1280", "ResolutionHeight :800", "resetCalibration",
                                                "1280.000000,800.000000"));
}

TEST_F(SetOSDResolution, SendsOneMessageForEachOfTwoClicks) {
    showManual();

    applyBtn().performClick();
    applyBtn().performClick();

    ASSERT_EQ(platform.ports.received.size(), 2U);
    EXPECT_TRUE(platform.ports.received[0].payload.isEqual(platform.ports.received[1].payload));
}

TEST_F(SetOSDResolution, LeavesTheSettingsFile) {
    showManual();
    const std::string before = platform.files.textOf(kSettingsPath);
    type("640", "480");

    applyBtn().performClick();

    EXPECT_EQ(platform.files.textOf(kSettingsPath), before);
    EXPECT_EQ(platform.files.writes, 0);
}

TEST_F(SetOSDResolution, LeavesOutTheDeviceNameWhenThereIsNoDeviceAtAll) {
    showManual();
    setModelType(std::nullopt);

    applyBtn().performClick();

    expectSent(dictionaryOf({{false, "AutoCalibration"}, {resolution(1280.0, 800.0), "ManualCalibration"}}));
}

TEST_F(SetOSDResolution, SaysNothingOfADriverThatDoesNotRun) {
    showManual();
    platform.ports.peers.clear();

    applyBtn().performClick();

    EXPECT_THAT(platform.ports.lookUps, ElementsAre("TouchDisplayDriverMessagePort"));
    EXPECT_THAT(platform.ports.received, IsEmpty());
    EXPECT_EQ(platform.log.lines.size(), 4U);
}

TEST_F(SetOSDResolution, WaitsForASettingsFileBeforeItCanBePressed) {
    applyBtn().performClick();

    EXPECT_THAT(platform.ports.received, IsEmpty());
    EXPECT_THAT(platform.log.lines, IsEmpty());
}

using ResetCalibration = CalibrationTab;

TEST_F(ResetCalibration, SendsWhatTheControlsShowWithoutCompletingThem) {
    showManual();
    type("", "600");

    tab.resetCalibration();

    expectTexts("", "600");
    expectManualSent(0.0, 600.0);
    EXPECT_THAT(platform.log.lines, ElementsAre("0.000000,600.000000"));
}

} // namespace
