#include "TDUtilities.h"

#include "support/FakePlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;

const std::string kFolder = "/home/user/Library/Preferences";

class PreferenceLock : public testing::Test {
protected:
    PreferenceLock() { platform.runLoop.advance(1000.0); }

    /// An entry of the folder, listed after those there are, that was modified so many seconds ago.
    void add(const std::string& name, double age) {
        platform.files.listings[kFolder].push_back(name);
        platform.files.modificationDates[kFolder + "/" + name] = {platform.clock.date().timeIntervalSinceReferenceDate -
                                                                  age};
    }

    support::FakePlatform platform;
};

TEST_F(PreferenceLock, OfAFolderThatCannotBeListedIsNone) {
    EXPECT_FALSE(isDockPreferenceFileLock());
    EXPECT_THAT(platform.log.lines, ElementsAre("  return NO"));
}

TEST_F(PreferenceLock, OfTheFileItselfOrItsPrefixIsNone) {
    add("com.apple.dock.plist", 1);
    add("com.apple.dock.plist.", 1);
    add("com.apple.dock.plist.lockfile", 1);
    add("com.apple.Dock.plist.x", 1);

    EXPECT_FALSE(isDockPreferenceFileLock());
    EXPECT_THAT(platform.log.lines, ElementsAre("  return NO"));
}

TEST_F(PreferenceLock, IsAFreshTemporaryFile) {
    add("com.apple.dock.plist.aB3", 3);

    EXPECT_TRUE(isDockPreferenceFileLock());
    EXPECT_THAT(platform.log.lines, ElementsAre("  tempFile = com.apple.dock.plist.aB3", "  return YES"));
}

TEST_F(PreferenceLock, OfAnOldFileIsNoneAndEndsTheScan) {
    add("com.apple.dock.plist.old", 20);
    add("com.apple.dock.plist.new", 1);

    EXPECT_FALSE(isDockPreferenceFileLock());
    EXPECT_THAT(platform.log.lines, ElementsAre("  tempFile = com.apple.dock.plist.old", "  return YES"));
}

TEST_F(PreferenceLock, OfAFileOfExactlyFifteenSecondsIsNone) {
    add("com.apple.dock.plist.x", 15.0);
    EXPECT_FALSE(isDockPreferenceFileLock());

    platform.files.modificationDates[kFolder + "/com.apple.dock.plist.x"].timeIntervalSinceReferenceDate += 0.5;
    EXPECT_TRUE(isDockPreferenceFileLock());
}

TEST_F(PreferenceLock, IsAFileFromTheFuture) {
    add("com.apple.dock.plist.x", -3600);

    EXPECT_TRUE(isDockPreferenceFileLock());
}

TEST_F(PreferenceLock, SkipsAnEntryThatVanishes) {
    platform.files.listings[kFolder] = {"com.apple.dock.plist.gone"};
    add("com.apple.dock.plist.here", 1);

    EXPECT_TRUE(isDockPreferenceFileLock());
    EXPECT_THAT(platform.log.lines, ElementsAre("  tempFile = com.apple.dock.plist.gone", "  return YES",
                                                "  tempFile = com.apple.dock.plist.here", "  return YES"));
}

TEST_F(PreferenceLock, OfNothingButVanishedEntriesIsNone) {
    platform.files.listings[kFolder] = {"com.apple.dock.plist.gone"};

    EXPECT_FALSE(isDockPreferenceFileLock());
    EXPECT_THAT(platform.log.lines,
                ElementsAre("  tempFile = com.apple.dock.plist.gone", "  return YES", "  return NO"));
}

TEST_F(PreferenceLock, OfTheGlobalFileNeedsNoDot) {
    add(".GlobalPreferences.plist", 1);
    add(".GlobalPreferences.plist.lockfile", 1);
    EXPECT_FALSE(isGlobalPreferenceFileLock());

    add(".GlobalPreferences.plistX", 1);
    EXPECT_TRUE(isGlobalPreferenceFileLock());
}

TEST_F(PreferenceLock, OfTheSystemPreferencesNeedsADot) {
    add("com.apple.systempreferences.plistX", 1);
    add("com.apple.systempreferences.plist.lockfile", 1);
    EXPECT_FALSE(isSystemPreferenceFileLock());

    add("com.apple.systempreferences.plist.X", 1);
    EXPECT_TRUE(isSystemPreferenceFileLock());
}

TEST_F(PreferenceLock, OfOneFileIsNoneOfAnother) {
    add("com.apple.dock.plist.x", 1);

    EXPECT_TRUE(isDockPreferenceFileLock());
    EXPECT_FALSE(isGlobalPreferenceFileLock());
    EXPECT_FALSE(isSystemPreferenceFileLock());
}

} // namespace
