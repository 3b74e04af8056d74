#include "peers/JsonLine.h"

#include <gtest/gtest.h>

namespace kelvo {

namespace {

TEST(JsonLine, BytesThatAreNoUTF8BecomeTheReplacementCharacter) {
    EXPECT_EQ(jsonLine("a\xFFz"), "\"a\uFFFDz\"");
    EXPECT_EQ(jsonLine("\xC3"), "\"\uFFFD\"") << "a character cut short";
    EXPECT_EQ(jsonLine("\xC0\xAF"), "\"\uFFFD\uFFFD\"") << "an overlong form";
    EXPECT_EQ(jsonLine("\xED\xA0\x80"), "\"\uFFFD\uFFFD\uFFFD\"") << "half of a pair";
    EXPECT_EQ(jsonLine("\xF4\x90\x80\x80"), "\"\uFFFD\uFFFD\uFFFD\uFFFD\"") << "beyond the last plane";
}

TEST(JsonLine, CharactersOfEveryLengthStay) {
    EXPECT_EQ(jsonLine("e\u00e9\u20ac\U0001F600"), "\"e\u00e9\u20ac\U0001F600\"");
    EXPECT_EQ(jsonLine("\U0010FFFF\u0800\uD7FF\uE000"), "\"\U0010FFFF\u0800\uD7FF\uE000\"");
}

TEST(JsonLine, QuotesBackslashesAndControlCharactersAreEscaped) {
    EXPECT_EQ(jsonLine("\"\\\n\x7F"), "\"\\\"\\\\\\u000a\\u007f\"");
    EXPECT_EQ(jsonLine(" ~\u0080\u009b\u009f\u00a0\u00c0"), "\" ~\\u0080\\u009b\\u009f\u00a0\u00c0\"");
}

} // namespace

} // namespace kelvo
