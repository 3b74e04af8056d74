#include "Properties/TDSettingViewCtl.h"

#include "TDCurrentDevice.h"
#include "TDGestureCatalogue.h"
#include "TDNames.h"
#include "TDUtilities.h"
#include "support/FakePlatform.h"
#include "support/FormStandIn.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using platform::NSMutableArray;
using platform::NSMutableDictionary;
using platform::NSRect;
using platform::Value;
using support::arrayOf;
using support::dictionaryOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

constexpr char kDriver[] = "TouchDisplayDriverMessagePort";
const std::string kFolder = "/home/user/Library/Preferences";
const std::string kSettingsPath = kFolder + "/KelvoTouchDisplay/Settings_A.plist";
const std::string kDockPath = kFolder + "/com.apple.dock.plist";
const std::string kGlobalPath = kFolder + "/.GlobalPreferences.plist";

class SettingTab : public testing::Test {
protected:
    SettingTab() {
        platform.ports.peers[kDriver] = support::MemoryPorts::Peer::Answers;
        setModelType("A");
        setSystemGestures(true);
        for (const char* outlet : {"rightClickBotton_", "longPressInterval_"}) {
            support::connect(tab, outlet, "setRightClickParameters:");
        }
        support::connect(tab, "rateSlider_", "rateSliderValueChange:");
        support::connect(tab, "rangeSlider_", "rangeSliderValueChange:");
        gestureView().setFrame({0, 0, 500, 300});
        for (const char* name : {"rangeView_", "rateView_", "testView_"}) area(name).setFrame({0, 0, 200, 200});
    }

    void setSystemGestures(bool areOn) {
        platform.setPlist(kDockPath, dictionaryOf({{areOn, "showAppExposeGestureEnabled"},
                                                   {areOn, "showDesktopGestureEnabled"},
                                                   {areOn, "showMissionControlGestureEnabled"},
                                                   {areOn, "showLaunchpadGestureEnabled"}}));
        platform.setPlist(kGlobalPath, dictionaryOf({{areOn, "AppleEnableSwipeNavigateWithScrolls"}}));
    }

    platform::NSSlider& slider(const char* name) { return support::outlet<platform::NSSlider>(tab, name); }
    platform::NSTextField& rengeText() { return support::outlet<platform::NSTextField>(tab, "rengeText_"); }
    platform::NSButton& rightClick() { return support::outlet<platform::NSButton>(tab, "rightClickBotton_"); }
    platform::NSView& gestureView() { return support::outlet<platform::NSView>(tab, "gestureView_"); }
    TDTestView& area(const char* name) { return support::outlet<TDTestView>(tab, name); }
    /// Presses a button that has no outlet.
    void fire(std::string_view selector) {
        platform::NSButton button;
        for (const auto& action : tab.actions()) {
            if (action.selector == selector) button.setAction(action.perform);
        }
        button.performClick();
    }

    /// The diameter of the ring that an area draws.
    double rangeOf(const char* name) {
        class Context : public platform::NSGraphicsContext {
        public:
            double diameter = 0.0;
            void setColor(platform::NSColor /*color*/) override {}
            void fillRect(NSRect /*rect*/) override {}
            void strokePath(const platform::NSBezierPath& path) override { diameter = path.bounds().width; }
        } context;
        const platform::NSGraphicsContext::Current current(context);
        area(name).drawRect({});
        return context.diameter;
    }

    /// The colour of the ring that an area draws.
    bool isGreen(const char* name) {
        class Context : public platform::NSGraphicsContext {
        public:
            platform::NSColor color = platform::NSColor::whiteColor();
            void setColor(platform::NSColor set) override { color = set; }
            void fillRect(NSRect /*rect*/) override {}
            void strokePath(const platform::NSBezierPath& /*path*/) override {}
        } context;
        const platform::NSGraphicsContext::Current current(context);
        area(name).drawRect({});
        return context.color == platform::NSColor::greenColor();
    }

    void expectRange(double range, const std::string& text) {
        for (const char* name : {"rangeView_", "rateView_", "testView_"}) EXPECT_EQ(rangeOf(name), range) << name;
        EXPECT_EQ(slider("rangeSlider_").doubleValue(), range);
        EXPECT_EQ(rengeText().stringValue(), text);
    }

    void expectRate(double interval) {
        EXPECT_EQ(slider("rateSlider_").doubleValue(), 1.0 - interval);
        EXPECT_EQ(area("rateView_").timeInterval(), interval);
        EXPECT_EQ(area("testView_").timeInterval(), interval);
    }

    /// The one message sent since the last look, as "id payload".
    std::string sent() {
        if (platform.ports.received.size() != 1) return std::to_string(platform.ports.received.size()) + " messages";
        const auto message = platform.ports.received[0];
        platform.ports.received.clear();
        return std::to_string(message.id) + " " + Value(message.payload).description();
    }
    Value::Kind sentKind(std::string_view key) {
        return platform.ports.received.at(0).payload.objectForKey(key).kind();
    }

    std::vector<NSRect> rowFrames() {
        std::vector<NSRect> frames;
        for (const auto& row : gestureView().subviews()) frames.push_back(row->frame());
        return frames;
    }

