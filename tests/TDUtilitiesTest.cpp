#include "TDUtilities.h"

#include "TDCurrentDevice.h"
#include "TDMessages.h"
#include "TDNames.h"
#include "support/FakePlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using platform::NSMutableDictionary;
using platform::Value;
using support::arrayOf;
using support::dictionaryOf;
using support::MemoryPorts;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string kFolder = "/home/user/Library/Preferences/KelvoTouchDisplay";
const std::string kUtilitiesPath = kFolder + "/Utilities.plist";
const std::string kSettingsPath = kFolder + "/Settings_A.plist";

class Store : public testing::Test {
protected:
    support::FakePlatform platform;
};

using Paths = Store;

TEST_F(Paths, OfAModelsSettingsAreMadeOfItsName) {
    EXPECT_EQ(getSettingsFileName("N 24"), "Settings_N 24.plist");
    EXPECT_EQ(getSettingsFileName(""), "Settings_.plist");
    EXPECT_EQ(getSettingsFileName("%@"), "Settings_%@.plist");
    EXPECT_EQ(getSettingsFilePath("N"), kFolder + "/Settings_N.plist");
}

TEST_F(Paths, OfAMissingModelNameReadNull) { EXPECT_EQ(getSettingsFileName(std::nullopt), "Settings_(null).plist"); }

TEST_F(Paths, OfAModelNameWithASlashAreNested) {
    EXPECT_EQ(getSettingsFilePath("N/M"), kFolder + "/Settings_N/M.plist");
}

TEST_F(Paths, LieInTheFoldersTheyBelongTo) {
    EXPECT_EQ(getPreferenceFolderPath(), kFolder);
    EXPECT_EQ(getUilitiesFilePath(), kUtilitiesPath);
    EXPECT_EQ(getAdvanceCalibrationFilePath(), kFolder + "/advanceCalibrationPoints.plist");
    EXPECT_EQ(getGlobalPreferenceFilePath(), "/home/user/Library/Preferences/.GlobalPreferences.plist");
    EXPECT_EQ(getDockPreferenceFilePath(), "/home/user/Library/Preferences/com.apple.dock.plist");
    EXPECT_EQ(getSystemPreferenceFolderPath(), "/machine/Library/Preferences/KelvoTouchDisplay");
    EXPECT_EQ(getSupportDeviceListFilePath(), "/machine/Library/Preferences/KelvoTouchDisplay/DeviceList.plist");
    EXPECT_EQ(getSupportResolutionListFilePath(),
              "/machine/Library/Preferences/KelvoTouchDisplay/SupportResolutionList.plist");
}

TEST_F(Paths, ThroughThePreferenceFolderCreateItOnce) {
    (void)getUilitiesFilePath();
    (void)getSettingsFilePath("N");
    (void)getAdvanceCalibrationFilePath();

    EXPECT_THAT(platform.files.createdFolders, ElementsAre(kFolder));
}

TEST_F(Paths, ThroughTheSystemFolderCreateItOnce) {
    (void)getSupportDeviceListFilePath();
    (void)getSupportResolutionListFilePath();

    EXPECT_THAT(platform.files.createdFolders, ElementsAre("/machine/Library/Preferences/KelvoTouchDisplay"));
}

TEST_F(Paths, OfTheSystemsOwnFilesCreateNothing) {
    (void)getGlobalPreferenceFilePath();
    (void)getDockPreferenceFilePath();

    EXPECT_THAT(platform.files.createdFolders, IsEmpty());
}

TEST_F(Paths, TakeAPlainFileInTheFoldersPlaceForTheFolder) {
    platform.files.setText(kFolder, "a file");

    EXPECT_EQ(getPreferenceFolderPath(), kFolder);
    EXPECT_THAT(platform.files.createdFolders, IsEmpty());
}

TEST_F(Paths, AreGivenAlsoWhenTheirFolderCannotBeCreated) {
    platform.files.isReadOnly = true;

    EXPECT_EQ(getUilitiesFilePath(), kUtilitiesPath);
    EXPECT_EQ(getSystemPreferenceFolderPath(), "/machine/Library/Preferences/KelvoTouchDisplay");
}

