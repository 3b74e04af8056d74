#include "peers/touchctl/TouchHardware.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace kelvo::touchctl {

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class TouchctlTouchHardware : public testing::Test {
protected:
    TouchctlTouchHardware() {
        hardware.screens = {{"/dev/input/event7", "seat0", true, false, {}}};
        hardware.driver =
            TouchHardware::Driver{.displays = {{"Panel", "in use"}}, .refused = {}, .slowDoubleClick = {}};
    }

    /// The report; `problems` is how many there are in it.
    std::string report() {
        std::ostringstream text;
        Report lines(text);
        reportTouchHardware(lines, hardware);
        problems = lines.problems();
        return text.str();
    }

    TouchHardware hardware{.screens = {},
                           .hasUinput = true,
                           .service = TouchHardware::Service::Installed,
                           .driver = {},
                           .unit = TouchHardware::Unit{"success", 0}};
    int problems = -1;
};

TEST_F(TouchctlTouchHardware, NothingIsToBeMendedWhereTheDriverHasItsDisplay) {
    EXPECT_EQ(report(), "Touch displays\n"
                        "  ok       a touch display is plugged in\n"
                        "  ok       the service that opens displays is installed\n");
    EXPECT_EQ(problems, 0);
}

TEST_F(TouchctlTouchHardware, ADriverWithoutADisplayIsToldToPlugOneIn) {
    hardware.screens->clear();
    hardware.driver->displays.clear();
    hardware.hasUinput = false;
    hardware.service = TouchHardware::Service::Missing;
    EXPECT_THAT(report(), HasSubstr("no touch display is found\n           fix: plug it in"));
    EXPECT_EQ(problems, 1);
}

TEST_F(TouchctlTouchHardware, AMachineWithoutDriverAndDisplayLacksNothing) {
    hardware.screens->clear();
    hardware.driver.reset();
    hardware.unit.reset();
    EXPECT_THAT(report(), HasSubstr("note     no touch display is plugged in"));
    EXPECT_EQ(problems, 0);
}

TEST_F(TouchctlTouchHardware, ASystemThatTellsNothingIsNotSaidToHaveNone) {
    hardware.screens.reset();
    EXPECT_THAT(report(), AllOf(HasSubstr("does not report"), Not(HasSubstr("no touch display"))));
    EXPECT_EQ(problems, 0);
}

TEST_F(TouchctlTouchHardware, AKernelWithoutUinputIsNamed) {
    hardware.hasUinput = false;
    EXPECT_THAT(report(), HasSubstr("no uinput, which the driver needs\n"
                                    "           fix: sudo modprobe uinput"));
    EXPECT_EQ(problems, 1);
}

TEST_F(TouchctlTouchHardware, AMissingServiceIsAProblemOnlyWhereTheUserMayNotOpenTheDisplay) {
    hardware.service = TouchHardware::Service::Missing;
    EXPECT_THAT(report(), HasSubstr("kelvo-touch-devices is missing"));
    EXPECT_EQ(problems, 1);
    hardware.screens->front().isPermitted = true;
    EXPECT_THAT(report(), HasSubstr("note     the service that opens displays is not installed"));
    EXPECT_EQ(problems, 0);
}

TEST_F(TouchctlTouchHardware, AMissingSystemBusIsNamedInsteadOfTheService) {
    hardware.service = TouchHardware::Service::NoBus;
    EXPECT_THAT(report(), AllOf(HasSubstr("there is no system bus"), Not(HasSubstr("is missing"))));
    EXPECT_EQ(problems, 1);
}

TEST_F(TouchctlTouchHardware, ASessionThatIsNotActiveIsNamedOnceForASeat) {
    hardware.screens->front().isAtActiveSession = false;
    hardware.screens->push_back(hardware.screens->front());
    hardware.driver->displays = {{"Panel", "inactive"}};
    hardware.driver->refused = {{"Other", "only the user whose session is active can have it; sign in there"}};
    EXPECT_THAT(report(), AllOf(HasSubstr("not the active one on seat0"), Not(HasSubstr("sign in there"))));
    EXPECT_EQ(problems, 1);
}

TEST_F(TouchctlTouchHardware, ADisplayThatIsNotPermittedIsNamedWithItsFix) {
    hardware.driver->displays.clear();
    hardware.driver->refused = {{"Panel", "polkit does not permit it; ask the administrator"}};
    EXPECT_THAT(report(), HasSubstr("a touch display is not used: polkit does not permit it\n"
                                    "           fix: ask the administrator\n"));
    EXPECT_EQ(problems, 1);
}

TEST_F(TouchctlTouchHardware, AReasonWithoutAFixHasOneAllTheSame) {
    hardware.driver->refused = {{"Panel", "it is broken"}};
    EXPECT_THAT(report(), HasSubstr("not used: it is broken\n           fix: see the log of the driver"));
}

TEST_F(TouchctlTouchHardware, AProgramThatHasTheDisplayToItselfIsLookedForAmongItsReaders) {
    hardware.driver->displays = {{"Panel", "held by another program"}};
    hardware.screens->front().users = {"evtest (812)", "Xorg (77)"};
    EXPECT_THAT(report(), HasSubstr("has exclusive access to a touch display; among the visible programs, these read "
                                    "it: Xorg (77), evtest (812)\n           fix: quit that program"));
    hardware.screens->front().users.clear();
    EXPECT_THAT(report(), HasSubstr("has exclusive access to a touch display\n"));
    EXPECT_EQ(problems, 1);
}

TEST_F(TouchctlTouchHardware, ADoubleClickThatIsSlowerThanTheDesktopsIsNamedWithTheCommand) {
    hardware.driver->slowDoubleClick = {{"Panel", "gsettings set it 500"}};
    EXPECT_THAT(report(), HasSubstr("slower double-click than the desktop, whose setting wins\n"
                                    "           fix: make it faster, or slow down the desktop's double-click: "
                                    "gsettings set it 500\n"));
    EXPECT_EQ(problems, 1);
}

TEST_F(TouchctlTouchHardware, ADriverOfAnotherMakerNeedsNothingOfOurs) {
    hardware.driver.reset();
    hardware.hasOtherDriver = true;
    hardware.hasUinput = false;
    hardware.service = TouchHardware::Service::Missing;
    hardware.unit.reset();
    EXPECT_EQ(report(), "Touch displays\n  ok       a touch display is plugged in\n");
    EXPECT_EQ(problems, 0);
}

TEST_F(TouchctlTouchHardware, WhatEndedTheUnitIsNamed) {
    hardware.unit = TouchHardware::Unit{"watchdog", 4};
    EXPECT_THAT(report(), HasSubstr("the driver hung, and its watchdog stopped it\n"
                                    "           fix: systemctl --user restart kelvo-touch-driver.service"));
    EXPECT_EQ(problems, 1);
    hardware.unit = TouchHardware::Unit{"start-limit-hit", 5};
    EXPECT_THAT(report(), HasSubstr("the driver's unit failed (start-limit-hit)"));
    EXPECT_EQ(problems, 1);
    hardware.unit = TouchHardware::Unit{"success", 2};
    EXPECT_THAT(report(), HasSubstr("note     the driver failed and was restarted, 2 times"));
    EXPECT_EQ(problems, 0);
}

} // namespace

} // namespace kelvo::touchctl