    NSMutableDictionary record(std::size_t index) { return gSettings.objectAtIndex(index).dictionary(); }
    NSMutableDictionary record(std::string_view name) {
        for (std::size_t i = 0; i < gSettings.count(); ++i) {
            if (record(i).objectForKey("Name").isEqual(name)) return record(i);
        }
        throw std::out_of_range(std::string(name));
    }
    bool isOn(std::string_view name) { return record(name).objectForKey("IsEnable").boolValue(); }

    support::FakePlatform platform;
    TDSettingViewCtl tab;
};

using TestAreas = SettingTab;

TEST_F(TestAreas, AreOfTheKindsThatTheirNamesSay) {
    tab.awakeFromNib();

    EXPECT_EQ(area("rangeView_").accessibilityValue(), 32.0);
    EXPECT_EQ(area("rateView_").accessibilityValue(), std::nullopt);
    (void)rangeOf("rateView_");
    (void)rangeOf("testView_");
    const platform::NSEvent event{{100, 100}};
    for (const char* name : {"rateView_", "testView_"}) {
        area(name).mouseDown(event);
        area(name).mouseUp(event);
        area(name).mouseDown(event);
        area(name).mouseUp(event);
    }
    EXPECT_EQ(area("rateView_").accessibilityValue(), 0.3) << "measured, and never below that";
    EXPECT_EQ(area("testView_").accessibilityValue(), 1.0) << "counted";
}

TEST_F(TestAreas, TurnGreenWhereTheDoubleClickWasTried) {
    tab.awakeFromNib();
    bool isDrawnAnew = false;
    const auto subscription = area("testView_").observeChanges([&] { isDrawnAnew = true; });

    platform::NSNotificationCenter::defaultCenter().postNotification({"TDDoubleClickHappenOnTestView", {}});

    EXPECT_TRUE(isGreen("testView_"));
    EXPECT_FALSE(isGreen("rangeView_"));
    EXPECT_FALSE(isGreen("rateView_"));
    EXPECT_TRUE(isDrawnAnew);
}

TEST_F(TestAreas, TheRangeIsDrawnAnewThoughItIsWhatItWas) {
    int drawn = 0;
    const auto subscription = area("rangeView_").observeChanges([&] { ++drawn; });

    tab.awakeFromNib();

    EXPECT_EQ(drawn, 2) << "once for the range, and once because the form asks for it";
}

TEST_F(TestAreas, AreOfTheFormWithTheTabsName) { EXPECT_EQ(tab.nibName(), "TDSettingViewCtl"); }

using Speed = SettingTab;

TEST_F(Speed, NormalButtonSetsHalfASecondAndSendsIt) {
    fire("doubleClickSpeedNormal:");

    expectRate(0.5);
    EXPECT_EQ(sent(), R"(0 { DoubleClickRate = "0.5"; DeviceName = A; })");
}

TEST_F(Speed, SliderAtEightTenthsGivesTheRestAsInterval) {
    slider("rateSlider_").performSetDoubleValue(0.8);

    EXPECT_EQ(area("rateView_").timeInterval(), 1.0 - 0.8);
    EXPECT_EQ(area("testView_").timeInterval(), 1.0 - 0.8);
    EXPECT_EQ(slider("rateSlider_").doubleValue(), 0.8);
    ASSERT_THAT(platform.ports.received, SizeIs(1));
    EXPECT_EQ(sentKind("DoubleClickRate"), Value::Kind::Real);
    EXPECT_EQ(platform.ports.received[0].payload.objectForKey("DoubleClickRate").doubleValue(), 1.0 - 0.8);
}

TEST_F(Speed, DoubleClickInTheRateAreaIsCopiedToSliderAndTestAreaAndSent) {
    tab.awakeFromNib();
    area("rateView_").setTimeInterval(0.75);

    platform::NSNotificationCenter::defaultCenter().postNotification({"TDDoubleClickHappenOnRateView", {}});

    expectRate(0.75);
    EXPECT_EQ(sent(), R"(0 { DoubleClickRate = "0.75"; DeviceName = A; })");
}

TEST_F(Speed, StandsInTheAreasWhenItIsSent) {
    std::vector<double> intervals;
    platform.ports.duringSend = [&](const auto& message) {
        intervals.push_back(message.payload.objectForKey("DoubleClickRate").doubleValue());
        expectRate(intervals.back());
    };

    slider("rateSlider_").performSetDoubleValue(0.75);
    fire("doubleClickSpeedNormal:");

    EXPECT_THAT(intervals, ElementsAre(0.25, 0.5));
}

TEST_F(Speed, DoubleClickInTheTestAreaTurnsItGreenAndIsNeitherSentNorStored) {
    tab.awakeFromNib();
    int redraws = 0;
    const platform::Subscription subscription = area("testView_").observeChanges([&] { ++redraws; });
    const int writes = platform.files.writes;

    platform::NSNotificationCenter::defaultCenter().postNotification({"TDDoubleClickHappenOnTestView", {}});

    EXPECT_EQ(redraws, 1);
    EXPECT_THAT(platform.ports.received, IsEmpty());
    EXPECT_EQ(platform.files.writes, writes);
}

TEST_F(Speed, IsHeardOfOnlyOnceTheFormIsLoaded) {
    platform::NSNotificationCenter::defaultCenter().postNotification({"TDDoubleClickHappenOnRateView", {}});

    EXPECT_THAT(platform.ports.received, IsEmpty());
}

using Range = SettingTab;