TEST_F(Paths, WithoutAFolderNameLieInThePreferencesThemselves) {
    platform.bundle.strings.clear();

    EXPECT_EQ(getPreferenceFolderPath(), "/home/user/Library/Preferences/");
    EXPECT_EQ(getUilitiesFilePath(), "/home/user/Library/Preferences/Utilities.plist");
}

TEST_F(Paths, WithoutTheBundleReadItsStringsAsEmpty) {
    platform.bundle.isLoaded = false;

    EXPECT_EQ(getUilitiesFilePath(), "/home/user/Library/Preferences/Utilities.plist");
}

TEST_F(Paths, OfTheApplicationsAreThreePiecesWithNothingBetweenThem) {
    EXPECT_EQ(utilitiesAppInStatusBarFullPath(),
              "/Library/Application Support/KelvoTouchDisplay/StatusBarApp/KelvoTouchDisplaySettingUtility.app");
    EXPECT_EQ(calibrationToolFullPath(),
              "/Library/Application Support/KelvoTouchDisplay/CalibrationTool/CalibrationTool.app");
}

TEST_F(Paths, OfTheApplicationsWithoutAFolderNameHaveADoubledSlash) {
    platform.bundle.strings.clear();

    EXPECT_EQ(utilitiesAppInStatusBarFullPath(),
              "/Library/Application Support//StatusBarApp/KelvoTouchDisplaySettingUtility.app");
    EXPECT_EQ(calibrationToolFullPath(), "/Library/Application Support//CalibrationTool/CalibrationTool.app");
}

using SettingsFile = Store;

TEST_F(SettingsFile, IsCreatedWithExactlyFourDefaultsAndReturned) {
    const NSMutableDictionary settings = readSettingItemsFromPlist(kSettingsPath);

    EXPECT_THAT(settings.allKeys(), ElementsAre("DoubleClickRange", "DoubleClickRate", "RotateMode", "DriverVersion"));
    EXPECT_EQ(settings.objectForKey("DoubleClickRange").kind(), Value::Kind::Integer);
    EXPECT_TRUE(settings.objectForKey("DoubleClickRange").isEqual(32));
    EXPECT_EQ(settings.objectForKey("DoubleClickRate").kind(), Value::Kind::Real);
    EXPECT_TRUE(settings.objectForKey("DoubleClickRate").isEqual(0.5));
    EXPECT_EQ(settings.objectForKey("RotateMode").kind(), Value::Kind::Boolean);
    EXPECT_FALSE(settings.objectForKey("RotateMode").boolValue());
    EXPECT_TRUE(settings.objectForKey("DriverVersion").isEqual("0.8.0.3"));
    EXPECT_TRUE(platform.plist(kSettingsPath).isEqual(settings));
}

TEST_F(SettingsFile, ThatExistsIsReadAsItIs) {
    platform.setPlist(kSettingsPath, dictionaryOf({{"own", "Key"}}));

    EXPECT_EQ(Value(readSettingItemsFromPlist(kSettingsPath)).description(), "{ Key = own; }");
    EXPECT_EQ(platform.files.writes, 0);
}

TEST_F(SettingsFile, ThatIsDamagedIsLeftAsItIsAndGivesNothing) {
    platform.files.setText(kSettingsPath, "damaged");

    EXPECT_FALSE(readSettingItemsFromPlist(kSettingsPath));
    EXPECT_EQ(platform.files.textOf(kSettingsPath), "damaged");
}

TEST_F(SettingsFile, ThatCannotBeWrittenGivesNothing) {
    platform.files.isDiskFull = true;

    EXPECT_FALSE(readSettingItemsFromPlist(kSettingsPath));
}

TEST_F(SettingsFile, WithARootOtherThanADictionaryGivesNothing) {
    platform.files.files[kSettingsPath] = platform.propertyLists.createXMLData(arrayOf({"A"})).value();

    EXPECT_FALSE(readSettingItemsFromPlist(kSettingsPath));
}

