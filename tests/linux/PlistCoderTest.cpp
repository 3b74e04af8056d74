#include "linux/PlistCoder.h"

#include "linux/BinaryPlistCheck.h"
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
    for (const double seconds : {252423993600.0, -63113904001.0, 1.4e12, -1e11, 1e19, 1e300, -1e300, std::nan("")}) {
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
    for (const char* text : {"", " ", "  a\n\tb \r\n", "\r", "&<>\"'", "&amp;", "]]>", "<!-- x -->", "ä€😀", "\x7f",
                             "\xC2\x80", "\xED\x9F\xBF", "\xEE\x80\x80", "\xEF\xBF\xBD", "\xF4\x8F\xBF\xBF"}) {
        expectSurvives(text);
        expectSurvives(NSMutableDictionary::dictionaryWithObjectsAndKeys({{"value", text}}));
    }
}

TEST(PlistCoder, TextThatXMLCannotHoldCannotBeWritten) {
    using namespace std::string_literals;
    const std::vector<std::string> texts = {"a\0b"s, // NUL
                                            "\x01",  // controls
                                            "\x08",
                                            "\x0B",
                                            "\x0C",
                                            "\x1F",
                                            "\xFF", // no UTF-8
                                            "\x80",
                                            "caf\xE9",
                                            "\xC3",
                                            "\xE2\x82",
                                            "\xF0\x9F\x98",
                                            "\xC3(",
                                            "\xC0\x80", // longer than it needs to be
                                            "\xE0\x9F\xBF",
                                            "\xF0\x8F\xBF\xBF",
                                            "\xED\xA0\x80", // surrogates
                                            "\xED\xBF\xBF",
                                            "\xEF\xBF\xBE", // U+FFFE and U+FFFF
                                            "\xEF\xBF\xBF",
                                            "\xF4\x90\x80\x80", // beyond Unicode
                                            "\xF8\x88\x80\x80\x80"};
    for (const std::string& text : texts) {
        EXPECT_EQ(PlistCoder().createXMLData(text), std::nullopt) << text;
        EXPECT_EQ(PlistCoder().createXMLData(NSMutableArray::arrayWithObjects({"before", text})), std::nullopt);
        EXPECT_EQ(PlistCoder().createXMLData(NSMutableDictionary::dictionaryWithObjectsAndKeys({{1, text}})),
                  std::nullopt);
    }
}

TEST(PlistCoder, BinaryTextThatXMLCannotHoldIsRefused) {
    using namespace std::string_literals;
    const std::vector<std::string> texts = {"\x53"s + "a\0b"s,  "\x53"s + "a\x1F" + "b", "\x53"s + "a\x80" + "b",
                                            "\x63\0a\0\0\0b"s,  "\x62\0a\xFF\xFE"s,      "\x61\xD8\x3D"s,
                                            "\x62\xD8\x3D\0a"s, "\x61\xDE\x00"s,         "\x62\xDE\x00\xD8\x3D"s};
    for (const std::string& text : texts) {
        EXPECT_EQ(fromFile(binaryList({text})).kind(), Kind::None);
        EXPECT_EQ(fromFile(binaryList({"\xD1" + references({1, 2}), text, "\x09"})).kind(), Kind::None);
    }
    expectSame(fromFile(binaryList({"\x62\xD8\x3D\xDE\x00"s})), "😀");
    expectSame(fromFile(binaryList({"\x52\t\x7F"})), "\t\x7F");
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
    expectSame(fromElement("<!-- <array> --><string>a<![CDATA[<array>&amp;]]>b<!-- c --><?d?>e</string>"),
               "a<array>&amp;be");
    expectSame(fromElement("<integer>1<!-- -->2</integer>"), 12);
    expectSame(fromElement("<string>a\r\nb\rc&#13;&#xE9;</string>"), "a\nb\nc\ré");
}

