#include "platform/PropertyList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using platform::NSMutableArray;
using platform::NSMutableDictionary;
using platform::Value;
using testing::ElementsAre;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct NumberText {
    const char* text;
    double number;
};

class LeadingNumber : public testing::TestWithParam<NumberText> {};

TEST_P(LeadingNumber, IsReadInNoLocale) {
    EXPECT_EQ(platform::leadingNumber(GetParam().text), GetParam().number) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(OfATextWith, LeadingNumber,
                         testing::Values(NumberText{"", 0}, NumberText{"2", 2}, NumberText{"40.9", 40.9},
                                         NumberText{" \t\n-3", -3}, NumberText{"+7x", 7}, NumberText{"1,5", 1},
                                         NumberText{".5", 0.5}, NumberText{"5.", 5}, NumberText{".", 0},
                                         NumberText{"-", 0}, NumberText{"--1", 0}, NumberText{"1e3", 1000},
                                         NumberText{"1E-2z", 0.01}, NumberText{"1e", 1}, NumberText{"1e+", 1},
                                         NumberText{"0x10", 0}, NumberText{"inf", 0}, NumberText{"nan", 0},
                                         NumberText{"- 1", 0}, NumberText{"1 2", 1}, NumberText{"1e999", kInfinity},
                                         NumberText{"-1e999", -kInfinity}, NumberText{"1e-999", 0},
                                         NumberText{"0e999", 0}, NumberText{"0.000001e99999999999999999999", kInfinity},
                                         NumberText{"1e-99999999999999999999", 0}, NumberText{"text", 0}));

TEST(LeadingNumber, OfManyDigitsIsJudgedByItsFirstThatCounts) {
    EXPECT_EQ(platform::leadingNumber(std::string(400, '9')), kInfinity);
    EXPECT_EQ(platform::leadingNumber("00." + std::string(400, '0') + "1"), 0.0);
    EXPECT_EQ(platform::leadingNumber("0." + std::string(400, '0') + "1e401"), 1.0);
}

TEST(Truncation, SaturatesAndReadsNaNAsZero) {
    EXPECT_EQ(platform::truncatedToInt32(40.9), 40);
    EXPECT_EQ(platform::truncatedToInt32(-40.9), -40);
    EXPECT_EQ(platform::truncatedToInt32(2147483647.5), 2147483647);
    EXPECT_EQ(platform::truncatedToInt32(1e300), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(platform::truncatedToInt32(-kInfinity), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(platform::truncatedToInt32(std::nan("")), 0);
}

TEST(ValueKinds, StayDistinct) {
    EXPECT_EQ(Value().kind(), Value::Kind::None);
    EXPECT_EQ(Value(true).kind(), Value::Kind::Boolean);
    EXPECT_EQ(Value(1).kind(), Value::Kind::Integer);
    EXPECT_EQ(Value(1U).kind(), Value::Kind::Integer);
    EXPECT_EQ(Value(std::numeric_limits<std::uint64_t>::max()).kind(), Value::Kind::UnsignedInteger);
    EXPECT_EQ(Value(1.0F).kind(), Value::Kind::Real);
    EXPECT_EQ(Value("1").kind(), Value::Kind::String);
    EXPECT_EQ(Value(platform::NSData{}).kind(), Value::Kind::Data);
    EXPECT_EQ(Value(platform::NSDate{}).kind(), Value::Kind::Date);
    EXPECT_EQ(Value(NSMutableArray::arrayWithObjects()).kind(), Value::Kind::Array);
    EXPECT_EQ(Value(NSMutableDictionary::dictionary()).kind(), Value::Kind::Dictionary);
}

TEST(ValueKinds, OfNothingAreNone) {
    EXPECT_FALSE(Value(std::optional<std::string>()));
    EXPECT_FALSE(Value(NSMutableArray()));
    EXPECT_FALSE(Value(NSMutableDictionary()));
}

TEST(ReadingABoolean, TakesNumbersAndTextsAsThePlatformDoes) {
    for (const Value& isTrue :
         {Value(true), Value(1), Value(-1), Value(0.5), Value("YES"), Value("yes"), Value("true"), Value("T"),
          Value("1"), Value("  +007"), Value(std::numeric_limits<std::uint64_t>::max())}) {
        EXPECT_TRUE(isTrue.boolValue()) << isTrue.description();
    }
    for (const Value& isFalse :
         {Value(), Value(false), Value(0), Value(0.0), Value(""), Value("NO"), Value("false"), Value("0"), Value("000"),
          Value("on"), Value(platform::NSData{1}), Value(NSMutableArray::arrayWithObjects({1}))}) {
        EXPECT_FALSE(isFalse.boolValue()) << isFalse.description();
    }
}

TEST(ReadingAnInteger, ConvertsAndSaturates) {
    EXPECT_EQ(Value(true).intValue(), 1);
    EXPECT_EQ(Value(2.9).intValue(), 2);
    EXPECT_EQ(Value("2").intValue(), 2);
    EXPECT_EQ(Value("-2.9 points").intValue(), -2);
    EXPECT_EQ(Value("1e3").intValue(), 1000);
    EXPECT_EQ(Value("99999999999999999999").longLongValue(), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(Value("-99999999999999999999").longLongValue(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(Value("9007199254740993").longLongValue(), 9007199254740993);
    EXPECT_EQ(Value(std::int64_t{1} << 40).intValue(), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(Value(std::numeric_limits<std::int64_t>::min()).intValue(), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(Value(std::numeric_limits<std::uint64_t>::max()).intValue(), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(Value(std::numeric_limits<std::uint64_t>::max()).longLongValue(),
              std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(Value(1e300).longLongValue(), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(Value(-1e300).intValue(), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(Value(std::nan("")).intValue(), 0);
    EXPECT_EQ(Value(platform::NSDate{5}).intValue(), 0);
    EXPECT_EQ(Value().intValue(), 0);
}

TEST(ReadingTheLowBits, TakesThemFromTheWholeNumber) {
    EXPECT_EQ(Value(-1).lowBits(), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(Value(std::numeric_limits<std::uint64_t>::max()).lowBits(), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(Value(258.9).lowBits(), 258U);
    EXPECT_EQ(Value("258").lowBits(), 258U);
}

TEST(ReadingAReal, ConvertsAndNarrowsWithoutOverflow) {
    EXPECT_EQ(Value(true).doubleValue(), 1.0);
    EXPECT_EQ(Value(3).doubleValue(), 3.0);
    EXPECT_EQ(Value("0.25s").doubleValue(), 0.25);
    EXPECT_EQ(Value(std::numeric_limits<std::uint64_t>::max()).doubleValue(), 18446744073709551615.0);
    EXPECT_EQ(Value(NSMutableDictionary::dictionary()).doubleValue(), 0.0);
    EXPECT_EQ(static_cast<double>(Value(0.3).floatValue()), 0.30000001192092896);
    EXPECT_EQ(Value(1e300).floatValue(), std::numeric_limits<float>::max());
    EXPECT_EQ(Value(-kInfinity).floatValue(), -std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(Value(std::nan("")).floatValue()));
}

TEST(HasNumber, TellsWhatConvertsFromWhatReadsAsMissing) {
    for (const Value& value :
         {Value(0), Value(false), Value(0.5), Value(~std::uint64_t{0}), Value("2"), Value(" -.5e3 s"), Value("0x10")}) {
        EXPECT_TRUE(value.hasNumber()) << value.description();
    }
    for (const Value& value :
         {Value(), Value("x"), Value(""), Value("-"), Value("."), Value("inf"), Value("nan"),
          Value(platform::NSData{'1'}), Value(platform::NSDate{1.0}),
          Value(platform::NSMutableArray::arrayWithObjects({1})), Value(platform::NSMutableDictionary::dictionary())}) {
        EXPECT_FALSE(value.hasNumber()) << value.description();
    }
}

TEST(TheTextForm, OfANumberIsTheShortestThatReadsBack) {
    EXPECT_EQ(Value(1024.0).stringValue(), "1024");
    EXPECT_EQ(Value(1024.5).stringValue(), "1024.5");
    EXPECT_EQ(Value(0.1).stringValue(), "0.1");
    EXPECT_EQ(Value(-7).stringValue(), "-7");
    EXPECT_EQ(Value(std::numeric_limits<std::uint64_t>::max()).stringValue(), "18446744073709551615");
    EXPECT_EQ(Value(true).stringValue(), "1");
    EXPECT_EQ(Value("text").stringValue(), "text");
    EXPECT_EQ(Value().stringValue(), std::nullopt);
    EXPECT_EQ(Value(NSMutableArray::arrayWithObjects()).stringValue(), std::nullopt);
}

TEST(TheText, IsAStringsAlone) {
    EXPECT_EQ(Value("text").string(), "text");
    EXPECT_EQ(Value(5).string(), std::nullopt);
    EXPECT_EQ(Value().string(), std::nullopt);
}

TEST(TheText, CanBeReadWhereItStands) {
    const Value text("text");
    ASSERT_NE(text.text(), nullptr);
    EXPECT_EQ(*text.text(), "text");
    EXPECT_EQ(Value(5).text(), nullptr);
    EXPECT_EQ(Value().text(), nullptr);
}

TEST(Equality, OfNumbersIsByValueWhateverTheirKind) {
    EXPECT_TRUE(Value(1).isEqual(true));
    EXPECT_TRUE(Value(1).isEqual(1.0));
    EXPECT_TRUE(Value(0.0).isEqual(false));
    EXPECT_TRUE(Value(0.0).isEqual(-0.0));
    EXPECT_FALSE(Value(1).isEqual(1.5));
    EXPECT_FALSE(Value(1).isEqual("1"));
    EXPECT_TRUE(Value(0x1p63).isEqual(std::uint64_t{1} << 63));
    EXPECT_FALSE(Value(0x1p64).isEqual(std::numeric_limits<std::uint64_t>::max()));
    EXPECT_FALSE(Value(9007199254740993).isEqual(9007199254740992.0));
    EXPECT_FALSE(Value(std::numeric_limits<std::int64_t>::max()).isEqual(0x1p63));
    EXPECT_FALSE(Value(-1).isEqual(std::numeric_limits<std::uint64_t>::max()));
    EXPECT_FALSE(Value(std::numeric_limits<std::uint64_t>::max()).isEqual(std::numeric_limits<std::int64_t>::max()));
    EXPECT_FALSE(Value(std::nan("")).isEqual(std::nan("")));
}

TEST(Equality, OfCollectionsIsByContents) {
    const auto list = NSMutableArray::arrayWithObjects({1, "a"});
    EXPECT_TRUE(Value(list).isEqual(NSMutableArray::arrayWithObjects({1.0, "a"})));
    EXPECT_FALSE(Value(list).isEqual(NSMutableArray::arrayWithObjects({1})));
    const auto dictionary = NSMutableDictionary::dictionaryWithObjectsAndKeys({{1, "a"}, {2, "b"}});
    EXPECT_TRUE(dictionary.isEqual(NSMutableDictionary::dictionaryWithObjectsAndKeys({{2, "b"}, {1, "a"}})));
    EXPECT_FALSE(dictionary.isEqual(NSMutableDictionary::dictionaryWithObjectsAndKeys({{1, "a"}, {2, "c"}})));
    EXPECT_FALSE(dictionary.isEqual(NSMutableDictionary::dictionaryWithObjectsAndKeys({{1, "a"}})));
    EXPECT_TRUE(NSMutableDictionary().isEqual(NSMutableDictionary()));
    EXPECT_FALSE(NSMutableDictionary().isEqual(NSMutableDictionary::dictionary()));
}

TEST(Equality, OfNothingIsWithNothingOnly) {
    EXPECT_TRUE(Value().isEqual(Value()));
    EXPECT_FALSE(Value().isEqual(0));
}

TEST(AReference, SharesWhatItNames) {
    const auto record = NSMutableDictionary::dictionaryWithObjectsAndKeys({{true, "IsEnable"}});
    const auto list = NSMutableArray::arrayWithObjects({record});

    list.objectAtIndex(0).dictionary().setObjectForKey(false, "IsEnable");

    EXPECT_FALSE(record.objectForKey("IsEnable").boolValue());
    EXPECT_TRUE(list.objectAtIndex(0).dictionary().isIdenticalTo(record));
}

TEST(ANilReference, ReadsAsEmptyAndTakesNoChanges) {
    NSMutableDictionary dictionary;
    dictionary.setObjectForKey(1, "a");
    EXPECT_EQ(dictionary.count(), 0U);
    EXPECT_FALSE(dictionary.objectForKey("a"));
    EXPECT_THAT(dictionary.allKeys(), ElementsAre());
    EXPECT_TRUE(dictionary.entries().empty());

    NSMutableArray array;
    array.addObject(1);
    EXPECT_EQ(array.count(), 0U);
    EXPECT_FALSE(array.objectAtIndex(0));
    EXPECT_TRUE(array.objects().empty());
}

TEST(AnArray, ShowsItsValuesInOrder) {
    auto array = NSMutableArray::arrayWithCapacity(1);
    EXPECT_TRUE(array.objects().empty());
    array.addObject(1);
    array.addObject("text");
    array.addObject(Value());

    ASSERT_EQ(array.objects().size(), 2U);
    EXPECT_EQ(array.objects()[0].intValue(), 1);
    EXPECT_EQ(array.objects()[1].string(), "text");
}

TEST(ADictionary, ShowsItsEntriesInTheOrderOfItsKeys) {
    auto dictionary = NSMutableDictionary::dictionaryWithCapacity(1);
    EXPECT_TRUE(dictionary.entries().empty());
    dictionary.setObjectForKey(1, "z");
    dictionary.setObjectForKey(2, "a");
    dictionary.setObjectForKey(3, "z");

    ASSERT_EQ(dictionary.entries().size(), 2U);
    EXPECT_EQ(dictionary.entries()[0].first, "z");
    EXPECT_EQ(dictionary.entries()[0].second.intValue(), 3);
    EXPECT_EQ(dictionary.entries()[1].first, "a");
}

TEST(ADictionary, KeepsTheOrderOfItsKeysAndReplacesInPlace) {
    auto dictionary = NSMutableDictionary::dictionary();
    dictionary.setObjectForKey(1, "z");
    dictionary.setObjectForKey(2, "a");
    dictionary.setObjectForKey(3, "z");
    dictionary.setObjectForKey(Value(), "a");

    EXPECT_THAT(dictionary.allKeys(), ElementsAre("z", "a"));
    EXPECT_EQ(dictionary.objectForKey("z").intValue(), 3);
    EXPECT_EQ(dictionary.objectForKey("a").intValue(), 2);
}

TEST(ADictionary, FindsEveryKeyOfMany) {
    auto dictionary = NSMutableDictionary::dictionary();
    for (int i = 0; i < 1000; ++i) dictionary.setObjectForKey(i, std::to_string(i));
    for (int i = 0; i < 1000; ++i) dictionary.setObjectForKey(-i, std::to_string(i));

    EXPECT_EQ(dictionary.count(), 1000U);
    for (int i = 0; i < 1000; ++i) EXPECT_EQ(dictionary.objectForKey(std::to_string(i)).intValue(), -i);
    EXPECT_FALSE(dictionary.objectForKey("1000"));
}

TEST(ADictionary, OfPairsEndsAtTheFirstMissingValue) {
    const auto dictionary = NSMutableDictionary::dictionaryWithObjectsAndKeys({{1, "a"}, {Value(), "b"}, {3, "c"}});

    EXPECT_THAT(dictionary.allKeys(), ElementsAre("a"));
}

TEST(ADescription, StandsOnOneLine) {
    EXPECT_EQ(Value(NSMutableDictionary::dictionaryWithObjectsAndKeys({{"Rotate", "Name"}, {true, "IsEnable"}}))
                  .description(),
              "{ Name = Rotate; IsEnable = 1; }");
    EXPECT_EQ(Value(NSMutableArray::arrayWithObjects({"a", "b"})).description(), "( a, b )");
    EXPECT_EQ(Value(NSMutableArray::arrayWithObjects()).description(), "( )");
    EXPECT_EQ(Value(NSMutableDictionary::dictionary()).description(), "{ }");
    EXPECT_EQ(Value(NSMutableArray::arrayWithObjects({"two words", "", "a\nb", "q\"\\", "AppExposé", "😀", "\x80"}))
                  .description(),
              R"(( "two words", "", "a\nb", "q\"\\", "AppExpos\U00e9", "\Ud83d\Ude00", "\U0080" ))");
    EXPECT_EQ(Value(NSMutableArray::arrayWithObjects({0.5, -1, platform::NSData{0, 171}})).description(),
              R"(( "0.5", "-1", <00ab> ))");
}

TEST(ADescription, OfAValueByItselfIsItsText) {
    EXPECT_EQ(Value("two words").description(), "two words");
    EXPECT_EQ(Value(0.5).description(), "0.5");
    EXPECT_EQ(Value().description(), "(null)");
    EXPECT_EQ(Value(platform::NSDate{0}).description(), "2001-01-01 00:00:00 +0000");
    EXPECT_EQ(Value(platform::NSDate{-978307201}).description(), "1969-12-31 23:59:59 +0000");
    EXPECT_EQ(Value(platform::NSDate{604886399}).description(), "2020-03-02 23:59:59 +0000");
    EXPECT_EQ(Value(platform::NSDate{604713600}).description(), "2020-03-01 00:00:00 +0000");
}

} // namespace
