#include "linux/PlistCoder.h"

#include "linux/PlistDepth.h"
#include "support/EnvironmentVariable.h"
#include "support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <locale.h>

namespace {

using kelvo::PlistCoder;
using platform::NSData;
using platform::NSDate;
using platform::NSMutableArray;
using platform::NSMutableDictionary;
using platform::Value;
using Kind = Value::Kind;

NSData bytes(std::string_view text) { return {text.begin(), text.end()}; }

std::string document(std::string_view element) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + std::string(element) + "</plist>";
}

Value fromFile(std::string_view file) { return PlistCoder().createFromFileData(bytes(file)); }
Value fromElement(std::string_view element) { return fromFile(document(element)); }
Value fromMessage(std::string_view message) { return PlistCoder().createFromXMLData(bytes(message)); }

std::string repeated(std::string_view text, std::size_t times) {
    std::string result;
    for (std::size_t i = 0; i < times; ++i) result += text;
    return result;
}

std::string nestedArrays(std::size_t depth) { return repeated("<array>", depth) + repeated("</array>", depth); }

std::string encodedText(const Value& root) {
    const std::optional<NSData> data = PlistCoder().createXMLData(root);
    return data ? std::string(data->begin(), data->end()) : "none";
}

/// What a value reads as after it was written.
Value rewritten(const Value& root) {
    const std::optional<NSData> data = PlistCoder().createXMLData(root);
    return data ? PlistCoder().createFromFileData(*data) : Value();
}

void expectSame(const Value& value, const Value& expected) {
    EXPECT_EQ(value.kind(), expected.kind());
    EXPECT_TRUE(value.isEqual(expected)) << value.description() << " instead of " << expected.description();
}

void expectSurvives(const Value& value) { expectSame(rewritten(value), value); }

std::string bigEndian(std::uint64_t number, int size) {
    std::string text;
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8) {
        text += static_cast<char>(static_cast<unsigned char>((number >> static_cast<unsigned>(shift)) & 0xFFU));
    }
    return text;
}

std::string bigEndian(double number) { return bigEndian(std::bit_cast<std::uint64_t>(number), 8); }

/// A binary property list of these objects, the first of them its root, with references of two bytes.
std::string binaryList(const std::vector<std::string>& objects) {
    std::string file = "bplist00";
    std::string offsets;
    for (const std::string& object : objects) {
        offsets += bigEndian(file.size(), 4);
        file += object;
    }
    const std::uint64_t table = file.size();
    return file + offsets + std::string(6, '\0') + '\4' + '\2' + bigEndian(objects.size(), 8) + bigEndian(0, 8) +
           bigEndian(table, 8);
}

std::string references(const std::vector<std::uint64_t>& objects) {
    std::string text;
    for (const std::uint64_t object : objects) text += bigEndian(object, 2);
    return text;
}

std::string sampleXML() {
    return document(
        "<dict><!-- note --><key>name</key><string>a&amp;b</string><key>list</key><array><true/><integer>-5"
        "</integer><real>0.25</real><date>2020-02-29T12:00:00Z</date><data>AAEC</data><dict/></array></dict>");
}

std::string sampleBinary() {
    return binaryList({"\xD3" + references({1, 2, 3, 4, 5, 6}), "\x51z", "\x51y", "\x51x",
                       "\xA4" + references({7, 8, 9, 10}), std::string("\x62\x00\xE4\x00\x62", 5), "\x42\x01\x02",
                       "\x09", "\x13" + bigEndian(~std::uint64_t{0}, 8), "\x23" + bigEndian(0.25),
                       "\x33" + bigEndian(86400.0)});
}

/// The locale of the process while it lives; `isSet` tells whether there is such a locale.
class ProcessLocale {
public:
    explicit ProcessLocale(const char* name)
        : previous_(std::setlocale(LC_ALL, nullptr)), isSet_(std::setlocale(LC_ALL, name) != nullptr) {}
    ProcessLocale(const ProcessLocale&) = delete;
    ProcessLocale& operator=(const ProcessLocale&) = delete;
    ~ProcessLocale() { std::setlocale(LC_ALL, previous_.c_str()); }

