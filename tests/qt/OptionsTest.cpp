#include "hosts/window/Options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {

namespace {

using testing::HasSubstr;

TEST(Options, WithoutArgumentsNothingIsAsked) {
    const Options options = parseOptions({});
    EXPECT_FALSE(options.help);
    EXPECT_FALSE(options.version);
    EXPECT_FALSE(options.panePath);
    EXPECT_EQ(options.error, "");
}

TEST(Options, HelpAndVersionAreAsked) {
    EXPECT_TRUE(parseOptions({"--help"}).help);
    EXPECT_TRUE(parseOptions({"--version"}).version);
}

TEST(Options, PaneMayFollowOrBeJoined) {
    EXPECT_EQ(parseOptions({"--pane", "/some where/A.prefPane"}).panePath, "/some where/A.prefPane");
    EXPECT_EQ(parseOptions({"--pane=/B.prefPane"}).panePath, "/B.prefPane");
}

TEST(Options, PaneWithoutAPathSaysWhatIsMissing) {
    for (const auto& arguments : {std::vector<std::string>{"--pane"}, {"--pane="}, {"--pane", ""}}) {
        EXPECT_THAT(parseOptions(arguments).error, HasSubstr("--pane PATH"));
    }
}

TEST(Options, UnknownArgumentIsNamedWithTheWayToTheKnownOnes) {
    for (const char* argument : {"--pain", "-x", "file", ""}) {
        const std::string error = parseOptions({argument}).error;
        EXPECT_THAT(error, HasSubstr(std::string("unknown argument ") + argument));
        EXPECT_THAT(error, HasSubstr("--help"));
    }
}

TEST(Options, HelpNamesEveryOption) {
    for (const char* option : {"--pane PATH", "--help", "--version"}) EXPECT_THAT(helpText(), HasSubstr(option));
}

} // namespace

} // namespace kelvo