using UtilitiesFile = Store;

TEST_F(UtilitiesFile, IsCreatedWithExactlyFiveDefaultsInTheirOrder) {
    const NSMutableDictionary utilities = readUtilitiesDictionary();

    EXPECT_THAT(utilities.allKeys(),
                ElementsAre("SelectedMenuItem", "IsShowStatuMenu", "DriverEnable", "CurrentDeviceType", "VerboseLog"));
    EXPECT_EQ(utilities.objectForKey("SelectedMenuItem").kind(), Value::Kind::Integer);
    EXPECT_TRUE(utilities.objectForKey("SelectedMenuItem").isEqual(0));
    EXPECT_EQ(utilities.objectForKey("IsShowStatuMenu").kind(), Value::Kind::Boolean);
    EXPECT_TRUE(utilities.objectForKey("IsShowStatuMenu").boolValue());
    EXPECT_TRUE(utilities.objectForKey("DriverEnable").boolValue());
    EXPECT_TRUE(utilities.objectForKey("CurrentDeviceType").isEqual(arrayOf({})));
    EXPECT_EQ(utilities.objectForKey("VerboseLog").kind(), Value::Kind::Boolean);
    EXPECT_FALSE(utilities.objectForKey("VerboseLog").boolValue());
}

TEST_F(UtilitiesFile, HoldsTheDeviceNameOnlyAfterTheFirstMergeThatAddsIt) {
    EXPECT_FALSE(readUtilitiesDictionary().objectForKey("SelectDeviceName"));

    EXPECT_TRUE(saveSettingItemsToPlist(dictionaryOf({{"X", "SelectDeviceName"}}), kUtilitiesPath));

    EXPECT_TRUE(readUtilitiesDictionary().objectForKey("SelectDeviceName").isEqual("X"));
}

TEST_F(UtilitiesFile, ThatAnotherProcessMakesMeanwhileStaysAndIsRead) {
    platform.files.beforeCreation = [this] {
        platform.setPlist(kUtilitiesPath, dictionaryOf({{arrayOf({"Desk"}), "CurrentDeviceType"}}));
    };

    EXPECT_EQ(Value(readUtilitiesDictionary()).description(), "{ CurrentDeviceType = ( Desk ); }");
    EXPECT_EQ(Value(platform.plist(kUtilitiesPath)).description(), "{ CurrentDeviceType = ( Desk ); }");
}

TEST_F(UtilitiesFile, ThatIsDamagedIsLeftAsItIs) {
    platform.files.setText(kUtilitiesPath, "<plist>");

    EXPECT_FALSE(readUtilitiesDictionary());
    EXPECT_EQ(platform.files.textOf(kUtilitiesPath), "<plist>");
}

using Merge = Store;

TEST_F(Merge, ChangesOnlyItsKeysAndReplacesValuesWhole) {
    platform.setPlist(
        kSettingsPath,
        dictionaryOf({{1, "First"}, {dictionaryOf({{1, "Old"}}), "Nested"}, {platform::NSData{1, 2}, "Unknown"}}));

    EXPECT_TRUE(saveSettingItemsToPlist(dictionaryOf({{dictionaryOf({{2, "New"}}), "Nested"}, {true, "Added"}}),
                                        kSettingsPath));

    EXPECT_EQ(Value(platform.plist(kSettingsPath)).description(),
              "{ First = 1; Nested = { New = 2; }; Unknown = <0102>; Added = 1; }");
}

TEST_F(Merge, IntoNothingCreatesAFileOfJustTheMergedKeys) {
    EXPECT_TRUE(saveSettingItemsToPlist(dictionaryOf({{"X", "SelectDeviceName"}}), kUtilitiesPath));

    EXPECT_EQ(Value(platform.plist(kUtilitiesPath)).description(), "{ SelectDeviceName = X; }");
}