    [[nodiscard]] bool isSet() const { return isSet_; }

private:
    std::string previous_;
    bool isSet_;
};

/// Makes the locale of the process this thread's own while it lives.
class ThreadLocale {
public:
    ThreadLocale() : locale_(::duplocale(LC_GLOBAL_LOCALE)), previous_(::uselocale(locale_)) {}
    ThreadLocale(const ThreadLocale&) = delete;
    ThreadLocale& operator=(const ThreadLocale&) = delete;
    ~ThreadLocale() {
        ::uselocale(previous_);
        ::freelocale(locale_);
    }

private:
    locale_t locale_;
    locale_t previous_;
};

TEST(PlistCoder, WritesAnXMLPropertyList) {
    const std::string text = encodedText(NSMutableDictionary::dictionaryWithObjectsAndKeys({{1, "b"}, {true, "a"}}));
    EXPECT_TRUE(text.starts_with("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist ")) << text;
    EXPECT_NE(text.find("\n<plist version=\"1.0\">\n<dict>\n\t<key>b</key>\n\t<integer>1</integer>\n\t<key>a</key>\n\t"
                        "<true/>\n</dict>\n</plist>\n"),
              std::string::npos)
        << text;
}

TEST(PlistCoder, KindsOfAFileStayDistinct) {
    expectSame(fromElement("<true/>"), true);
    expectSame(fromElement("<false/>"), false);
    expectSame(fromElement("<integer>1</integer>"), 1);
    expectSame(fromElement("<real>1</real>"), 1.0);
    expectSame(fromElement("<string>1</string>"), "1");
    expectSame(fromElement("<data>MQ==</data>"), bytes("1"));
    expectSame(fromElement("<date>2001-01-01T00:00:01Z</date>"), NSDate{1.0});
    expectSame(fromElement("<array/>"), NSMutableArray::arrayWithObjects());
    expectSame(fromElement("<dict/>"), NSMutableDictionary::dictionary());
}

TEST(PlistCoder, WholeRangeOfIntegersSurvives) {
    const std::vector<std::pair<std::string, Value>> integers = {
        {"-9223372036854775808", std::numeric_limits<std::int64_t>::min()},
        {"-1", -1},
        {"0", 0},
        {"9223372036854775807", std::numeric_limits<std::int64_t>::max()},
        {"9223372036854775808", std::uint64_t{1} << 63U},
        {"18446744073709551615", std::numeric_limits<std::uint64_t>::max()}};
    for (const auto& [text, value] : integers) {
        const std::string element = "<integer>" + text + "</integer>";
        expectSame(fromElement(element), value);
        EXPECT_NE(encodedText(value).find(element), std::string::npos) << encodedText(value);
        expectSurvives(NSMutableArray::arrayWithObjects({value}));
    }
}