TEST_F(Range, NormalButtonSetsThirtyTwoEverywhereAndSendsAnInteger) {
    fire("doubleClickRangeNormal:");

    expectRange(32.0, "32");
    ASSERT_THAT(platform.ports.received, SizeIs(1));
    EXPECT_EQ(sentKind("DoubleClickRange"), Value::Kind::Integer);
    EXPECT_EQ(sent(), "1 { DoubleClickRange = 32; DeviceName = A; }");
}

TEST_F(Range, SliderSnapsToTheWholeNumberBelow) {
    slider("rangeSlider_").performSetDoubleValue(47.9);

    expectRange(47.0, "47");
    ASSERT_THAT(platform.ports.received, SizeIs(1));
    EXPECT_EQ(sentKind("DoubleClickRange"), Value::Kind::Integer);
    EXPECT_EQ(sent(), "1 { DoubleClickRange = 47; DeviceName = A; }");
}

TEST_F(Range, TextIsTakenDownToTheWholeNumberAndSentAsAReal) {
    EXPECT_TRUE(rengeText().performEndEditing("12.7"));

    expectRange(12.0, "12");
    ASSERT_THAT(platform.ports.received, SizeIs(1));
    EXPECT_EQ(sentKind("DoubleClickRange"), Value::Kind::Real);
    EXPECT_EQ(platform.ports.received[0].payload.objectForKey("DoubleClickRange").doubleValue(), 12.0);
}

TEST_F(Range, StandsEverywhereWhenItIsSent) {
    slider("rangeSlider_").setBounds(8.0, 128.0);
    std::vector<int> ranges;
    platform.ports.duringSend = [&](const auto& message) {
        ranges.push_back(message.payload.objectForKey("DoubleClickRange").intValue());
        expectRange(ranges.back(), std::to_string(ranges.back()));
    };

    slider("rangeSlider_").performSetDoubleValue(40.0);
    fire("doubleClickRangeNormal:");
    EXPECT_TRUE(tab.controlTextShouldEndEditing(rengeText(), "57"));

    EXPECT_THAT(ranges, ElementsAre(40, 32, 57));
}

TEST_F(Range, EmptyTextRestoresThePreviousNumberAndSendsNothing) {
    fire("doubleClickRangeNormal:");
    platform.ports.received.clear();

    EXPECT_TRUE(rengeText().performEndEditing(""));

    EXPECT_EQ(rengeText().stringValue(), "32");
    EXPECT_THAT(platform.ports.received, IsEmpty());
}

TEST_F(Range, TextThatIsNoNumberGivesZeroWhereNoFormatterRefusesIt) {
    EXPECT_TRUE(rengeText().performEndEditing("wide"));

    expectRange(0.0, "0");
    EXPECT_THAT(platform.ports.received, SizeIs(1));
}

TEST_F(Range, TextThatTheFormatterRefusesRestoresTheLastGoodNumber) {
    fire("doubleClickRangeNormal:");
    platform.ports.received.clear();
    rengeText().setFormatter(platform::NSNumberFormatter{8.0, 128.0});

    for (const char* text : {"wide", "7", "129", "12x", " "}) {
        EXPECT_TRUE(rengeText().performEndEditing(text));
        EXPECT_EQ(rengeText().stringValue(), "32") << text;
    }
    EXPECT_THAT(platform.ports.received, IsEmpty());

    EXPECT_TRUE(rengeText().performEndEditing("128"));
    EXPECT_EQ(rengeText().stringValue(), "128");
}

TEST_F(Range, BeyondTheSlidersBoundsIsKeptByTheTabAndHeldByTheSlider) {
    slider("rangeSlider_").setBounds(8.0, 128.0);

    EXPECT_TRUE(rengeText().performEndEditing("5000000000"));

    EXPECT_EQ(rengeText().stringValue(), "2147483647");
    EXPECT_EQ(slider("rangeSlider_").doubleValue(), 128.0);
    EXPECT_EQ(rangeOf("rangeView_"), 2147483647.0);
}

using RightClick = SettingTab;

TEST_F(RightClick, SwitchedOnEnablesTheIntervalAndSendsBoth) {
    slider("longPressInterval_").setDoubleValue(1.5);
    slider("longPressInterval_").setEnabled(false);

    rightClick().performClick();

    EXPECT_TRUE(slider("longPressInterval_").isEnabled());
    ASSERT_THAT(platform.ports.received, SizeIs(1));
    const auto inner = platform.ports.received[0].payload.objectForKey("RightClick").dictionary();
    EXPECT_EQ(inner.objectForKey("RightClickIsEnable").kind(), Value::Kind::Boolean);
    EXPECT_EQ(inner.objectForKey("RightClickTimeIntelval").kind(), Value::Kind::Real);
    EXPECT_EQ(sent(),
              R"(5 { RightClick = { RightClickIsEnable = 1; RightClickTimeIntelval = "1.5"; }; DeviceName = A; })");
}

TEST_F(RightClick, SwitchedOffDisablesTheIntervalAndSendsItsValueAllTheSame) {
    slider("longPressInterval_").setDoubleValue(1.5);
    rightClick().setState(1);

    rightClick().performClick();

    EXPECT_FALSE(slider("longPressInterval_").isEnabled());
    EXPECT_EQ(sent(),
              R"(5 { RightClick = { RightClickIsEnable = 0; RightClickTimeIntelval = "1.5"; }; DeviceName = A; })");
}