TEST_F(Merge, IntoADamagedFileWritesNothingAndSaysSo) {
    platform.files.setText(kUtilitiesPath, "damaged");

    EXPECT_FALSE(saveSettingItemsToPlist(dictionaryOf({{"X", "SelectDeviceName"}}), kUtilitiesPath));
    EXPECT_EQ(platform.files.textOf(kUtilitiesPath), "damaged");
}

TEST_F(Merge, LeavesAFileThatCannotBeReadWhollyRightByteForByte) {
    const std::string declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">";
    for (const std::string& contents :
         {declaration + "<dict><key>Unknown</key><date>yesterday</date></dict></plist>",
          declaration + "<dict><key>Unknown</key><integer>3x</integer></dict></plist>",
          declaration + "<dict><key>Unknown</key><integer></integer></dict></plist>",
          declaration + "<dict><key>Unknown</key><real>0,5</real></dict></plist>",
          declaration + "<dict><key>Unknown</key><integer>-9223372036854775809</integer></dict></plist>",
          declaration + "<dict><key>Unknown</key><integer>18446744073709551616</integer></dict></plist>",
          declaration + "<dict><key>Unknown</key></dict></plist>", declaration + "<dict><true/></dict></plist>",
          declaration + "<dict><key>Unknown</key><string>\xE9</string></dict></plist>",
          declaration + "<dict><key>Unknown</key><true/></dict>",
          declaration + "<dict><key>Unknown</key><true/></dict></plist>text"}) {
        platform.files.setText(kSettingsPath, contents);

        EXPECT_FALSE(saveSettingItemsToPlist(dictionaryOf({{1, "Added"}}), kSettingsPath)) << contents;
        EXPECT_EQ(platform.files.textOf(kSettingsPath), contents);
        EXPECT_FALSE(Helpers::NSMutableDictionary::dictionaryWithContentsOfData(
            platform::NSData(contents.begin(), contents.end())));
    }
}

TEST_F(Merge, OfATextThatNoFileCanHoldLeavesTheOldFile) {
    platform.setPlist(kSettingsPath, dictionaryOf({{1, "Old"}}));
    const std::string before = platform.files.textOf(kSettingsPath);

    for (const char* text : {"caf\xE9", "\x01", "\xED\xA0\x80", "\xEF\xBF\xBF"}) {
        EXPECT_FALSE(saveSettingItemsToPlist(dictionaryOf({{text, "Name"}}), kSettingsPath));
        EXPECT_FALSE(saveSettingItemsToPlist(dictionaryOf({{1, text}}), kSettingsPath));
        EXPECT_EQ(platform.files.textOf(kSettingsPath), before);
    }
}

TEST_F(Merge, OnAFullDiskSaysSo) {
    platform.files.isDiskFull = true;

    EXPECT_FALSE(saveSettingItemsToPlist(dictionaryOf({{"X", "SelectDeviceName"}}), kUtilitiesPath));
}

TEST_F(Merge, KeepsEveryKindOfValueThisProgramHasNeverHeardOf) {
    const auto unknown = dictionaryOf({{std::numeric_limits<std::int64_t>::min(), "SmallestInteger"},
                                       {std::numeric_limits<std::uint64_t>::max(), "LargestInteger"},
                                       {0.1 + 0.2, "Real"},
                                       {2.0, "WholeReal"},
                                       {true, "Boolean"},
                                       {"é & <", "Text"},
                                       {platform::NSData{0, 255}, "Data"},
                                       {platform::NSDate{86400.0}, "Date"},
                                       {arrayOf({1, arrayOf({}), dictionaryOf({})}), "List"}});
    platform.setPlist(kSettingsPath, unknown);

    EXPECT_TRUE(saveSettingItemsToPlist(dictionaryOf({{1, "Added"}}), kSettingsPath));

    const NSMutableDictionary merged = platform.plist(kSettingsPath);
    for (const std::string& key : unknown.allKeys()) {
        EXPECT_EQ(merged.objectForKey(key).kind(), unknown.objectForKey(key).kind()) << key;
        EXPECT_TRUE(merged.objectForKey(key).isEqual(unknown.objectForKey(key))) << key;
    }
}