TEST(PlistCoder, RealsSurviveInFullPrecision) {
    for (const double real :
         {0.0, 0.1, 1.0 / 3.0, -2.5, 1e300, 1e-10, 5e-324, 16777217.0, 1.0, std::numeric_limits<double>::max(),
          std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()}) {
        expectSurvives(real);
    }
    const Value nan = rewritten(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(nan.kind(), Kind::Real);
    EXPECT_TRUE(std::isnan(nan.doubleValue()));
}

TEST(PlistCoder, DatesOfAllYearsOfFourDigitsSurvive) {
    const std::vector<std::pair<std::string, double>> dates = {{"0001-01-01T00:00:00Z", -63113904000.0},
                                                               {"1900-03-01T00:00:00Z", -3182198400.0},
                                                               {"1969-12-31T23:59:59Z", -978307201.0},
                                                               {"2000-12-31T23:59:59Z", -1.0},
                                                               {"2001-01-01T00:00:00Z", 0.0},
                                                               {"2040-01-01T00:00:00Z", 1230681600.0},
                                                               {"2100-01-01T00:00:00Z", 3124137600.0},
                                                               {"9999-12-31T23:59:59Z", 252423993599.0}};
    for (const auto& [text, seconds] : dates) {
        expectSame(fromElement("<date>" + text + "</date>"), NSDate{seconds});
        expectSurvives(NSDate{seconds});
    }
    EXPECT_NE(encodedText(NSDate{252423993599.0}).find("<date>9999-12-31T23:59:59Z</date>"), std::string::npos);
}

TEST(PlistCoder, DateBeyondFourDigitsCannotBeWritten) {
    EXPECT_EQ(PlistCoder().createXMLData(NSDate{252423993600.0}), std::nullopt);
    EXPECT_EQ(PlistCoder().createXMLData(NSDate{-1e11}), std::nullopt);
    EXPECT_EQ(PlistCoder().createXMLData(NSDate{1e300}), std::nullopt);
    EXPECT_EQ(PlistCoder().createXMLData(NSDate{std::numeric_limits<double>::quiet_NaN()}), std::nullopt);
}

TEST(PlistCoder, DateBeyondFourDigitsInABinaryFileIsDamage) {
    for (const double seconds : {252423993600.0, 1.4e12, -1e11, 1e19, 1e300, -1e300, std::nan("")}) {
        EXPECT_EQ(fromFile(binaryList({"\x33" + bigEndian(seconds)})).kind(), Kind::None) << seconds;
    }
}

TEST(PlistCoder, DataSurvivesWhateverItsBytes) {
    expectSurvives(NSData());
    NSData all(1000);
    for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<std::uint8_t>(i & 0xFFU);
    expectSurvives(all);
}

TEST(PlistCoder, TextsSurviveCharacterForCharacter) {
    for (const char* text : {"", " ", "  a\n\tb \r\n", "&<>\"'", "&amp;", "]]>", "<!-- x -->", "ä€😀", "\x01\x7f"}) {
        expectSurvives(text);
        expectSurvives(NSMutableDictionary::dictionaryWithObjectsAndKeys({{"value", text}}));
    }
}

TEST(PlistCoder, TextWithANulCannotBeWritten) {
    const std::string text("a\0b", 3);
    EXPECT_EQ(PlistCoder().createXMLData(text), std::nullopt);
    EXPECT_EQ(PlistCoder().createXMLData(NSMutableDictionary::dictionaryWithObjectsAndKeys({{1, text}})), std::nullopt);
}

TEST(PlistCoder, BinaryFileWithANulInATextIsRefused) {
    const std::string ascii("\x53"
                            "a\0b",
                            4);
    const std::string utf16("\x63\0a\0\0\0b", 7);
    for (const std::string& text : {ascii, utf16}) {
        EXPECT_EQ(fromFile(binaryList({text})).kind(), Kind::None);
        EXPECT_EQ(fromFile(binaryList({"\xD1" + references({1, 2}), text, "\x09"})).kind(), Kind::None);
    }
}

TEST(PlistCoder, MissingValueCannotBeWritten) { EXPECT_EQ(PlistCoder().createXMLData(Value()), std::nullopt); }

TEST(PlistCoder, DictionariesKeepTheirOrder) {
    std::string xml;
    std::vector<std::string> keys;
    for (int i = 0; i < 1000; ++i) {
        keys.push_back(std::to_string(i * 7919 % 1000));
        xml += "<key>" + keys.back() + "</key><true/>";
    }
    const Value read = fromElement("<dict>" + xml + "</dict>");
    EXPECT_EQ(read.dictionary().allKeys(), keys);
    EXPECT_EQ(rewritten(read).dictionary().allKeys(), keys);
}

TEST(PlistCoder, CommentsAndCDATAAreReadAsXMLHasThem) {
    expectSame(fromElement("<!-- <array> --><string>a<![CDATA[<array>&amp;]]>b</string>"), "a<array>&amp;b");
}

TEST(PlistCoder, ByteOrderMarkIsNoDamage) { expectSame(fromFile("\xEF\xBB\xBF" + document("<true/>")), true); }

TEST(PlistCoder, BinaryFileReadsAsItsXMLTwinWould) {
    const Value expected = NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSMutableArray::arrayWithObjects({true, -1, 0.25, NSDate{86400.0}}), "z"}, {"äb", "y"}, {NSData{1, 2}, "x"}});
    const Value read = fromFile(sampleBinary());
    expectSame(read, expected);
    EXPECT_EQ(read.dictionary().allKeys(), (std::vector<std::string>{"z", "y", "x"}));
    const NSMutableArray list = read.dictionary().objectForKey("z").array();
    EXPECT_EQ(list.objectAtIndex(0).kind(), Kind::Boolean);
    EXPECT_EQ(list.objectAtIndex(1).kind(), Kind::Integer);
    EXPECT_EQ(list.objectAtIndex(2).kind(), Kind::Real);
    expectSurvives(read);
}