TEST(PlistCoder, EncodingsThatAreDeclaredOrMarkedAreRead) {
    const auto inUTF16 = [](std::string_view ascii, bool isLittle) {
        std::string text = isLittle ? "\xFF\xFE" : "\xFE\xFF";
        for (const char c : ascii) {
            text += isLittle ? std::string{c, '\0'} : std::string{'\0', c};
        }
        return text;
    };
    const auto declared = [](std::string_view encoding, std::string_view text) {
        return "<?xml version=\"1.0\" encoding=\"" + std::string(encoding) + "\"?><plist><string>" + std::string(text) +
               "</string></plist>";
    };
    expectSame(fromFile("\xEF\xBB\xBF" + document("<true/>")), true);
    for (const bool isLittle : {true, false}) {
        expectSame(fromFile(inUTF16(declared("UTF-16", "a&#xE9;&#x1F600;"), isLittle)), "aé😀");
    }
    expectSame(fromFile(declared("ISO-8859-1", "\xE9")), "é");
    expectSame(fromFile(declared("iso-8859-1", "\xA0\xFF")), "\u00A0ÿ");
    expectSame(fromFile(declared("US-ASCII", "e&#xE9;")), "eé");
    expectSurvives(fromFile(declared("ISO-8859-1", "\xE9")));

    EXPECT_FALSE(fromFile(declared("US-ASCII", "\xE9")));
    EXPECT_FALSE(fromFile(declared("UTF-8", "\xE9")));
    EXPECT_FALSE(fromFile(declared("UTF-16", "a")));
    EXPECT_FALSE(fromFile(declared("windows-1252", "a")));
    EXPECT_FALSE(fromFile(inUTF16(declared("UTF-8", "a"), true)));
}

TEST(PlistCoder, LoneSurrogatesInUTF16AreDamage) {
    const auto fileWith = [](const std::vector<unsigned>& units, bool isLittle) {
        std::string file = isLittle ? "\xFF\xFE" : "\xFE\xFF";
        const auto append = [&](unsigned unit) {
            const auto high = static_cast<char>(unit >> 8U);
            const auto low = static_cast<char>(unit & 0xFFU);
            file += isLittle ? std::string{low, high} : std::string{high, low};
        };
        for (const char c : std::string_view("<plist><string>")) append(static_cast<unsigned char>(c));
        for (const unsigned unit : units) append(unit);
        for (const char c : std::string_view("</string></plist>")) append(static_cast<unsigned char>(c));
        return file;
    };
    for (const bool isLittle : {true, false}) {
        expectSame(fromFile(fileWith({0xD83D, 0xDE00}, isLittle)), "😀");
        EXPECT_FALSE(fromFile(fileWith({0xD83D}, isLittle)));
        EXPECT_FALSE(fromFile(fileWith({0xD83D, 'a'}, isLittle)));
        EXPECT_FALSE(fromFile(fileWith({0xD83D, 0xD83D, 0xDE00}, isLittle)));
        EXPECT_FALSE(fromFile(fileWith({0xDE00}, isLittle)));
        EXPECT_FALSE(fromFile(fileWith({0xFFFE}, isLittle)));
    }
}

/// As files and as messages.
void expectUnreadable(const std::string& list) {
    EXPECT_EQ(fromFile(list).kind(), Kind::None) << list;
    EXPECT_EQ(fromMessage(list).kind(), Kind::None) << list;
}