using CurrentDevice = Store;

TEST_F(CurrentDevice, IsReplacedWhole) {
    setModelType("A");
    EXPECT_EQ(gModelType, "A");
    setModelType(std::nullopt);
    EXPECT_EQ(gModelType, std::nullopt);

    setDevicesModel(std::vector<std::string>{"A", "B"});
    EXPECT_THAT(gDeviceModel, testing::Optional(ElementsAre("A", "B")));
    setDevicesModel(std::nullopt);
    EXPECT_EQ(gDeviceModel, std::nullopt);
}

class Sending : public testing::Test {
protected:
    NSMutableDictionary payload = dictionaryOf({{0.5, "DoubleClickRate"}, {"A", "DeviceName"}});
    support::FakePlatform platform;
};

TEST_F(Sending, ToTheDriverDeliversIdAndPayload) {
    platform.ports.peers["TouchDisplayDriverMessagePort"] = MemoryPorts::Peer::AnswersWithData;

    resetDeviceParameter(payload, -5);

    ASSERT_EQ(platform.ports.received.size(), 1U);
    EXPECT_EQ(platform.ports.received[0].id, -5);
    EXPECT_TRUE(platform.ports.received[0].payload.isEqual(payload));
    EXPECT_EQ(platform.ports.received[0].payload.objectForKey("DoubleClickRate").kind(), Value::Kind::Real);
}

TEST_F(Sending, ToTheUtilityGoesToItsOwnPort) {
    platform.ports.peers["StatusBarMessagePort"] = MemoryPorts::Peer::Answers;

    sendDisplayStateToStatusBarState(dictionaryOf({{false, "IsShowStatuMenu"}}), kMessageIDForStatusMenu);

    ASSERT_EQ(platform.ports.received.size(), 1U);
    EXPECT_EQ(platform.ports.received[0].port, "StatusBarMessagePort");
}

TEST_F(Sending, WithNoDriverRunningLogsNothingAndReturnsAtOnce) {
    resetDeviceParameter(payload, 0);

    EXPECT_THAT(platform.log.lines, IsEmpty());
    EXPECT_EQ(platform.runLoop.now(), 0.0);
    EXPECT_THAT(platform.ports.lookUps, ElementsAre("TouchDisplayDriverMessagePort"));
}

TEST_F(Sending, ToAHungDriverReturnsAfterItsTimeOutAndTellsNobody) {
    platform.ports.peers["TouchDisplayDriverMessagePort"] = MemoryPorts::Peer::Hung;

    resetDeviceParameter(payload, 0);

    EXPECT_THAT(platform.log.lines, IsEmpty());
    EXPECT_EQ(platform.runLoop.now(), 1.0);
}

TEST_F(Sending, WaitsASecondToBeRidOfTheMessageAndASecondForItsAnswer) {
    for (const char* port : {"TouchDisplayDriverMessagePort", "StatusBarMessagePort"}) {
        platform.ports.peers[port] = MemoryPorts::Peer::Answers;
    }
    resetDeviceParameter(payload, 0);
    sendDisplayStateToStatusBarState(payload, 0);

    ASSERT_EQ(platform.ports.received.size(), 2U);
    for (const auto& message : platform.ports.received) {
        EXPECT_EQ(message.sendTimeout, 1.0) << message.port;
        EXPECT_EQ(message.receiveTimeout, 1.0) << message.port;
    }
}

TEST_F(Sending, ToASlowDriverWaitsForItsAnswer) {
    platform.ports.peers["TouchDisplayDriverMessagePort"] = MemoryPorts::Peer::Slow;

    resetDeviceParameter(payload, 0);

    EXPECT_EQ(platform.runLoop.now(), 0.5);
    EXPECT_EQ(platform.ports.received.size(), 1U);
}