TEST(PlistCoder, BinaryIntegersOfEverySizeAreRead) {
    expectSame(fromFile(binaryList({"\x10\xFF"})), 255);
    expectSame(fromFile(binaryList({"\x11\xFF\xFF"})), 65535);
    expectSame(fromFile(binaryList({"\x12\xFF\xFF\xFF\xFF"})), 4294967295);
    expectSame(fromFile(binaryList({"\x13" + bigEndian(std::uint64_t{1} << 63U, 8)})),
               std::numeric_limits<std::int64_t>::min());
    expectSame(fromFile(binaryList({"\x14" + bigEndian(0, 8) + bigEndian(~std::uint64_t{0}, 8)})),
               std::numeric_limits<std::uint64_t>::max());
}

TEST(PlistCoder, UniqueIdentifierBecomesTheDictionaryThatStandsForIt) {
    const Value read = fromFile(binaryList({"\xA1" + references({1}), "\x81\x01\x02"}));
    const Value expected = NSMutableDictionary::dictionaryWithObjectsAndKeys({{258, "CF$UID"}});
    expectSame(read, NSMutableArray::arrayWithObjects({expected}));
    expectSurvives(read);
}

TEST(PlistCoder, NumbersAreTheSameWhereACommaSeparatesDecimals) {
    const TemporaryDirectory locales;
    const std::string command = "localedef -i de_DE -f UTF-8 '" + locales.path("de_DE.UTF-8") + "' >/dev/null 2>&1";
    if (std::system(command.c_str()) != 0) GTEST_SKIP() << "no locale with a decimal comma can be made here";
    const EnvironmentVariable localePath("LOCPATH", locales.path());
    const auto expectPoints = [] {
        ASSERT_STREQ(::localeconv()->decimal_point, ",");
        expectSame(fromElement("<real>0.5</real>"), 0.5);
        EXPECT_NE(encodedText(0.5).find("<real>0.5</real>"), std::string::npos);
        EXPECT_STREQ(::localeconv()->decimal_point, ",");
    };

    const ProcessLocale german("de_DE.UTF-8");
    ASSERT_TRUE(german.isSet());
    expectPoints();
    const ThreadLocale germanToo;
    const ProcessLocale untranslated("C");
    expectPoints();
}

TEST(PlistCoder, MessageMustBeXML) {
    expectSame(fromMessage(sampleXML()), fromFile(sampleXML()));
    EXPECT_EQ(fromMessage(sampleBinary()).kind(), Kind::None);
    EXPECT_EQ(fromMessage("").kind(), Kind::None);
    EXPECT_EQ(fromMessage("hello").kind(), Kind::None);
    EXPECT_EQ(fromMessage("{ a = 1; }").kind(), Kind::None);
}

TEST(PlistCoder, MessageOfOneMebibyteIsReadAndALargerOneIsNot) {
    const std::string message = document("<true/>");
    EXPECT_TRUE(fromMessage(message + std::string(1048576 - message.size(), ' ')));
    EXPECT_FALSE(fromMessage(message + std::string(1048577 - message.size(), ' ')));
}

TEST(PlistCoder, MessageNestedSixtyFourDeepIsReadAndADeeperOneIsNot) {
    EXPECT_TRUE(fromMessage(document(nestedArrays(64))));
    EXPECT_FALSE(fromMessage(document(nestedArrays(65))));
    const std::string dictionaries = repeated("<dict><key>k</key>", 63);
    EXPECT_TRUE(fromMessage(document(dictionaries + "<dict/>" + repeated("</dict>", 63))));
    EXPECT_FALSE(fromMessage(document(dictionaries + "<array><dict/></array>" + repeated("</dict>", 63))));
}

TEST(PlistCoder, FileMayBeNestedDeeperAndCanBeWrittenAgain) {
    expectSurvives(fromElement(nestedArrays(512)));
    EXPECT_EQ(fromElement(nestedArrays(512)).kind(), Kind::Array);
    EXPECT_EQ(fromElement(nestedArrays(513)).kind(), Kind::None);
}