TEST_F(RightClick, MixedCountsAsOff) {
    rightClick().setState(-1);

    tab.setRightClickParameters(rightClick());

    EXPECT_FALSE(slider("longPressInterval_").isEnabled());
}

TEST_F(RightClick, IntervalSendsWhenMoved) {
    rightClick().setState(1);

    slider("longPressInterval_").performSetDoubleValue(2.0);

    EXPECT_EQ(sent(), "5 { RightClick = { RightClickIsEnable = 1; RightClickTimeIntelval = 2; }; DeviceName = A; }");
}

using AwakeFromNib = SettingTab;

TEST_F(AwakeFromNib, WithoutASettingsFileShowsTheDefaults) {
    tab.awakeFromNib();

    expectRate(0.5);
    expectRange(32.0, "32");
}

TEST_F(AwakeFromNib, ReadsTheRateInSinglePrecisionAndLaterReloadsInDouble) {
    platform.setPlist(kSettingsPath, dictionaryOf({{0.3, "DoubleClickRate"}, {48, "DoubleClickRange"}}));

    tab.awakeFromNib();
    expectRate(0.30000001192092896);
    expectRange(48.0, "48");

    tab.updateUIState();
    expectRate(0.3);
}

TEST_F(AwakeFromNib, WithoutAStoredRangeShowsThirtyTwoThoughTheTabHasNone) {
    platform.setPlist(kSettingsPath, dictionaryOf({{0.25, "DoubleClickRate"}}));
    tab.awakeFromNib();
    expectRange(32.0, "32");

    EXPECT_TRUE(rengeText().performEndEditing(""));
    EXPECT_EQ(rengeText().stringValue(), "0");
}

TEST_F(AwakeFromNib, TakesStoredValuesThatAreNoNumbersForMissingOnes) {
    for (const Value& unfit : {Value(arrayOf({1})), Value(dictionaryOf({})), Value(platform::NSData{1}),
                               Value(platform::NSDate{1.0}), Value("fast"), Value("")}) {
        platform.setPlist(kSettingsPath, dictionaryOf({{unfit, "DoubleClickRate"}, {unfit, "DoubleClickRange"}}));

        tab.awakeFromNib();

        expectRate(0.5);
        expectRange(32.0, "32");
    }
}

TEST_F(AwakeFromNib, ConvertsStoredTextsAndBooleans) {
    platform.setPlist(kSettingsPath, dictionaryOf({{" 0.25 s", "DoubleClickRate"}, {"48", "DoubleClickRange"}}));
    tab.awakeFromNib();
    expectRate(0.25);
    expectRange(48.0, "48");

    platform.setPlist(kSettingsPath, dictionaryOf({{true, "DoubleClickRate"}, {9.9, "DoubleClickRange"}}));
    tab.awakeFromNib();
    expectRate(1.0);
    expectRange(9.0, "9");
}

TEST_F(AwakeFromNib, GivesTheAreasTheirTypes) {
    tab.awakeFromNib();
    int rates = 0;
    int tests = 0;
    const platform::NSObject observer;
    auto& center = platform::NSNotificationCenter::defaultCenter();
    center.addObserver(observer, "TDDoubleClickHappenOnRateView", [&](const auto&) { ++rates; });
    center.addObserver(observer, "TDDoubleClickHappenOnTestView", [&](const auto&) { ++tests; });

    for (const char* name : {"rangeView_", "rateView_", "testView_"}) {
        (void)rangeOf(name);
        for (int i = 0; i < 2; ++i) {
            area(name).mouseDown({{100, 100}});
            area(name).mouseUp({{100, 100}});
        }
    }

    EXPECT_EQ(rates, 1);
    EXPECT_EQ(tests, 1);
}

TEST(ResetTabView, ShowsTheFirstPage) {
    support::FakePlatform platform;
    TDSettingViewCtl tab;
    auto& pages = support::outlet<platform::NSTabView>(tab, "settingTabView_");
    pages.addTabViewItem("a");
    pages.addTabViewItem("b");
    pages.selectTabViewItemAtIndex(1);

    tab.resetTabView();

    EXPECT_EQ(pages.indexOfSelectedTabViewItem(), 0);
}

using SaveItem = SettingTab;

TEST_F(SaveItem, WritesAChangedValueAndLeavesAnEqualOne) {
    platform.setPlist(kSettingsPath, dictionaryOf({{1, "Own"}}));

    EXPECT_TRUE(tab.saveItemToInfoPlistForKey(0.5, "DoubleClickRate"));
    EXPECT_EQ(Value(platform.plist(kSettingsPath)).description(), R"({ Own = 1; DoubleClickRate = "0.5"; })");
    const int writes = platform.files.writes;
    EXPECT_FALSE(tab.saveItemToInfoPlistForKey(0.5, "DoubleClickRate"));
    EXPECT_EQ(platform.files.writes, writes);
}

TEST_F(SaveItem, WithoutAFileStartsFromAnEmptyOne) {
    EXPECT_TRUE(tab.saveItemToInfoPlistForKey(1, "RotateMode"));

    EXPECT_EQ(Value(platform.plist(kSettingsPath)).description(), "{ RotateMode = 1; }");
}

TEST_F(SaveItem, LeavesADamagedFileAsItIs) {
    platform.files.setText(kSettingsPath, "damaged");

    EXPECT_TRUE(tab.saveItemToInfoPlistForKey(1, "RotateMode"));

    EXPECT_EQ(platform.files.textOf(kSettingsPath), "damaged");
}

