#include "peers/driver/DisplayNames.h"

#include "support/FakePlatform.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace kelvo {

namespace {

constexpr char kFile[] = "/home/user/Library/Preferences/KelvoTouchDisplay/Displays.plist";

std::string repeated(std::string_view text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) all += text;
    return all;
}

/// The displays that are there, and the names that they were given.
class DriverDisplayNames : public testing::Test {
protected:
    std::string come(std::string_view kernelName, std::string_view serialOrPath) {
        std::string name = rememberedDisplayName(kernelName, serialOrPath,
                                                 [this](const std::string& each) { return present.contains(each); });
        present.insert(name);
        return name;
    }
    void go(const std::string& name) { present.erase(name); }

    support::FakePlatform platform;
    std::set<std::string> present;
};

TEST(DisplayNamesCleaned, NameThatIsFitStaysAsItIs) {
    for (const std::string name : {"ELAN Touchscreen", "触摸屏", "a", "A-B_c.d (2)", "naïve"}) {
        EXPECT_EQ(cleanedDisplayName(name), name);
        EXPECT_TRUE(isFitDisplayName(name));
    }
}

TEST(DisplayNamesCleaned, WhatCannotStandInANameBecomesABlank) {
    EXPECT_EQ(cleanedDisplayName("ILITEK Multi-Touch/V5"), "ILITEK Multi-Touch V5");
    EXPECT_EQ(cleanedDisplayName("../../etc"), ".. .. etc");
    EXPECT_EQ(cleanedDisplayName("Acme\tTouch\nScreen"), "Acme Touch Screen");
    EXPECT_EQ(cleanedDisplayName("Acme\x7F\x1BTouch"), "Acme Touch");
    EXPECT_EQ(cleanedDisplayName("Acme\u0085Touch"), "Acme Touch") << "a control character of more than one byte";
    EXPECT_EQ(cleanedDisplayName("Acme\xFF\xC3Touch"), "Acme Touch") << "no UTF-8";
    EXPECT_EQ(cleanedDisplayName("Acme\xE8\xA7"), "Acme") << "a character that was cut off";
    EXPECT_EQ(cleanedDisplayName("Acme\uFFFETouch"), "Acme Touch") << "no property list holds it";
    EXPECT_EQ(cleanedDisplayName(std::string("Acme\0Touch", 10)), "Acme Touch");
}

TEST(DisplayNamesCleaned, BlanksAtTheEndsAndInARowGo) {
    EXPECT_EQ(cleanedDisplayName("  Acme   Touch  "), "Acme Touch");
    EXPECT_EQ(cleanedDisplayName("/Acme/ /Touch/"), "Acme Touch");
}

TEST(DisplayNamesCleaned, NameOfNothingIsThatOfATouchDisplay) {
    for (const char* name : {"", " ", "///", "\xFF"}) EXPECT_EQ(cleanedDisplayName(name), "Touch Display") << name;
}

TEST(DisplayNamesCleaned, LongNameIsCutBetweenCharacters) {
    EXPECT_EQ(cleanedDisplayName(std::string(300, 'x')), std::string(200, 'x'));
    EXPECT_EQ(cleanedDisplayName(std::string(199, 'x') + "é"), std::string(199, 'x'));
    EXPECT_EQ(cleanedDisplayName(std::string(198, 'x') + "é"), std::string(198, 'x') + "é");
    EXPECT_EQ(cleanedDisplayName(repeated("触", 100)), repeated("触", 66));
    EXPECT_EQ(cleanedDisplayName(std::string(199, 'x') + " y"), std::string(199, 'x')) << "no blank at the end";
}

TEST(DisplayNamesCheck, RefusesWhatCannotBeAFilesName) {
    for (const std::string& name :
         {std::string(), std::string(201, 'x'), std::string("a/b"), std::string("a\nb"), std::string("a\x7F"),
          std::string("a\u0085"), std::string("a\xFF"), std::string("a\uFFFF"), std::string("a\0b", 3)}) {
        EXPECT_FALSE(isFitDisplayName(name)) << name;
        EXPECT_THROW(checkDisplayName(name), std::runtime_error) << name;
    }
    EXPECT_TRUE(isFitDisplayName(std::string(200, 'x')));
}

