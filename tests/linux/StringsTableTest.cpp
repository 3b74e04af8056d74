#include "linux/StringsTable.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using kelvo::StringsTable;

StringsTable tableOf(std::string_view text) {
    const std::vector<std::uint8_t> bytes(text.begin(), text.end());
    return StringsTable(bytes);
}

std::string utf16(std::u16string_view text, bool bigEndian) {
    std::string bytes;
    for (const char16_t unit : text) {
        const char high = static_cast<char>(static_cast<unsigned char>(unit >> 8U));
        const char low = static_cast<char>(static_cast<unsigned char>(unit & 0xFFU));
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    }
    return bytes;
}

TEST(StringsTable, EntriesStandBetweenComments) {
    const StringsTable table = tableOf("/* a \"b\" = \"c\"; */\n\"Title\" = \"Touch\"; // rest\n\"Next\"=\"Weiter\";");
    EXPECT_EQ(table.textForKey("Title"), "Touch");
    EXPECT_EQ(table.textForKey("Next"), "Weiter");
    EXPECT_EQ(table.textForKey("b"), std::nullopt);
    EXPECT_EQ(table.textForKey("Missing"), std::nullopt);
}

TEST(StringsTable, KeysAndTextsMayBeEmpty) {
    const StringsTable table = tableOf(R"("" = "nothing"; "nothing" = "";)");
    EXPECT_EQ(table.textForKey(""), "nothing");
    EXPECT_EQ(table.textForKey("nothing"), "");
}

TEST(StringsTable, PlainWordsNeedNoQuotesAsKeys) {
    EXPECT_EQ(tableOf("Alert.Rotate_90-x = \"Rotate\";").textForKey("Alert.Rotate_90-x"), "Rotate");
}

TEST(StringsTable, EscapesStandForTheirCharacters) {
    EXPECT_EQ(tableOf(R"("k" = "a\"b\\c\nd\te\rf\'g";)").textForKey("k"), "a\"b\\c\nd\te\rf'g");
}

TEST(StringsTable, CodesOfUTF16StandForTheirCharactersAndPairs) {
    EXPECT_EQ(tableOf(R"("k" = "\u0041\U00b0\u20AC\ud83d\uDE00";)").textForKey("k"), "A°€😀");
}

TEST(StringsTable, HalvesOfPairsBecomeReplacementCharacters) {
    EXPECT_EQ(tableOf(R"("k" = "\ud83dx\ude00\ud83d";)").textForKey("k"), "\uFFFDx\uFFFD\uFFFD");
}

TEST(StringsTable, CodeWithoutFourDigitsIsItsLetters) {
    EXPECT_EQ(tableOf(R"("k" = "\u12";)").textForKey("k"), "u12");
    EXPECT_EQ(tableOf(R"("k" = "\u-123";)").textForKey("k"), "u-123");
}

TEST(StringsTable, CommentMarksInsideOfATextAreText) {
    EXPECT_EQ(tableOf(R"("k" = "http://x /* y */";)").textForKey("k"), "http://x /* y */");
}

TEST(StringsTable, TheLaterOfTwoEntriesCounts) { EXPECT_EQ(tableOf(R"("k" = "1"; "k" = "2";)").textForKey("k"), "2"); }

TEST(StringsTable, ByteOrderMarkIsNoPartOfTheTable) {
    EXPECT_EQ(tableOf("\xEF\xBB\xBFk = \"ä\";").textForKey("k"), "ä");
}

TEST(StringsTable, UTF16IsReadInBothByteOrders) {
    const std::u16string_view text = u"\uFEFF\"k\" = \"ä😀\";";
    EXPECT_EQ(tableOf(utf16(text, true)).textForKey("k"), "ä😀");
    EXPECT_EQ(tableOf(utf16(text, false)).textForKey("k"), "ä😀");
}

TEST(StringsTable, EntriesBeforeTheDamageAreKept) {
    for (const char* damage :
         {"\"b\" \"2\";", "\"b\" = 2;", "\"b\" = \"2\"", "\"b\" = \"2", "= \"2\";", "\"b", "/*", "\"b\" = \"\\"}) {
        const StringsTable table = tableOf("\"a\" = \"1\"; " + std::string(damage));
        EXPECT_EQ(table.textForKey("a"), "1") << damage;
        EXPECT_EQ(table.textForKey("b"), std::nullopt) << damage;
    }
}

TEST(StringsTable, TableCutAnywhereHoldsNothingFalse) {
    const std::string whole = "/* c */ \"key\" = \"a\\\"\\u20AC\\ud83d\\ude00\"; // d";
    const std::size_t endOfEntry = whole.find(';') + 1;
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const std::optional<std::string> expected = size < endOfEntry ? std::nullopt : std::optional("a\"€😀");
        EXPECT_EQ(tableOf(whole.substr(0, size)).textForKey("key"), expected) << size;
    }
}

} // namespace
