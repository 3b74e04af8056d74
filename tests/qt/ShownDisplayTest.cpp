#include "qt/ShownDisplay.h"

#include "linux/PlistCoder.h"
#include "linux/PosixFileManager.h"
#include "qt/ToolkitPlatform.h"
#include "support/TemporaryDirectory.h"

#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTest>
#include <QVBoxLayout>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {

namespace {

using platform::NSMutableDictionary;

/// A pane's form with a heading and a field, above a folder of real files.
class ShownDisplayTest : public testing::Test {
protected:
    ShownDisplayTest() {
        platform::usePlatform(&platform_);
        settings_.setObjectName("tabView_");
        heading_.setProperty("fact", "SelectDeviceName");
        width_.setProperty("fact", "NativeWidth");
        rows_.addWidget(&heading_);
        rows_.addWidget(&settings_);
        settings_.addWidget(&width_);
    }
    ~ShownDisplayTest() override { platform::usePlatform(nullptr); }

    void save(const std::string& name, std::initializer_list<NSMutableDictionary::ObjectAndKey> contents) const {
        const auto dictionary = NSMutableDictionary::dictionaryWithObjectsAndKeys(contents);
        EXPECT_TRUE(dictionary.writeToFileAtomically(folder_.path(name)));
    }

    void choose(const std::string& name) const { save("Utilities.plist", {{name, "SelectDeviceName"}}); }

    [[nodiscard]] std::string heading() const { return heading_.text().toStdString(); }

    RecordedLog log_;
    EchoBundle bundle_;
    EmptyWorld world_;
    StoppedClock clock_;
    QtRunLoop runLoop_;
    PosixFileManager files_;
    PlistCoder coder_;
    platform::Platform platform_{.log = log_,
                                 .fileManager = files_,
                                 .propertyLists = coder_,
                                 .bundles = bundle_,
                                 .messagePorts = world_,
                                 .runLoop = runLoop_,
                                 .clock = clock_,
                                 .systemVersion = clock_};
    TemporaryDirectory folder_;
    QWidget form_;
    QVBoxLayout rows_{&form_};
    QLabel heading_;
    QStackedWidget settings_;
    QLineEdit width_;
};

TEST_F(ShownDisplayTest, IsNamedFromTheStart) {
    choose("Kelvo 24");
    const ShownDisplay display(form_, folder_.path());
    EXPECT_EQ(display.name(), "Kelvo 24");
    EXPECT_EQ(heading(), "Kelvo 24");
}

TEST_F(ShownDisplayTest, HasNoNameWhereNoFileSaysOne) {
    const ShownDisplay display(form_, folder_.path());
    EXPECT_EQ(display.name(), "");
    EXPECT_EQ(heading(), "");
}

TEST_F(ShownDisplayTest, HasNoNameWhereTheFileIsDamagedOrTheNameIsNone) {
    const auto nameIn = [this](const std::string& contents) {
        static_cast<void>(folder_.write("Utilities.plist", contents));
        return ShownDisplay(form_, folder_.path()).name().toStdString();
    };
    EXPECT_EQ(nameIn("<plist><dict><key>SelectDeviceName"), "");
    EXPECT_EQ(nameIn("<plist><dict><key>SelectDeviceName</key><array/></dict></plist>"), "");
}

TEST_F(ShownDisplayTest, HasNoNameWhileThePaneHidesItsSettings) {
    choose("Kelvo 24");
    const ShownDisplay display(form_, folder_.path());
    QSignalSpy named(&display, &ShownDisplay::named);

    settings_.hide();
    ASSERT_TRUE(named.wait());
    EXPECT_EQ(display.name(), "");
    EXPECT_EQ(heading(), "");

    settings_.show();
    ASSERT_TRUE(named.wait());
    EXPECT_EQ(heading(), "Kelvo 24");
}

TEST_F(ShownDisplayTest, IsNamedAnewWhenThePaneGoesOnToAnother) {
    choose("Kelvo 24");
    const ShownDisplay display(form_, folder_.path());
    QSignalSpy named(&display, &ShownDisplay::named);

    choose("Kelvo 32");
    ASSERT_TRUE(named.wait());
    EXPECT_EQ(named.takeFirst().value(0).toString(), "Kelvo 32");
    EXPECT_EQ(heading(), "Kelvo 32");
}

TEST_F(ShownDisplayTest, SettingsFileGivesAFieldItsPlaceholder) {
    choose("Kelvo 24");
    save("Settings_Kelvo 24.plist", {{1920, "NativeWidth"}});
    const ShownDisplay display(form_, folder_.path());
    EXPECT_EQ(width_.placeholderText(), "1920");
    EXPECT_EQ(width_.text(), "");
}

TEST_F(ShownDisplayTest, FieldHasNoPlaceholderWhereTheSettingsFileSaysNothing) {
    choose("Kelvo 24");
    save("Settings_Kelvo 24.plist", {{true, "AutoCalibration"}});
    width_.setPlaceholderText("of another display");
    const ShownDisplay display(form_, folder_.path());
    EXPECT_EQ(width_.placeholderText(), "");
}

TEST_F(ShownDisplayTest, FolderIsThatOfTheBundlesTexts) {
    bundle_.texts["PreferenceFolderName"] = "Kelvo";
    EXPECT_EQ(panePreferenceFolder(bundle_), files_.homeDirectory() + "/Library/Preferences/Kelvo");
}

} // namespace

} // namespace kelvo