TEST_F(DriverDisplayNames, FirstHasTheBareNameAndOthersTheirNumber) {
    EXPECT_EQ(come("ELAN Touch", "serial-1"), "ELAN Touch");
    EXPECT_EQ(come("ELAN Touch", "serial-2"), "ELAN Touch 2");
    EXPECT_EQ(come("ELAN Touch", "serial-3"), "ELAN Touch 3");
    EXPECT_EQ(come("Other Touch", "serial-1"), "Other Touch");
}

TEST_F(DriverDisplayNames, DisplayThatComesBackHasItsNameAgain) {
    const std::string first = come("ELAN Touch", "serial-1");
    const std::string second = come("ELAN Touch", "serial-2");
    go(first);
    go(second);
    EXPECT_EQ(come("ELAN Touch", "serial-2"), second);
    EXPECT_EQ(come("ELAN Touch", "serial-1"), first);
}

TEST_F(DriverDisplayNames, DisplayThatIsGoneKeepsItsName) {
    go(come("ELAN Touch", "serial-1"));
    EXPECT_EQ(come("ELAN Touch", "serial-2"), "ELAN Touch 2");
}

TEST_F(DriverDisplayNames, TwoThatCannotBeToldApartHaveANameEach) {
    const std::string first = come("ELAN Touch", "same");
    const std::string second = come("ELAN Touch", "same");
    EXPECT_EQ(first, "ELAN Touch");
    EXPECT_EQ(second, "ELAN Touch 2");
    go(first);
    go(second);
    EXPECT_EQ(come("ELAN Touch", "same"), "ELAN Touch");
    EXPECT_EQ(come("ELAN Touch", "same"), "ELAN Touch 2");
}

TEST_F(DriverDisplayNames, DisplayWithANumberInItsOwnNameTakesNobodyElses) {
    EXPECT_EQ(come("ELAN Touch", "a"), "ELAN Touch");
    EXPECT_EQ(come("ELAN Touch", "b"), "ELAN Touch 2");
    EXPECT_EQ(come("ELAN Touch 2", "c"), "ELAN Touch 2 2");
}

TEST_F(DriverDisplayNames, NumberOfALongNameFitsIn) {
    const std::string longName(250, 'x');
    EXPECT_EQ(come(longName, "a"), std::string(200, 'x'));
    EXPECT_EQ(come(longName, "b"), std::string(198, 'x') + " 2");
}

TEST_F(DriverDisplayNames, FileRemembersEachDisplayByItsName) {
    come("ELAN/Touch", "serial\n1");
    const auto entry = platform.plist(kFile).objectForKey("ELAN Touch").dictionary();
    EXPECT_EQ(entry.objectForKey("KernelName").string(), "ELAN Touch");
    EXPECT_EQ(entry.objectForKey("SerialOrPath").string(), "serial 1");
    const int writes = platform.files.writes;
    present.clear();
    come("ELAN/Touch", "serial\n1");
    EXPECT_EQ(platform.files.writes, writes) << "what is known is not written again";
}

TEST_F(DriverDisplayNames, EntryThatIsUnfitIsAsAbsent) {
    platform.setPlist(kFile, support::dictionaryOf({{"text", "ELAN Touch"}, {7, "Other"}}));
    EXPECT_EQ(come("ELAN Touch", "a"), "ELAN Touch");
    EXPECT_EQ(platform.plist(kFile).objectForKey("Other").longLongValue(), 7);
}

TEST_F(DriverDisplayNames, DamagedFileIsLeftAloneAndDisplaysStillHaveNames) {
    platform.files.setText(kFile, "damaged");
    EXPECT_EQ(come("ELAN Touch", "a"), "ELAN Touch");
    EXPECT_EQ(come("ELAN Touch", "b"), "ELAN Touch 2");
    EXPECT_EQ(platform.files.textOf(kFile), "damaged");
    EXPECT_FALSE(platform.log.lines.empty());
}

TEST_F(DriverDisplayNames, FullDiskLeavesDisplaysTheirNames) {
    platform.files.isDiskFull = true;
    EXPECT_EQ(come("ELAN Touch", "a"), "ELAN Touch");
    EXPECT_EQ(come("ELAN Touch", "b"), "ELAN Touch 2");
}

} // namespace

} // namespace kelvo