using Reload = SettingTab;

TEST_F(Reload, WithoutASettingsFileShowsCatalogueAndDefaultsAndStoresTheCatalogueAlone) {
    tab.updateUIState();

    EXPECT_TRUE(gSettings.isEqual(initGesturesInformationForMountainLion()));
    EXPECT_TRUE(platform.plist(kSettingsPath)
                    .isEqual(dictionaryOf({{initGesturesInformationForMountainLion(), "GestureArray"}})));
    expectRate(0.5);
    expectRange(32.0, "32");
    EXPECT_EQ(rightClick().state(), 0);
    EXPECT_FALSE(slider("longPressInterval_").isEnabled());
    EXPECT_EQ(slider("longPressInterval_").doubleValue(), 0.0);
    EXPECT_THAT(gestureView().subviews(), SizeIs(13));
    EXPECT_THAT(platform.ports.received, IsEmpty());
}

TEST_F(Reload, WithoutASettingsFileLogsItsStepsInOrder) {
    platform.systemVersion.version = 0x1050;

    tab.updateUIState();

    EXPECT_THAT(platform.log.lines,
                ElementsAre("updateUIState " + kSettingsPath, "actionArr1 == (null)",
                            "   systemPreferenceFileCheck    ", "  return NO", "  return NO", "actionArr2 == (null)"));
}

TEST_F(Reload, WithASettingsFileLogsItsStepsInOrder) {
    platform.setPlist(kSettingsPath, dictionaryOf({{0.25, "DoubleClickRate"},
                                                   {48, "DoubleClickRange"},
                                                   {arrayOf({dictionaryOf({{"Rotate", "Name"}, {true, "IsEnable"}})}),
                                                    "GestureArray"}}));

    tab.updateUIState();

    const std::string list = "( { Name = Rotate; IsEnable = 1; } )";
    EXPECT_THAT(platform.log.lines,
                ElementsAre("updateUIState " + kSettingsPath,
                            R"({ DoubleClickRate = "0.25"; DoubleClickRange = 48; GestureArray = )" + list + "; }",
                            "actionArr == " + list, "0.250000,48", "actionArr1 == " + list,
                            "   systemPreferenceFileCheck    ", "  return NO", "  return NO", "actionArr2 == " + list,
                            "actionArr[0] == { Name = Rotate; IsEnable = 1; }"));
}

TEST_F(Reload, WithASettingsFileShowsEachThingInItsTurn) {
    const auto stored = [](double rate, int range, bool isOn) {
        return dictionaryOf({{rate, "DoubleClickRate"},
                             {range, "DoubleClickRange"},
                             {dictionaryOf({{isOn, "RightClickIsEnable"}}), "RightClick"},
                             {initGesturesInformationForLion(), "GestureArray"}});
    };
    platform.setPlist(kSettingsPath, stored(0.5, 32, false));
    tab.updateUIState();
    platform.setPlist(kSettingsPath, stored(0.25, 48, true));
    std::vector<std::string> steps;
    platform.log.duringWrite = [&](std::string_view line) {
        if (!line.starts_with("{ ") && !line.starts_with("actionArr") && !line.starts_with("0.25")) return;
        if (line.starts_with("actionArr[")) return;
        std::ostringstream step;
        step << line.substr(0, line.find(' ')) << ": " << gestureView().subviews().size() << " rows, rate "
             << 1.0 - slider("rateSlider_").doubleValue() << ", range " << rengeText().stringValue() << ", right click "
             << rightClick().state();
        steps.push_back(step.str());
    };

    tab.updateUIState();

    EXPECT_THAT(steps, ElementsAre("{: 12 rows, rate 0.5, range 32, right click 0",
                                   "actionArr: 0 rows, rate 0.5, range 32, right click 0",
                                   "0.250000,48: 0 rows, rate 0.25, range 32, right click 0",
                                   "actionArr1: 0 rows, rate 0.25, range 48, right click 1",
                                   "actionArr2: 0 rows, rate 0.25, range 48, right click 1"));
}

TEST_F(Reload, WithoutASettingsFileStoresTheCatalogueBeforeItShowsTheDefaults) {
    slider("rateSlider_").performSetDoubleValue(0.75);
    double rate = 0.0;
    platform.files.duringWrite = [&](const std::string& path) {
        EXPECT_EQ(path, kSettingsPath);
        rate = 1.0 - slider("rateSlider_").doubleValue();
    };

    tab.updateUIState();

    EXPECT_EQ(rate, 0.25);
    expectRate(0.5);
}

TEST_F(Reload, ShowsWhatTheSettingsFileHolds) {
    platform.setPlist(
        kSettingsPath,
        dictionaryOf({{0.25, "DoubleClickRate"},
                      {48, "DoubleClickRange"},
                      {dictionaryOf({{true, "RightClickIsEnable"}, {1.5, "RightClickTimeIntelval"}}), "RightClick"},
                      {initGesturesInformationForLion(), "GestureArray"}}));

    tab.updateUIState();

    expectRate(0.25);
    expectRange(48.0, "48");
    EXPECT_EQ(rightClick().state(), 1);
    EXPECT_TRUE(slider("longPressInterval_").isEnabled());
    EXPECT_EQ(slider("longPressInterval_").doubleValue(), 1.5);
    EXPECT_EQ(gSettings.count(), 12U);
    EXPECT_EQ(platform.files.writes, 0);
}