TEST(PlistCoder, WhatIsNoValueMakesTheListUnreadable) {
    for (const char* element : {"<date>yesterday</date>",
                                "<date/>",
                                "<date>2001Z</date>",
                                "<date>2001-02Z</date>",
                                "<date>2001-02-29T00:00:00Z</date>",
                                "<date>2001-13-01T00:00:00Z</date>",
                                "<date>2001-01-01T24:00:00Z</date>",
                                "<date>2001-01-01T00:60:00Z</date>",
                                "<date>2001-01-01T00:00:60Z</date>",
                                "<date>2001-01-01T00:00:00</date>",
                                "<date>2001-01-01 00:00:00Z</date>",
                                "<date>2001-1-1T0:0:0Z</date>",
                                "<date>2001-01-01T00:00:00Zjunk</date>",
                                "<date>2001-01-01T00:00:00.5Z</date>",
                                "<date>2001-01-01T00:00:00+01:00</date>",
                                "<date>0000-01-01T00:00:00Z</date>",
                                "<date>10000-01-01T00:00:00Z</date>",
                                "<date>-001-01-01T00:00:00Z</date>",
                                "<integer>3x</integer>",
                                "<integer></integer>",
                                "<integer/>",
                                "<integer> </integer>",
                                "<integer>-</integer>",
                                "<integer>--1</integer>",
                                "<integer>+-1</integer>",
                                "<integer>1 2</integer>",
                                "<integer>1.0</integer>",
                                "<integer>1e3</integer>",
                                "<integer>0x</integer>",
                                "<integer>0xG</integer>",
                                "<integer>0x-1</integer>",
                                "<integer>-0x1</integer>",
                                "<integer>1_000</integer>",
                                "<integer>\u0663</integer>",
                                "<integer>-9223372036854775809</integer>",
                                "<integer>18446744073709551616</integer>",
                                "<integer>0x10000000000000000</integer>",
                                "<real>0,5</real>",
                                "<real></real>",
                                "<real>.</real>",
                                "<real>1e</real>",
                                "<real>e5</real>",
                                "<real>0x10</real>",
                                "<real>1e400</real>",
                                "<real>1e-400</real>",
                                "<real>+-1</real>",
                                "<real>nan(1)</real>",
                                "<real>infinit</real>",
                                "<real>1 2</real>",
                                "<true>x</true>",
                                "<false>0</false>",
                                "<data>A</data>",
                                "<data>AAE</data>",
                                "<data>AAEC=</data>",
                                "<data>A===</data>",
                                "<data>AA==AAEC</data>",
                                "<data>A*==</data>",
                                "<data>\xC3\xA9</data>"}) {
        expectUnreadable(document(element));
        expectUnreadable(document("<dict><key>k</key>" + std::string(element) + "</dict>"));
    }
}

TEST(PlistCoder, ValuesAreReadInEverySpellingOfTheFormat) {
    expectSame(fromElement("<integer>010</integer>"), 10);
    expectSame(fromElement("<integer>+7</integer>"), 7);
    expectSame(fromElement("<integer>-0</integer>"), 0);
    expectSame(fromElement("<integer>0x1F</integer>"), 31);
    expectSame(fromElement("<integer>0XffffFFFFffffFFFF</integer>"), std::numeric_limits<std::uint64_t>::max());
    expectSame(fromElement("<integer>\n 5\t</integer>"), 5);
    expectSame(fromElement("<integer>00000000000000000000000000000000000012</integer>"), 12);
    expectSame(fromElement("<real>.5</real>"), 0.5);
    expectSame(fromElement("<real>5.</real>"), 5.0);
    expectSame(fromElement("<real> +5.25E-1\n</real>"), 0.525);
    expectSame(fromElement("<real>+infinity</real>"), std::numeric_limits<double>::infinity());
    expectSame(fromElement("<real>-Inf</real>"), -std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(fromElement("<real>NaN</real>").doubleValue()));
    EXPECT_TRUE(std::signbit(fromElement("<real>-0.0</real>").doubleValue()));
    expectSame(fromElement("<date>2001-01-02Z</date>"), NSDate{86400.0});
    expectSame(fromElement("<date>2001-01-01T01Z</date>"), NSDate{3600.0});
    expectSame(fromElement("<date>\n2001-01-01T00:01Z </date>"), NSDate{60.0});
    expectSame(fromElement("<data> A A\n\tE\rC </data>"), NSData{0, 1, 2});
    expectSame(fromElement("<data>AA = =</data>"), NSData{0});
    expectSame(fromElement("<true> </true>"), true);
}

TEST(PlistCoder, NegativeZeroSurvives) {
    EXPECT_TRUE(std::signbit(rewritten(-0.0).doubleValue()));
    EXPECT_EQ(rewritten(-0.0).kind(), Kind::Real);
}

