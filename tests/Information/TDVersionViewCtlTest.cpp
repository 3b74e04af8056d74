#include "Information/TDVersionViewCtl.h"

#include "TDCurrentDevice.h"
#include "TDNames.h"
#include "TDUtilities.h"
#include "support/FakePlatform.h"
#include "support/FormStandIn.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using platform::Value;
using support::arrayOf;
using support::dictionaryOf;
using testing::IsEmpty;

const std::string kSettingsPath = "/home/user/Library/Preferences/KelvoTouchDisplay/Settings_Wall.plist";

class VersionTab : public testing::Test {
protected:
    VersionTab() { setModelType("Wall"); }

    platform::NSTextField& versionText() { return support::outlet<platform::NSTextField>(tab, "versionText_"); }

    void setVersion(const Value& version) {
        platform.setPlist(kSettingsPath, dictionaryOf({{version, keys::driverVersion}}));
    }

    void expectErrorWhichKeepsTheText() {
        versionText().setStringValue("1.2.3.4");
        EXPECT_THROW(tab.updateUIState(), std::invalid_argument);
        EXPECT_EQ(versionText().stringValue(), "1.2.3.4");
    }

    support::FakePlatform platform;
    TDVersionViewCtl tab;
};

TEST_F(VersionTab, ComesFromTheFormOfItsNameAndHasNoActions) {
    EXPECT_EQ(tab.nibName(), "TDVersionViewCtl");
    EXPECT_THAT(tab.actions(), IsEmpty());
}

TEST_F(VersionTab, ShowsTheStoredDriverVersion) {
    setVersion("2.0 beta & more");

    tab.updateUIState();

    EXPECT_EQ(versionText().stringValue(), "2.0 beta & more");
}

TEST_F(VersionTab, ShowsTheVersionOfANewSettingsFile) {
    ASSERT_TRUE(readSettingItemsFromPlist(kSettingsPath));

    tab.updateUIState();

    EXPECT_EQ(versionText().stringValue(), "0.8.0.3");
}

TEST_F(VersionTab, NamesTheFileWithoutAVersion) {
    platform.setPlist(kSettingsPath, dictionaryOf({}));

    try {
        tab.updateUIState();
        FAIL() << "a file without a version is an error";
    } catch (const std::invalid_argument& error) {
        EXPECT_EQ(error.what(), "no driver version in " + kSettingsPath);
    }
}

TEST_F(VersionTab, ClearsTheFieldWithoutASettingsFileAndMakesNone) {
    versionText().setStringValue("1.2.3.4");

    tab.updateUIState();

    EXPECT_EQ(versionText().stringValue(), "");
    EXPECT_FALSE(platform.files.files.contains(kSettingsPath));
}

TEST_F(VersionTab, ShowsAnEmptyVersionAsItIs) {
    setVersion("1.2.3.4");
    tab.updateUIState();
    setVersion("");

    tab.updateUIState();

    EXPECT_EQ(versionText().stringValue(), "");
}

TEST_F(VersionTab, RefusesSettingsThatHoldOnlyGestures) {
    platform.setPlist(kSettingsPath, dictionaryOf({{arrayOf({}), keys::gestureArray}}));

    expectErrorWhichKeepsTheText();
}

TEST_F(VersionTab, RefusesAVersionThatIsNoText) {
    for (const Value& version : {Value(2), Value(0.8), Value(true), Value(arrayOf({"0.8.0.3"}))}) {
        setVersion(version);
        SCOPED_TRACE(version.description());
        expectErrorWhichKeepsTheText();
    }
}

TEST_F(VersionTab, RefusesAFileThatIsNoPropertyList) {
    platform.files.setText(kSettingsPath, "no property list");

    expectErrorWhichKeepsTheText();
}

TEST_F(VersionTab, ShowsTheVersionThatComesAfterAnError) {
    platform.setPlist(kSettingsPath, dictionaryOf({{arrayOf({}), keys::gestureArray}}));
    expectErrorWhichKeepsTheText();
    setVersion("0.9");

    tab.updateUIState();

    EXPECT_EQ(versionText().stringValue(), "0.9");
}

TEST_F(VersionTab, ShowsTheVersionOfTheDeviceThatIsCurrentNow) {
    setVersion("1.0");
    platform.setPlist("/home/user/Library/Preferences/KelvoTouchDisplay/Settings_Desk.plist",
                      dictionaryOf({{"2.0", keys::driverVersion}}));
    tab.updateUIState();
    setModelType("Desk");

    tab.updateUIState();

    EXPECT_EQ(versionText().stringValue(), "2.0");
}

TEST_F(VersionTab, ShowsTheSameTwiceAndNotifiesOnce) {
    setVersion("1.0");
    int changes = 0;
    const platform::Subscription subscription = versionText().observeChanges([&] { ++changes; });

    tab.updateUIState();
    tab.updateUIState();

    EXPECT_EQ(versionText().stringValue(), "1.0");
    EXPECT_EQ(changes, 1);
}

TEST_F(VersionTab, LogsAndSendsNothing) {
    setVersion("1.0");

    tab.updateUIState();

    EXPECT_THAT(platform.log.lines, IsEmpty());
    EXPECT_THAT(platform.ports.lookUps, IsEmpty());
}

} // namespace