TEST_F(Reload, WithAFileThatLacksRateAndRangeShowsZeros) {
    platform.setPlist(kSettingsPath, dictionaryOf({{"0.8.0.3", "DriverVersion"}}));

    tab.updateUIState();

    expectRate(0.0);
    expectRange(0.0, "0");
    EXPECT_TRUE(platform.plist(kSettingsPath).objectForKey("DriverVersion").isEqual("0.8.0.3"));
    EXPECT_TRUE(
        platform.plist(kSettingsPath).objectForKey("GestureArray").isEqual(initGesturesInformationForMountainLion()));
}

TEST_F(Reload, KeepsTheStoredListWhenTheSystemIsUpgraded) {
    platform.systemVersion.version = 0x1068;
    tab.updateUIState();
    platform.systemVersion.version = 0x1090;

    tab.updateUIState();

    EXPECT_EQ(gSettings.count(), 9U);
}

TEST_F(Reload, BelowTheFirstVersionShowsNoListAndWritesNone) {
    for (const bool hasFile : {false, true}) {
        platform.systemVersion.version = 0x1059;
        platform.files.files.erase(kSettingsPath);
        if (hasFile) platform.setPlist(kSettingsPath, dictionaryOf({{1, "Own"}}));

        tab.updateUIState();

        EXPECT_FALSE(gSettings);
        EXPECT_THAT(gestureView().subviews(), IsEmpty());
        EXPECT_FALSE(platform.plist(kSettingsPath).objectForKey("GestureArray"));
        EXPECT_EQ(platform.files.fileExistsAtPath(kSettingsPath), hasFile);
    }
}

TEST_F(Reload, PublishesTheVeryRecordsThatTheRowsEdit) {
    platform.setPlist(kSettingsPath, dictionaryOf({{initGesturesInformationForLion(), "GestureArray"}}));
    tab.updateUIState();

    const NSMutableArray published = gSettings;
    tab.updateUIState();

    EXPECT_FALSE(gSettings.isIdenticalTo(published));
}

TEST_F(Reload, ReplacesAListOfAnotherKindByTheCatalogue) {
    platform.setPlist(kSettingsPath, dictionaryOf({{"no list", "GestureArray"}, {1, "Own"}}));

    tab.updateUIState();

    EXPECT_EQ(gSettings.count(), 13U);
    EXPECT_TRUE(platform.plist(kSettingsPath).objectForKey("GestureArray").isEqual(gSettings));
    EXPECT_TRUE(platform.plist(kSettingsPath).objectForKey("Own").isEqual(1));
}

TEST_F(Reload, OfADamagedFileShowsTheCatalogueAndLeavesTheFileAsItIs) {
    platform.files.setText(kSettingsPath, "damaged");

    tab.updateUIState();

    EXPECT_EQ(gSettings.count(), 13U);
    EXPECT_EQ(platform.files.textOf(kSettingsPath), "damaged");
}

TEST_F(Reload, OfADamagedListShowsItsRecordsAndLeavesItAsItIs) {
    const NSMutableArray list =
        arrayOf({5, "text", dictionaryOf({}), dictionaryOf({{"Rotate", "Name"}}), arrayOf({}),
                 dictionaryOf({{"MissionControl", "Name"}, {99, "SelectedIndex"}, {true, "MoreGesture"}})});
    platform.setPlist(kSettingsPath, dictionaryOf({{list, "GestureArray"}}));
    const std::string before = platform.files.textOf(kSettingsPath);

    tab.updateUIState();

    EXPECT_THAT(gestureView().subviews(), SizeIs(3));
    EXPECT_EQ(platform.files.textOf(kSettingsPath), before);
    EXPECT_EQ(gSettings.count(), 6U);
}

TEST_F(Reload, OfAThousandRecordsShowsThemAll) {
    const NSMutableArray list = arrayOf({});
    NSMutableArray growing = list;
    for (int i = 0; i < 1000; ++i) growing.addObject(dictionaryOf({{"Gesture" + std::to_string(i), "Name"}}));
    platform.setPlist(kSettingsPath, dictionaryOf({{list, "GestureArray"}}));

    tab.updateUIState();

    EXPECT_THAT(gestureView().subviews(), SizeIs(1000));
}

TEST_F(Reload, RemovesTheRowsOfTheListBefore) {
    platform.setPlist(kSettingsPath, dictionaryOf({{initGesturesInformationForLion(), "GestureArray"}}));

    tab.updateUIState();
    tab.updateUIState();

    EXPECT_THAT(gestureView().subviews(), SizeIs(12));
}

TEST_F(Reload, WithoutASettingsFileLeavesTheRowsOfTheListBeforeStanding) {
    tab.updateUIState();
    setModelType("B");
    tab.updateUIState();
    EXPECT_THAT(gestureView().subviews(), SizeIs(26));

    tab.updateUIState();
    EXPECT_THAT(gestureView().subviews(), SizeIs(26));
}

using Layout = SettingTab;