TEST(PlistCoder, StructureThatTheFormatLacksMakesTheListUnreadable) {
    for (const char* element : {"",
                                "<dict><key>k</key></dict>",
                                "<dict><true/></dict>",
                                "<dict><key>a</key><key>b</key><true/></dict>",
                                "<dict><key></key><key>b</key><true/></dict>",
                                "<dict><key>a</key><true/><true/></dict>",
                                "<dict><key>a</key><true/><key>b</key></dict>",
                                "<dict><key><true/></key><true/></dict>",
                                "<array><key>k</key></array>",
                                "<key>k</key>",
                                "<dict><key>k</key><array><key>x</key></array></dict>",
                                "<dict>text</dict>",
                                "<array>text<true/></array>",
                                "text",
                                "<true/>text",
                                "<true/><true/>",
                                "<dict/><dict/>",
                                "<plist><true/></plist>",
                                "<array><plist/></array>",
                                "<string>a<true/></string>",
                                "<integer>1<integer>2</integer></integer>",
                                "<set/>",
                                "<array><null/></array>",
                                "<String>x</String>",
                                "<x:true xmlns:x='y'/>",
                                "<string a='b'>x</string>",
                                "<dict xmlns='y'/>",
                                "<array>&undeclared;</array>",
                                "<string>&nbsp;</string>",
                                "<string>&#0;</string>",
                                "<string>&#1;</string>",
                                "<string>&#xD800;</string>",
                                "<string>&#xFFFE;</string>",
                                "<string>&#x110000;</string>",
                                "<string>\x01</string>",
                                "<string>\xE9</string>",
                                "<string>\xC0\x80</string>",
                                "<string>\xED\xA0\x80</string>",
                                "<string>\xEF\xBF\xBE</string>",
                                "<string>a ]]> b</string>",
                                "<string>a & b</string>",
                                "<dict><key>k</key><true/>",
                                "<dict></array>",
                                "<true></false>"}) {
        expectUnreadable(document(element));
    }
    const std::string whole = document("<dict/>");
    for (const std::string& list :
         {whole + "text", whole + whole, whole + "<dict/>", "text" + whole, "\n" + whole, whole + std::string(1, '\0'),
          std::string("<plist version=\"1.0\"><dict></dict>"), std::string("<plist/>"), std::string("<plist>"),
          std::string("<plist version='1.0' a='b'><dict/></plist>"), std::string("<plist a='b'><dict/></plist>")}) {
        expectUnreadable(list);
    }
}

TEST(PlistCoder, HarmlessMarkupAroundTheListIsRead) {
    const std::string plist = "<plist version=\"1.0\"><dict><key></key><true/></dict></plist>";
    const Value expected = NSMutableDictionary::dictionaryWithObjectsAndKeys({{true, ""}});
    for (const std::string& list :
         {plist, "<!-- a --><?b c?>\n" + plist + "\n<!-- d -->\n<?e?>\n", "<!DOCTYPE plist>" + plist,
          "<!DOCTYPE plist SYSTEM \"file:///etc/passwd\">" + plist, "<!DOCTYPE plist [<!ELEMENT plist ANY>]>" + plist,
          std::string("<dict><key/><true></true></dict>")}) {
        expectSame(fromFile(list), expected);
        expectSame(fromMessage(list), expected);
    }
}

