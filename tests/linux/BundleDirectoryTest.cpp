#include "linux/BundleDirectory.h"

#include "linux/PlistCoder.h"
#include "linux/PosixFileManager.h"
#include "linux/SystemClock.h"
#include "platform/Log.h"
#include "platform/MessagePorts.h"
#include "platform/RunLoop.h"
#include "support/EnvironmentVariable.h"
#include "support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <dlfcn.h>

namespace {

using kelvo::BundleDirectory;
namespace fs = std::filesystem;

constexpr char kIdentifier[] = "com.kelvo.TouchDisplay.PreferencePane";

std::string infoWith(std::string_view executable) {
    return "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>" + std::string(kIdentifier) +
           "</string><key>CFBundleExecutable</key><string>" + std::string(executable) +
           "</string><key>NSPrincipalClass</key><string>TestPane</string></dict></plist>";
}

/// What `action` complains of; empty when it does not.
template <typename Action>
std::string complaintOf(Action action) {
    try {
        action();
        return {};
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

class Recorder final : public platform::SystemLog {
public:
    void write(std::string_view line) override { lines.emplace_back(line); }
    std::vector<std::string> lines;
};

class NoPorts final : public platform::CFMessagePorts {
    std::unique_ptr<platform::CFMessagePort> createLocal(const std::string&, CallBack) override { return nullptr; }
    std::unique_ptr<platform::CFRemoteMessagePort> createRemote(const std::string&) override { return nullptr; }
};

class NoRunLoop final : public platform::CFRunLoop {
    std::shared_ptr<platform::NSTimer> scheduleTimer(double, std::function<void()>) override { return nullptr; }
    std::unique_ptr<platform::CFFileDescriptor> watch(int, std::function<void()>) override { return nullptr; }
    void runUntil(const std::function<bool()>&, double) override {}
};

/// A test with a bundle on disk, and a user of whom no language is known unless the test says so.
class BundleDirectoryTest : public testing::Test {
protected:
    [[nodiscard]] std::string bundlePath() const { return directory_.path("Test.prefPane"); }
    std::string writeInfo(std::string_view info) const {
        return directory_.write("Test.prefPane/Contents/Info.plist", info);
    }
    std::string writeBinary(std::string_view contents) const {
        return directory_.write("Test.prefPane/Contents/Test", contents);
    }
    void writeTable(const std::string& language, std::string_view table) const {
        directory_.write("Test.prefPane/Contents/Resources/" + language + ".lproj/Localizable.strings", table);
    }
    [[nodiscard]] std::unique_ptr<BundleDirectory> openBundle() const {
        writeInfo(infoWith("Test"));
        return BundleDirectory::open(bundlePath());
    }
    /// The text of "Key" for a user with these settings.
    [[nodiscard]] std::string textFor(const std::string& language, const std::string& locale) const {
        const EnvironmentVariable list("LANGUAGE", language);
        const EnvironmentVariable lang("LANG", locale);
        return openBundle()->localizedStringForKey("Key", "none");
    }

    TemporaryDirectory directory_;

private:
    EnvironmentVariable language_{"LANGUAGE", std::nullopt};
    EnvironmentVariable all_{"LC_ALL", std::nullopt};
    EnvironmentVariable messages_{"LC_MESSAGES", std::nullopt};
    EnvironmentVariable lang_{"LANG", std::nullopt};
};

class BundleDirectoryWithPlatformTest : public BundleDirectoryTest {
protected:
    Recorder log_;
    kelvo::PosixFileManager files_;
    kelvo::PlistCoder propertyLists_;
    NoPorts ports_;
    NoRunLoop loop_;
    kelvo::SystemClock clock_;
    std::unique_ptr<BundleDirectory> bundle_ = openBundle();
    platform::Platform platform_{.log = log_,
                                 .fileManager = files_,
                                 .propertyLists = propertyLists_,
                                 .bundles = *bundle_,
                                 .messagePorts = ports_,
                                 .runLoop = loop_,
                                 .clock = clock_,
                                 .systemVersion = clock_};
};

TEST_F(BundleDirectoryTest, InfoTellsIdentifierAndPrincipalClass) {
    const std::unique_ptr<BundleDirectory> bundle = openBundle();
    EXPECT_EQ(bundle->identifier(), kIdentifier);
    EXPECT_EQ(bundle->principalClass(), "TestPane");
}

TEST_F(BundleDirectoryTest, BundleIsFoundByItsIdentifierAlone) {
    const std::unique_ptr<BundleDirectory> bundle = openBundle();
    EXPECT_EQ(bundle->bundleWithIdentifier(kIdentifier), bundle.get());
    EXPECT_EQ(bundle->bundleWithIdentifier("com.kelvo.TouchDisplay"), nullptr);
    EXPECT_EQ(bundle->bundleWithIdentifier(""), nullptr);
}

TEST_F(BundleDirectoryTest, WhatIsWrongWithABundleIsNamed) {
    const std::string info = bundlePath() + "/Contents/Info.plist";
    const auto complaint = [this] { return complaintOf([this] { (void)BundleDirectory::open(bundlePath()); }); };
    EXPECT_EQ(complaint(), info + ": cannot be read");
    writeInfo("hello");
    EXPECT_EQ(complaint(), info + ": is no property list with a dictionary");
    writeInfo("<plist><array/></plist>");
    EXPECT_EQ(complaint(), info + ": is no property list with a dictionary");
    writeInfo("<plist><dict/></plist>");
    EXPECT_EQ(complaint(), info + ": has no CFBundleIdentifier");
    writeInfo("<plist><dict><key>CFBundleIdentifier</key><integer>1</integer></dict></plist>");
    EXPECT_EQ(complaint(), info + ": has no CFBundleIdentifier");
    writeInfo(infoWith(""));
    EXPECT_EQ(complaint(), info + ": has no CFBundleExecutable");
}

TEST_F(BundleDirectoryTest, ExecutableOutsideOfTheBundleIsRefused) {
    for (const char* executable : {"/bin/true", "../Test", "Folder/Test", "..", "."}) {
        writeInfo(infoWith(executable));
        EXPECT_EQ(complaintOf([this] { (void)BundleDirectory::open(bundlePath()); }),
                  bundlePath() + "/Contents/Info.plist: CFBundleExecutable \"" + executable +
                      "\" is no file of the bundle");
    }
}

TEST_F(BundleDirectoryTest, EachTextIsLookedForInTheUsersLanguageThenInEnglish) {
    writeTable("en", "\"Both\" = \"English\"; \"Only\" = \"Only English\";");
    writeTable("de", "\"Both\" = \"Deutsch\"; \"Empty\" = \"\";");
    const EnvironmentVariable lang("LANG", "de_DE.UTF-8");
    const std::unique_ptr<BundleDirectory> bundle = openBundle();
    EXPECT_EQ(bundle->localizedStringForKey("Both", "none"), "Deutsch");
    EXPECT_EQ(bundle->localizedStringForKey("Only", "none"), "Only English");
    EXPECT_EQ(bundle->localizedStringForKey("Empty", "none"), "");
    EXPECT_EQ(bundle->localizedStringForKey("Neither", "none"), "none");
}

TEST_F(BundleDirectoryTest, TextsAreEnglishForNobodyInParticularAndForPrograms) {
    writeTable("en", "Key = \"English\";");
    writeTable("de", "Key = \"Deutsch\";");
    EXPECT_EQ(openBundle()->localizedStringForKey("Key", "none"), "English");
    EXPECT_EQ(textFor("de", "C"), "English");
    EXPECT_EQ(textFor("de", "C.UTF-8"), "English");
    EXPECT_EQ(textFor("de", "POSIX"), "English");
    EXPECT_EQ(textFor("C:de", "de_DE"), "English");
}

TEST_F(BundleDirectoryTest, TheMostParticularFolderOfALocaleIsPreferred) {
    writeTable("de", "Key = \"de\";");
    EXPECT_EQ(textFor("", "de_AT.UTF-8@euro"), "de");
    writeTable("de_AT", "Key = \"de_AT\";");
    EXPECT_EQ(textFor("", "de_AT.UTF-8@euro"), "de_AT");
    writeTable("de-AT", "Key = \"de-AT\";");
    EXPECT_EQ(textFor("", "de_AT.UTF-8@euro"), "de-AT");
    EXPECT_EQ(textFor("", "de_DE.UTF-8"), "de");
}

TEST_F(BundleDirectoryTest, RegionsChooseAmongScriptsAndDialects) {
    writeTable("zh-Hant", "Key = \"Hant\";");
    writeTable("zh-Hans", "Key = \"Hans\";");
    writeTable("pt-BR", "Key = \"pt-BR\";");
    writeTable("pt", "Key = \"pt\";");
    EXPECT_EQ(textFor("", "zh_TW.UTF-8"), "Hant");
    EXPECT_EQ(textFor("", "zh_HK"), "Hant");
    EXPECT_EQ(textFor("", "zh_CN.GB18030"), "Hans");
    EXPECT_EQ(textFor("", "zh_SG"), "Hans");
    EXPECT_EQ(textFor("", "pt_BR.UTF-8"), "pt-BR");
    EXPECT_EQ(textFor("", "pt_PT.UTF-8"), "pt");
}

TEST_F(BundleDirectoryTest, ChineseIsWrittenInTheScriptOfTheRegionOrInTheOneThatIsNamed) {
    writeTable("en", "Key = \"en\";");
    writeTable("zh-Hant", "Key = \"Hant\";");
    writeTable("zh-Hans", "Key = \"Hans\";");
    EXPECT_EQ(textFor("", "zh_MO.UTF-8"), "Hant");
    EXPECT_EQ(textFor("", "zh_MY.UTF-8"), "Hans");
    EXPECT_EQ(textFor("zh", "de_DE.UTF-8"), "Hans");
    EXPECT_EQ(textFor("zh_Hant_HK:de", "de_DE.UTF-8"), "Hant");
    EXPECT_EQ(textFor("zh-Hant", "de_DE.UTF-8"), "Hant");
    EXPECT_EQ(textFor("zh_Hans", "de_DE.UTF-8"), "Hans");
}

TEST_F(BundleDirectoryTest, PortugueseWithoutATableOfItsOwnIsTheBrazilianOne) {
    writeTable("en", "Key = \"en\";");
    writeTable("pt_BR", "Key = \"pt_BR\";");
    EXPECT_EQ(textFor("", "pt_BR.UTF-8"), "pt_BR");
    EXPECT_EQ(textFor("", "pt_PT.UTF-8"), "pt_BR");
    EXPECT_EQ(textFor("pt", "de_DE.UTF-8"), "pt_BR");
}

TEST_F(BundleDirectoryTest, ListOfLanguagesComesBeforeTheLocaleAndEnglishLast) {
    writeTable("en", "Key = \"en\";");
    writeTable("fr", "Key = \"fr\";");
    writeTable("de", "Key = \"de\";");
    EXPECT_EQ(textFor("sv:fr:de", "de_DE.UTF-8"), "fr");
    EXPECT_EQ(textFor("sv::it", "de_DE.UTF-8"), "de");
    EXPECT_EQ(textFor("en_US:de", "de_DE.UTF-8"), "en");
    EXPECT_EQ(textFor("sv", "it_IT.UTF-8"), "en");
}

TEST_F(BundleDirectoryTest, OfTheLocaleVariablesTheFirstThatSaysSomethingCounts) {
    writeTable("de", "Key = \"de\";");
    writeTable("fr", "Key = \"fr\";");
    writeTable("it", "Key = \"it\";");
    const EnvironmentVariable messages("LC_MESSAGES", "fr_FR.UTF-8");
    EXPECT_EQ(textFor("", "it_IT.UTF-8"), "fr");
    const EnvironmentVariable all("LC_ALL", "de_DE.UTF-8");
    EXPECT_EQ(textFor("", "it_IT.UTF-8"), "de");
}

TEST_F(BundleDirectoryTest, LocaleThatIsNoNameLeadsNowhere) {
    directory_.write("evil.lproj/Localizable.strings", "Key = \"evil\";");
    EXPECT_EQ(textFor("../../../evil", "../../../evil"), "none");
    EXPECT_EQ(textFor("", directory_.path("evil")), "none");
}

TEST_F(BundleDirectoryTest, ResourcesAreFoundByTypeAndFolder) {
    const std::string resources = bundlePath() + "/Contents/Resources";
    for (const char* file : {"pictures/b.svg", "pictures/a.svg", "pictures/a.png", "pictures/svg", "c.svg"}) {
        directory_.write("Test.prefPane/Contents/Resources/" + std::string(file), "a picture");
    }
    const std::unique_ptr<BundleDirectory> bundle = openBundle();
    EXPECT_EQ(bundle->pathsForResourcesOfTypeInDirectory("svg", "pictures"),
              (std::vector{resources + "/pictures/a.svg", resources + "/pictures/b.svg"}));
    EXPECT_TRUE(bundle->pathsForResourcesOfTypeInDirectory("svg", "sounds").empty());
    EXPECT_TRUE(bundle->pathsForResourcesOfTypeInDirectory("jpeg", "pictures").empty());
}

TEST_F(BundleDirectoryTest, TableIsReadOnce) {
    writeTable("en", "Key = \"first\";");
    const std::unique_ptr<BundleDirectory> bundle = openBundle();
    EXPECT_EQ(bundle->localizedStringForKey("Key", "none"), "first");
    writeTable("en", "Key = \"second\";");
    EXPECT_EQ(bundle->localizedStringForKey("Key", "none"), "first");
}

TEST_F(BundleDirectoryWithPlatformTest, BinaryThatIsMissingOrNoneIsNamedWithTheReason) {
    const std::string binary = bundlePath() + "/Contents/Test";
    const auto complaint = [this] { return complaintOf([this] { (void)bundle_->loadPane(platform_); }); };
    EXPECT_TRUE(complaint().starts_with(binary + ": cannot be loaded: ")) << complaint();
    EXPECT_NE(complaint().find("No such file"), std::string::npos) << complaint();
    writeBinary("hello");
    EXPECT_TRUE(complaint().starts_with(binary + ": cannot be loaded: ")) << complaint();
}

TEST_F(BundleDirectoryWithPlatformTest, BinaryWithoutTheEntryIsNamed) {
    // Any shared library will do that can be loaded twice; this one is there wherever property lists are read.
    Dl_info library{};
    ASSERT_NE(::dladdr(::dlsym(RTLD_DEFAULT, "plist_free"), &library), 0);
    const std::string binary = bundlePath() + "/Contents/Test";
    fs::copy_file(library.dli_fname, binary);
    EXPECT_EQ(complaintOf([this] { (void)bundle_->loadPane(platform_); }), binary + ": has no NSPreferencePaneCreate");
}

class BundleDirectoryWithPaneTest : public BundleDirectoryWithPlatformTest {
protected:
    void SetUp() override { fs::copy_file(KELVO_TEST_PANE, bundlePath() + "/Contents/Test"); }
};

TEST_F(BundleDirectoryWithPaneTest, PaneOfTheBinaryWorksOnThePlatform) {
    const std::unique_ptr<platform::NSPreferencePane> pane = bundle_->loadPane(platform_);
    pane->willSelect();
    EXPECT_EQ(log_.lines, std::vector<std::string>{"willSelect"});
}

TEST_F(BundleDirectoryWithPaneTest, BinaryThatRefusesThisVersionIsNamed) {
    const EnvironmentVariable refuses("TEST_PANE_REFUSES", "1");
    EXPECT_EQ(complaintOf([this] { (void)bundle_->loadPane(platform_); }),
              bundlePath() + "/Contents/Test: made no pane for ABI version 1");
}

TEST_F(BundleDirectoryWithPaneTest, BinaryStaysLoadedWhenTheBundleGoes) {
    const std::string binary = bundlePath() + "/Contents/Test";
    (void)bundle_->loadPane(platform_);
    bundle_.reset();
    EXPECT_NE(::dlopen(binary.c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr);
}

} // namespace