TEST_F(Layout, FillsTwoColumnsFromTheTop) {
    const auto gesture = [](const char* name, bool more) {
        return dictionaryOf({{name, "Name"}, {more, "MoreGesture"}});
    };
    platform.setPlist(
        kSettingsPath,
        dictionaryOf({{arrayOf({gesture("a", false), gesture("b", false), gesture("c", true), gesture("d", true)}),
                       "GestureArray"}}));
    tab.updateUIState();

    EXPECT_THAT(rowFrames(), ElementsAre(NSRect{10, 270, 200, 30}, NSRect{10, 240, 200, 30}, NSRect{210, 270, 220, 30},
                                         NSRect{210, 240, 220, 30}));
}

TEST_F(Layout, MakesTheFullScreenRowWider) {
    platform.setPlist(
        kSettingsPath,
        dictionaryOf({{arrayOf({dictionaryOf({{"FullScreenApps", "Name"}, {true, "MoreGesture"}})}), "GestureArray"}}));
    tab.updateUIState();

    EXPECT_THAT(rowFrames(), ElementsAre(NSRect{210, 270, 270, 30}));
}

TEST_F(Layout, ContinuesBelowTheSecondColumnWithARowOfTheFirst) {
    const auto more = dictionaryOf({{"a", "Name"}, {true, "MoreGesture"}});
    platform.setPlist(kSettingsPath,
                      dictionaryOf({{arrayOf({more, more, dictionaryOf({{"b", "Name"}}), more}), "GestureArray"}}));
    tab.updateUIState();

    EXPECT_THAT(rowFrames(), ElementsAre(NSRect{210, 270, 220, 30}, NSRect{210, 240, 220, 30}, NSRect{10, 210, 200, 30},
                                         NSRect{210, 270, 220, 30}));
}

TEST_F(Layout, PlacesARowThenLogsItsRecordThenFillsItThenShowsIt) {
    const auto titleOfLast = [this] {
        return support::outlet<platform::NSTextField>(*platform.nibs.owners.back(), "m_title").stringValue();
    };
    std::vector<std::string> steps;
    platform.log.duringWrite = [&](std::string_view line) {
        if (!line.starts_with("actionArr[0]")) return;
        EXPECT_EQ(platform.nibs.views.back()->frame(), (NSRect{10, 270, 200, 30}));
        steps.push_back("log " + titleOfLast() + std::to_string(gestureView().subviews().size()));
    };
    const auto shown = gestureView().observeChanges([&] {
        if (gestureView().subviews().size() == 1) steps.push_back("show " + titleOfLast());
    });
    platform.bundle.strings["SecondaryClick"] = "Right click";
    platform.setPlist(kSettingsPath, dictionaryOf({{initGesturesInformationForLion(), "GestureArray"}}));

    tab.updateUIState();

    EXPECT_THAT(steps, ElementsAre("log 0", "show Right click"));
}

using Reconciliation = SettingTab;

TEST_F(Reconciliation, SwitchesOffWhatTheDockHasSwitchedOffOrLacks) {
    platform.setPlist(kDockPath, dictionaryOf({{true, "showAppExposeGestureEnabled"},
                                               {false, "showDesktopGestureEnabled"},
                                               {"YES", "showMissionControlGestureEnabled"}}));
    tab.updateUIState();

    EXPECT_TRUE(isOn("AppExpos\u00e9"));
    EXPECT_FALSE(isOn("ShowDesktop"));
    EXPECT_TRUE(isOn("MissionControl"));
    EXPECT_FALSE(isOn("Launchpad"));
    EXPECT_EQ(record("Launchpad").objectForKey("IsEnable").kind(), Value::Kind::Boolean);
    EXPECT_TRUE(isOn("SecondaryClick"));
}

TEST_F(Reconciliation, WithoutTheSystemsFilesSwitchesOffEveryMirroredGesture) {
    platform.files.files.erase(kDockPath);
    platform.files.setText(kGlobalPath, "damaged");
    tab.updateUIState();

    std::vector<std::string> off;
    for (std::size_t i = 0; i < gSettings.count(); ++i) {
        if (!record(i).objectForKey("IsEnable").boolValue())
            off.push_back(record(i).objectForKey("Name").string().value());
    }
    EXPECT_THAT(off, ElementsAre("SwipeBetweenPages", "MissionControl", "AppExpos\u00e9", "Launchpad", "ShowDesktop"));
}

TEST_F(Reconciliation, OfPagesConcernsTheActionsThatScrollWithTwoFingers) {
    setSystemGestures(false);
    for (const auto& [index, staysOn] : {std::pair(0, false), std::pair(1, true), std::pair(2, false)}) {
        NSMutableArray list = initGesturesInformationForLion();
        list.objectAtIndex(6).dictionary().setObjectForKey(index, "SelectedIndex");
        platform.setPlist(kSettingsPath, dictionaryOf({{list, "GestureArray"}}));
        tab.updateUIState();

        EXPECT_EQ(isOn("SwipeBetweenPages"), staysOn) << index;
    }
}

TEST_F(Reconciliation, OfPagesDoesNotHappenUnderSnowLeopard) {
    platform.systemVersion.version = 0x106F;
    setSystemGestures(false);
    tab.updateUIState();

    EXPECT_TRUE(isOn("SwipeBetweenPages"));
    EXPECT_FALSE(isOn("ShowDesktop"));
}