TEST(PlistCoder, EntitiesAreNeitherTakenFromTheListNorFromElsewhere) {
    expectSame(fromElement("<string>&lt;&gt;&amp;&quot;&apos;&#65;</string>"), "<>&\"'A");
    expectUnreadable("<!DOCTYPE plist [<!ENTITY a 'x'>]><plist><string>&a;</string></plist>");
    expectUnreadable("<!DOCTYPE plist [<!ENTITY a 'x'>]><plist><string>x</string></plist>");
    expectUnreadable("<!DOCTYPE plist [<!ENTITY % a 'x'> %a;]><plist><string>x</string></plist>");
    expectUnreadable("<!DOCTYPE plist [<!ENTITY a SYSTEM 'file:///etc/passwd'>]><plist><string>&a;</string></plist>");
    expectUnreadable("<!DOCTYPE plist SYSTEM 'elsewhere.dtd'><plist><string>a&b;c</string></plist>");
    std::string laughs = "<!DOCTYPE plist [<!ENTITY a0 'ha'>";
    for (int i = 1; i < 40; ++i) {
        const std::string former = "&a" + std::to_string(i - 1) + ";";
        laughs += "<!ENTITY a" + std::to_string(i) + " '" + former + former + "'>";
    }
    expectUnreadable(laughs + "]><plist><string>&a39;</string></plist>");
}

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
    for (const std::uint64_t integer : {std::uint64_t{0}, std::uint64_t{1} << 63U, ~std::uint64_t{0}}) {
        expectSame(fromFile(binaryList({"\x14" + bigEndian(0, 8) + bigEndian(integer, 8)})), integer);
    }
}

TEST(PlistCoder, BinaryValuesThatOursCannotHoldMakeTheFileUnreadable) {
    const std::vector<std::string> objects = {"\x14" + bigEndian(1, 8) + bigEndian(0, 8),
                                              "\x14" + bigEndian(~std::uint64_t{0}, 8) +
                                                  bigEndian(~std::uint64_t{0}, 8),
                                              "\x15" + std::string(32, '\0'),
                                              "\x80\x01",
                                              "\xC0",
                                              std::string(1, '\0'),
                                              "\x0F",
                                              "\x21" + bigEndian(0, 2)};
    for (const std::string& object : objects) {
        EXPECT_EQ(fromFile(binaryList({object})).kind(), Kind::None);
        EXPECT_EQ(fromFile(binaryList({"\xA1" + references({1}), object})).kind(), Kind::None);
    }
    EXPECT_EQ(fromFile(binaryList({"\xC1" + references({1}), "\x09"})).kind(), Kind::None);
    EXPECT_EQ(fromFile(binaryList({"\xD1" + references({1, 1}), "\x09"})).kind(), Kind::None);
    EXPECT_EQ(fromFile(binaryList({"\xD2" + references({1, 2, 1, 2}), "\x51k", "\x10\x01"})).kind(), Kind::None);
}

TEST(PlistCoder, BinaryDictionaryMayHaveAnEmptyKey) {
    expectSame(fromFile(binaryList({"\xD1" + references({1, 2}), "\x50", "\x09"})),
               NSMutableDictionary::dictionaryWithObjectsAndKeys({{true, ""}}));
}

TEST(PlistCoder, BinaryDatesOfAllYearsOfFourDigitsAreReadWithoutFractions) {
    for (const double seconds :
         {-63113904000.0, -3182198400.0, -978307201.0, -1.0, 0.0, 1230681600.0, 3124137600.0, 252423993599.0}) {
        expectSame(fromFile(binaryList({"\x33" + bigEndian(seconds)})), NSDate{seconds});
    }
    expectSame(fromFile(binaryList({"\x33" + bigEndian(86400.75)})), NSDate{86400.0});
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
    for (std::size_t size = 0; size < xml.size(); ++size) {
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

TEST(BinaryPlistCheck, BinaryListsCountTheirLongestWay) {
    const auto nesting = [](const std::vector<std::string>& objects) {
        return kelvo::nestingOfBinary(bytes(binaryList(objects)));
    };
    EXPECT_EQ(nesting({"\x09"}), 0U);
    EXPECT_EQ(nesting({"\xA0"}), 1U);
    EXPECT_EQ(nesting({"\xA2" + references({1, 2}), "\x09", "\xA1" + references({1})}), 2U);
    EXPECT_EQ(nesting({"\xA2" + references({2, 1}), "\xA1" + references({2}), "\xA0"}), 3U);
}

TEST(BinaryPlistCheck, BinaryListsThatReachOutOfThemselvesHaveNoDepth) {
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
