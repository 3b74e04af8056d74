#include "KelvoTouchDisplayPref.h"
#include "platform/Log.h"
#include "platform/NSPreferencePane.h"
#include "platform/Platform.h"
#include "support/FakePlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <stdexcept>
#include <variant>

extern "C" platform::NSPreferencePaneEntry NSPreferencePaneCreate;

namespace {

using testing::ElementsAre;
using testing::Pair;

/// A host whose services are in use only once a pane was made for it.
class PaneEntry : public testing::Test {
protected:
    PaneEntry() { platform::usePlatform(nullptr); }

    support::FakePlatform fakes;
    platform::Platform host{.log = fakes.log,
                            .fileManager = fakes.files,
                            .propertyLists = fakes.propertyLists,
                            .bundles = fakes.bundle,
                            .messagePorts = fakes.ports,
                            .runLoop = fakes.runLoop,
                            .clock = fakes.clock,
                            .systemVersion = fakes.systemVersion};
    std::unique_ptr<platform::NSPreferencePane> pane;
};

TEST_F(PaneEntry, MakesThePaneWithEachTabInItsPlaceOnTheHostsPlatform) {
    ASSERT_TRUE(NSPreferencePaneCreate(platform::kNSPreferencePaneABIVersion, host, pane));

    ASSERT_TRUE(dynamic_cast<KelvoTouchDisplayPref*>(pane.get()));
    std::map<std::string_view, std::string> forms;
    for (const platform::NSOutlet& outlet : pane->outlets()) {
        if (const auto* tab = std::get_if<platform::NSViewController*>(&outlet.target)) {
            forms[outlet.name] = (*tab)->nibName();
        }
    }
    EXPECT_THAT(forms,
                ElementsAre(Pair("VersionVC_", "TDVersionViewCtl"), Pair("calibrationVC_", "TDCalibrationViewCtl"),
                            Pair("hardwareInformationVC_", "TDHardwareInformationViewCtl"),
                            Pair("settingVC_", "TDSettingViewCtl")));
    platform::NSLog("through the host");
    EXPECT_THAT(fakes.log.lines, ElementsAre("through the host"));
}

TEST_F(PaneEntry, OfAnotherVersionLeavesEverythingAsItWas) {
    for (const std::uint32_t version :
         {platform::kNSPreferencePaneABIVersion - 1, platform::kNSPreferencePaneABIVersion + 1}) {
        EXPECT_FALSE(NSPreferencePaneCreate(version, host, pane));
    }

    EXPECT_EQ(pane, nullptr);
    EXPECT_THROW(platform::NSLog("nobody's"), std::logic_error);
}

} // namespace