TEST_F(Reconciliation, NeverSwitchesOnAndNeverSavesOrSends) {
    setSystemGestures(false);
    tab.updateUIState();
    setSystemGestures(true);
    tab.systemPreferenceFileCheck();

    EXPECT_FALSE(isOn("Launchpad"));
    EXPECT_THAT(platform.ports.received, IsEmpty());
    EXPECT_TRUE(
        platform.plist(kSettingsPath).objectForKey("GestureArray").isEqual(initGesturesInformationForMountainLion()));
}

TEST_F(Reconciliation, BeginsWithTheFirstRecordOfTheList) {
    setSystemGestures(false);
    platform.setPlist(
        kSettingsPath,
        dictionaryOf({{arrayOf({newGestureDictionary("Launchpad", {"PinchWithThumbAndThreeFingers"}, false)}),
                       "GestureArray"}}));
    tab.updateUIState();

    EXPECT_FALSE(isOn("Launchpad"));
}

TEST_F(Reconciliation, AddsNothingToARecordThatIsNotOn) {
    setSystemGestures(false);
    platform.setPlist(kSettingsPath,
                      dictionaryOf({{arrayOf({dictionaryOf({{"Launchpad", "Name"}}),
                                              dictionaryOf({{"SwipeBetweenPages", "Name"}, {0, "SelectedIndex"}})}),
                                     "GestureArray"}}));
    tab.updateUIState();

    for (const char* name : {"Launchpad", "SwipeBetweenPages"}) {
        EXPECT_FALSE(record(name).objectForKey("IsEnable")) << name;
    }
}

TEST_F(Reconciliation, LeavesARecordWithoutANameAlone) {
    setSystemGestures(false);
    platform.setPlist(kSettingsPath, dictionaryOf({{arrayOf({dictionaryOf({{true, "IsEnable"}})}), "GestureArray"}}));
    tab.updateUIState();

    EXPECT_TRUE(record(0).objectForKey("IsEnable").boolValue());
}

class LockWait : public SettingTab {
protected:
    /// A temporary file beside a preference file, always as young as now.
    void lock(const std::string& name) {
        platform.files.listings[kFolder].push_back(name);
        platform.files.modificationDates[kFolder + "/" + name] = {1e9};
    }
    long waits() { return std::count(platform.log.lines.begin(), platform.log.lines.end(), "   dock.plist is lock "); }
};

TEST_F(LockWait, DoesNotSleepWhileNothingIsLocked) {
    tab.updateUIState();

    EXPECT_EQ(waits(), 0);
    EXPECT_THAT(platform.clock.sleeps, IsEmpty());
}

TEST_F(LockWait, NamesTheDockWhicheverFileIsLockedAndGivesUpAfterElevenSleepsOfASecond) {
    for (const char* name : {"com.apple.dock.plist.x", ".GlobalPreferences.plist.x"}) {
        platform.files.listings.clear();
        platform.log.lines.clear();
        platform.clock.sleeps.clear();
        lock(name);
        tab.updateUIState();

        EXPECT_EQ(waits(), 11) << name;
        EXPECT_EQ(platform.clock.sleeps, std::vector<unsigned>(11, 1U)) << name;
        EXPECT_TRUE(isOn("Launchpad"));
    }
}

TEST_F(LockWait, SurvivesTheWrapAroundOfTheTicks) {
    platform.clock.startTick = 0xFFFFFFF0;
    lock("com.apple.dock.plist.x");
    tab.updateUIState();

    EXPECT_EQ(waits(), 11);
}

TEST_F(LockWait, IsLoggedBeforeEachSleep) {
    lock("com.apple.dock.plist.x");
    long sleeps = 0;
    platform.clock.duringSleep = [&] { EXPECT_EQ(waits(), ++sleeps); };
    tab.updateUIState();

    EXPECT_EQ(sleeps, 11);
}

TEST_F(LockWait, EndsOneTickAfterTenSeconds) {
    constexpr double kTick = 1.0 / 60.0;
    lock("com.apple.dock.plist.x");
    platform.clock.duringSleep = [&] {
        if (platform.clock.sleeps.size() == 10) platform.runLoop.standStill(1.1 * kTick);
    };
    tab.updateUIState();

    EXPECT_EQ(waits(), 10);
}

TEST_F(LockWait, EndsWhenTheLockGoes) {
    lock("com.apple.dock.plist.x");
    platform.files.modificationDates[kFolder + "/com.apple.dock.plist.x"] = {-12.0};
    tab.updateUIState();

    // Twelve seconds old at the start, it is no lock any more after three.
    EXPECT_EQ(waits(), 3);
}

class RebuildInTheMiddleOfASend : public SettingTab {
protected:
    /// Shows the list and keeps weak hold of its rows.
    void show() {
        tab.updateUIState();
        for (const auto& view : gestureView().subviews()) views.push_back(view);
    }

    std::vector<std::weak_ptr<platform::NSView>> views;
};

TEST_F(RebuildInTheMiddleOfASend, LetsGoOfTheOldRowsAndShowsTheNewOnes) {
    platform.setPlist(kSettingsPath, dictionaryOf({{initGesturesInformationForLion(), "GestureArray"}}));
    show();
    platform.ports.peers[kDriver] = support::MemoryPorts::Peer::Hung;
    platform.runLoop.scheduleTimer(0.5, [&] { tab.updateUIState(); });

    slider("rateSlider_").performSetDoubleValue(0.8);

    EXPECT_THAT(gestureView().subviews(), SizeIs(12));
    for (const auto& view : views) EXPECT_TRUE(view.expired());
}

} // namespace
