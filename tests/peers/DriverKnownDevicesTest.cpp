#include "peers/driver/KnownDevices.h"

#include "support/FakePlatform.h"

#include <gtest/gtest.h>

#include <limits>

namespace kelvo {

namespace {

using platform::NSMutableDictionary;
using platform::Value;
using support::dictionaryOf;

constexpr char kDevices[] = "/machine/Library/Preferences/KelvoTouchDisplay/DeviceList.plist";
constexpr char kResolutions[] = "/machine/Library/Preferences/KelvoTouchDisplay/SupportResolutionList.plist";

NSMutableDictionary sides(const Value& width, const Value& height) {
    return dictionaryOf({{width, "Width"}, {height, "Height"}});
}

class DriverKnownDevices : public testing::Test {
protected:
    support::FakePlatform platform;
};

TEST_F(DriverKnownDevices, NothingIsKnownWithoutTheFiles) { EXPECT_EQ(knownDevice(0x04f3, 0x0732), KnownDevice()); }

TEST_F(DriverKnownDevices, ADisplayIsFoundByMakerAndModel) {
    auto entry = sides(344, 193.5);
    entry.setObjectForKey("Kelvo 15", "Name");
    platform.setPlist(kDevices, dictionaryOf({{sides(1, 2), "04f3:0733"}, {entry, "04f3:0732"}}));
    platform.setPlist(kResolutions, dictionaryOf({{sides(1920, 1080), "04f3:0732"}}));
    const KnownDevice expected{
        .name = "Kelvo 15", .size = touch::Size{344.0, 193.5}, .nativePixels = touch::Size{1920.0, 1080.0}};
    EXPECT_EQ(knownDevice(0x04f3, 0x0732), expected);
    EXPECT_EQ(knownDevice(0x0732, 0x04f3), KnownDevice());
}

TEST_F(DriverKnownDevices, DigitsMayBeLargeOrSmall) {
    platform.setPlist(kDevices, dictionaryOf({{sides(344, 193), "04F3:0AbC"}}));
    EXPECT_EQ(knownDevice(0x04f3, 0x0abc).size, (touch::Size{344.0, 193.0}));
}

TEST_F(DriverKnownDevices, WhatCannotBeIsNotKnown) {
    const double nothing = std::numeric_limits<double>::quiet_NaN();
    for (const auto& [width, height] : std::vector<std::pair<Value, Value>>{
             {344, {}}, {{}, 193}, {0, 193}, {-344, 193}, {nothing, 193}, {"wide", 193}, {344, 1e9}, {{}, {}}}) {
        platform.setPlist(kDevices, dictionaryOf({{sides(width, height), "04f3:0732"}}));
        platform.setPlist(kResolutions, dictionaryOf({{sides(width, height), "04f3:0732"}}));
        EXPECT_FALSE(knownDevice(0x04f3, 0x0732).size);
    }
    platform.setPlist(kDevices, dictionaryOf({{"text", "04f3:0732"}}));
    platform.setPlist(kResolutions, dictionaryOf({{sides(1920, 70000), "04f3:0732"}}));
    EXPECT_EQ(knownDevice(0x04f3, 0x0732), KnownDevice());
}

TEST_F(DriverKnownDevices, AFileThatIsDamagedIsNone) {
    platform.files.setText(kDevices, "damaged");
    EXPECT_EQ(knownDevice(0x04f3, 0x0732), KnownDevice());
}

} // namespace

} // namespace kelvo