TEST(PlistCoder, HostileNestingInXMLIsRefused) {
    constexpr std::size_t kLevels = 140000;
    const std::string nul("<array\0>", 8);
    for (const std::string& level : {std::string("<array>"), std::string("<array a=\">\">"), std::string("<array \n>"),
                                     std::string("<!--<!-- --><array>"), std::string("<?x \"?>\"?><array>"), nul}) {
        EXPECT_EQ(fromFile("<plist>" + repeated(level, kLevels)).kind(), Kind::None);
        EXPECT_EQ(fromFile("<plist>" + repeated(level, kLevels) + "<true/>").kind(), Kind::None);
    }
}

TEST(PlistCoder, HostileNestingInABinaryFileIsRefused) {
    std::vector<std::string> objects;
    for (std::uint64_t i = 1; i < 60000; ++i) objects.push_back("\xA1" + references({i}));
    objects.push_back("\x09");
    EXPECT_EQ(fromFile(binaryList(objects)).kind(), Kind::None);
    objects.assign(512, {});
    for (std::uint64_t i = 0; i < objects.size(); ++i) objects[i] = "\xA1" + references({i + 1});
    objects.push_back("\x09");
    EXPECT_EQ(fromFile(binaryList(objects)).kind(), Kind::Array);
}

TEST(PlistCoder, BinaryFileThatHoldsItselfIsRefused) {
    EXPECT_EQ(fromFile(binaryList({"\xA1" + references({0})})).kind(), Kind::None);
    EXPECT_EQ(fromFile(binaryList({"\xA1" + references({1}), "\xD1" + references({2, 0}), "\x51k"})).kind(),
              Kind::None);
}

TEST(PlistCoder, BinaryFileThatUnfoldsWithoutEndIsRefused) {
    std::vector<std::string> objects;
    for (std::uint64_t i = 1; i <= 60; ++i) objects.push_back("\xA2" + references({i, i}));
    objects.push_back("\x09");
    EXPECT_EQ(fromFile(binaryList(objects)).kind(), Kind::None);
    const std::string text = "\x5F\x12" + bigEndian(1U << 20U, 4) + std::string(1U << 20U, 't');
    EXPECT_EQ(fromFile(binaryList({"\xAF\x10\xFF" + references(std::vector<std::uint64_t>(255, 1)), text})).kind(),
              Kind::None);
}

TEST(PlistCoder, ArrayThatHoldsItselfCannotBeWritten) {
    NSMutableArray inner = NSMutableArray::arrayWithObjects();
    NSMutableDictionary outer = NSMutableDictionary::dictionary();
    outer.setObjectForKey(inner, "inner");
    inner.addObject(outer);
    EXPECT_EQ(PlistCoder().createXMLData(inner), std::nullopt);
    // Takes the circle apart, so that the two can be freed.
    outer.setObjectForKey(true, "inner");
}

TEST(PlistCoder, FileCutAnywhereReadsAsNothingUntilItIsComplete) {
    const std::string xml = sampleXML();
    for (std::size_t size = 0; size < xml.size() - std::string("</plist>").size(); ++size) {
        EXPECT_EQ(fromFile(xml.substr(0, size)).kind(), Kind::None) << size;
    }
    const std::string binary = sampleBinary();
    for (std::size_t size = 0; size < binary.size(); ++size) {
        EXPECT_EQ(fromFile(binary.substr(0, size)).kind(), Kind::None) << size;
    }
}

TEST(PlistCoder, FileDamagedInAnyByteReadsAsNothingOrAsWhatCanBeWritten) {
    for (const std::string& sample : {sampleXML(), sampleBinary()}) {
        for (std::size_t position = 0; position < sample.size(); ++position) {
            for (unsigned change = 1; change < 256; ++change) {
                std::string damaged = sample;
                damaged[position] = static_cast<char>(static_cast<unsigned char>(damaged[position]) ^ change);
                const Value read = fromFile(damaged);
                EXPECT_TRUE(!read || PlistCoder().createXMLData(read)) << position << ' ' << change;
            }
        }
    }
}