TEST_F(Sending, SaysWhatBecameOfTheMessage) {
    using enum platform::CFMessagePortStatus;
    EXPECT_EQ(sendToPort("Port", payload, 0), IsInvalid);
    platform.ports.peers["Port"] = MemoryPorts::Peer::Answers;
    EXPECT_EQ(sendToPort("Port", payload, 0), Success);
    EXPECT_EQ(sendToPort("Port", {}, 0), IsInvalid);
    platform.ports.peers["Port"] = MemoryPorts::Peer::Hung;
    EXPECT_EQ(sendToPort("Port", payload, 0), ReceiveTimeout);
}

TEST_F(Sending, LooksThePortUpForEachMessage) {
    platform.ports.peers["TouchDisplayDriverMessagePort"] = MemoryPorts::Peer::Answers;
    resetDeviceParameter(payload, 0);
    platform.ports.peers.clear();
    resetDeviceParameter(payload, 0);
    platform.ports.peers["TouchDisplayDriverMessagePort"] = MemoryPorts::Peer::Answers;
    resetDeviceParameter(payload, 0);

    EXPECT_EQ(platform.ports.lookUps.size(), 3U);
    EXPECT_EQ(platform.ports.received.size(), 2U);
}

TEST_F(Sending, WithoutACurrentDeviceStillCarriesTheSetting) {
    platform.ports.peers["TouchDisplayDriverMessagePort"] = MemoryPorts::Peer::Answers;
    setModelType(std::nullopt);

    resetDeviceParameter(payloads::doubleClickRate(0.5), kMessageIDForDoubleClickRate);

    ASSERT_EQ(platform.ports.received.size(), 1U);
    EXPECT_THAT(platform.ports.received[0].payload.allKeys(), ElementsAre("DoubleClickRate"));
}

TEST_F(Sending, WithAnEmptyDeviceNameCarriesIt) {
    platform.ports.peers["TouchDisplayDriverMessagePort"] = MemoryPorts::Peer::Answers;

    resetDeviceParameter(payloads::doubleClickRate(0.5), kMessageIDForDoubleClickRate);

    ASSERT_EQ(platform.ports.received.size(), 1U);
    EXPECT_THAT(platform.ports.received[0].payload.allKeys(), ElementsAre("DoubleClickRate", "DeviceName"));
}

TEST_F(Sending, AListWhoseFirstValueIsMissingIsEmpty) {
    platform.ports.peers["TouchDisplayDriverMessagePort"] = MemoryPorts::Peer::Answers;
    setModelType("A");

    resetDeviceParameter(payloads::gestureArray(), kMessageIDForGestureArray);

    ASSERT_EQ(platform.ports.received.size(), 1U);
    EXPECT_EQ(platform.ports.received[0].payload.count(), 0U);
}

using Codec = Store;

TEST_F(Codec, EncodesADictionaryAndLeavesItWithTheCaller) {
    Value object = dictionaryOf({{32, "DoubleClickRange"}});

    const auto data = Helpers::NSDate::dataWithContentsOfDictionary(object);

    ASSERT_TRUE(data);
    EXPECT_TRUE(object);
    EXPECT_EQ(Value(Helpers::NSMutableDictionary::dictionaryWithContentsOfData(*data)).description(),
              "{ DoubleClickRange = 32; }");
}

TEST_F(Codec, GivesNothingForNothing) {
    Value none;

    EXPECT_FALSE(Helpers::NSDate::dataWithContentsOfDictionary(none));
}

TEST_F(Codec, TakesAForeignObjectAndGivesNothing) {
    Value foreign = "a text";

    EXPECT_FALSE(Helpers::NSDate::dataWithContentsOfDictionary(foreign));
    EXPECT_FALSE(foreign);
}

TEST_F(Codec, DecodesOnlyADictionaryRoot) {
    const platform::NSData list = platform.propertyLists.createXMLData(arrayOf({"A"})).value();

    EXPECT_FALSE(Helpers::NSMutableDictionary::dictionaryWithContentsOfData(list));
    EXPECT_FALSE(Helpers::NSMutableDictionary::dictionaryWithContentsOfData({}));
    EXPECT_FALSE(Helpers::NSMutableDictionary::dictionaryWithContentsOfData(platform::NSData{'x'}));
}

} // namespace