TEST(PlistCoder, OfTwoEqualKeysTheLaterValueCounts) {
    const Value expected = NSMutableDictionary::dictionaryWithObjectsAndKeys({{2, "k"}});
    expectSame(fromElement("<dict><key>k</key><true/><key>k</key><integer>2</integer></dict>"), expected);
    expectSame(fromFile(binaryList({"\xD2" + references({1, 1, 2, 3}), "\x51k", "\x09", "\x10\x02"})), expected);
}

TEST(PlistDepth, CountsOpenContainersOutsideOfCommentsAndTexts) {
    const auto nesting = [](std::string_view text) { return kelvo::nestingOfXML(bytes(text)); };
    EXPECT_EQ(nesting(""), 0U);
    EXPECT_EQ(nesting("<string>x</string>"), 0U);
    EXPECT_EQ(nesting("<dict/>"), 1U);
    EXPECT_EQ(nesting("<dict><array></array><array/></dict>"), 2U);
    EXPECT_EQ(nesting("<dict><!-- <dict> </dict></dict> --><dict/></dict>"), 2U);
    EXPECT_EQ(nesting("<array><string><![CDATA[<array><array>]]></string></array>"), 1U);
    EXPECT_EQ(nesting("<?x <array> ?><!DOCTYPE plist [ <!ENTITY a \"]>\"> ]><array/>"), 1U);
    EXPECT_EQ(nesting("<arrayed><dictionary>"), 0U);
}

TEST(PlistDepth, MarkupWithoutItsEndHasNoDepth) {
    for (const char* text : {"<", "<dict", "<dict <", "<!-- ->", "<![CDATA[ ]]", "<?xml ?", "<!DOCTYPE x",
                             "<!DOCTYPE [ ]", "<dict a=\">"}) {
        EXPECT_EQ(kelvo::nestingOfXML(bytes(text)), std::nullopt) << text;
    }
}

TEST(PlistDepth, SecondRootHasNoDepth) {
    EXPECT_EQ(kelvo::nestingOfXML(bytes("<array/><dict/>")), std::nullopt);
    EXPECT_EQ(kelvo::nestingOfXML(bytes("<plist><array></array><array/></plist>")), std::nullopt);
}

TEST(PlistDepth, BinaryListsCountTheirLongestWay) {
    const auto nesting = [](const std::vector<std::string>& objects) {
        return kelvo::nestingOfBinary(bytes(binaryList(objects)));
    };
    EXPECT_EQ(nesting({"\x09"}), 0U);
    EXPECT_EQ(nesting({"\xA0"}), 1U);
    EXPECT_EQ(nesting({"\xA2" + references({1, 2}), "\x09", "\xA1" + references({1})}), 2U);
    EXPECT_EQ(nesting({"\xA2" + references({2, 1}), "\xA1" + references({2}), "\xA0"}), 3U);
}

TEST(PlistDepth, BinaryListsThatReachOutOfThemselvesHaveNoDepth) {
    const auto nesting = [](const std::vector<std::string>& objects) {
        return kelvo::nestingOfBinary(bytes(binaryList(objects)));
    };
    EXPECT_EQ(nesting({}), std::nullopt);
    EXPECT_EQ(nesting({""}), std::nullopt);
    EXPECT_EQ(nesting({"\xA1" + references({1})}), std::nullopt);
    EXPECT_EQ(nesting({"\xA5" + references({0})}), std::nullopt);
    EXPECT_EQ(nesting({"\x5F"}), std::nullopt);
    EXPECT_EQ(nesting({"\x5F\x13" + bigEndian(~std::uint64_t{0}, 8)}), std::nullopt);
    EXPECT_EQ(nesting({"\x6F\x13" + bigEndian(std::uint64_t{1} << 63U, 8)}), std::nullopt);
    EXPECT_EQ(nesting({"\xDF\x13" + bigEndian(std::uint64_t{1} << 63U, 8)}), std::nullopt);
    EXPECT_EQ(nesting({"\x23"}), std::nullopt);
    EXPECT_EQ(nesting({std::string(1, '\0')}), std::nullopt);
    EXPECT_EQ(nesting({"\x70"}), std::nullopt);
}

} // namespace
