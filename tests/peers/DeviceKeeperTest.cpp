#include "peers/devices/DeviceKeeper.h"

#include "support/FakeHardware.h"
#include "support/FakePlatform.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>

namespace {

using kelvo::DeviceKeeper;
using kelvo::Refusal;

constexpr uid_t kUser = 1000;
constexpr uid_t kAnother = 1001;

class DeviceKeeperTest : public testing::Test {
protected:
    DeviceKeeperTest() { seats.active = {{"seat0", kUser}}; }

    void plug(const std::string& node = "/dev/input/event5", const std::string& seat = "seat0") {
        keeper.come({node, "Panel", seat, "Maker_Panel"});
    }
    /// Why a display is not handed out; nothing where it is.
    std::optional<Refusal::Reason> refusalOf(DeviceKeeper::Id id, const std::string& caller, uid_t user) {
        try {
            (void)keeper.open(id, caller, user);
            return std::nullopt;
        } catch (const Refusal& refusal) {
            return refusal.reason();
        }
    }
    std::string toldSoFar() { return std::exchange(told, ""); }
    std::string doneSoFar() { return std::exchange(hardware.diary, ""); }

    support::FakePlatform platform;
    support::FakeHardware hardware;
    support::FakeSeats seats;
    std::string told;
    DeviceKeeper keeper{hardware,
                        seats,
                        {[this](DeviceKeeper::Id id, const std::string& name) {
                             told += "added " + std::to_string(id) + " " + name + " ";
                         },
                         [this](DeviceKeeper::Id id) { told += "removed " + std::to_string(id) + " "; },
                         [this](DeviceKeeper::Id id, const std::string& holder) {
                             told += "revoked " + std::to_string(id) + " of " + holder + " ";
                         }}};
};

TEST_F(DeviceKeeperTest, ADisplayComesAndGoes) {
    plug();
    EXPECT_EQ(keeper.displays(), (std::vector<std::pair<DeviceKeeper::Id, std::string>>{{1, "Panel"}}));
    keeper.go("/dev/input/event5");
    EXPECT_TRUE(keeper.displays().empty());
    EXPECT_EQ(told, "added 1 Panel removed 1 ");
    EXPECT_EQ(hardware.diary, "");
}

TEST_F(DeviceKeeperTest, TheActiveUsersProgramGetsTheDisplayAndItsVirtualDevices) {
    plug();
    const DeviceKeeper::Files files = keeper.open(1, ":1.5", kUser);
    EXPECT_EQ(hardware.nameOf(files.display.number()), "/dev/input/event5");
    EXPECT_EQ(hardware.nameOf(files.devices[0].number()), "0");
    EXPECT_EQ(hardware.nameOf(files.devices[3].number()), "3");
    EXPECT_EQ(hardware.diary, "open /dev/input/event5 make seat0/1 store display-1 ");
}

TEST_F(DeviceKeeperTest, AnotherUserIsRefused) {
    plug();
    EXPECT_EQ(refusalOf(1, ":1.5", kAnother), Refusal::Reason::NotActive);
    EXPECT_EQ(refusalOf(1, ":1.5", 0), Refusal::Reason::NotActive);
    EXPECT_EQ(hardware.diary, "");
}

TEST_F(DeviceKeeperTest, WhereNobodyIsActiveNobodyGetsTheDisplay) {
    seats.active.clear();
    plug();
    EXPECT_EQ(refusalOf(1, ":1.5", kUser), Refusal::Reason::NotActive);
}

TEST_F(DeviceKeeperTest, TheSeatOfTheDisplayCounts) {
    seats.active["seat1"] = kAnother;
    plug("/dev/input/event5", "seat1");
    EXPECT_EQ(refusalOf(1, ":1.5", kUser), Refusal::Reason::NotActive);
    EXPECT_EQ(refusalOf(1, ":1.6", kAnother), std::nullopt);
}

TEST_F(DeviceKeeperTest, ADisplayThatIsNotThereIsRefused) {
    EXPECT_EQ(refusalOf(1, ":1.5", kUser), Refusal::Reason::NoSuchDisplay);
    plug();
    EXPECT_EQ(refusalOf(2, ":1.5", kUser), Refusal::Reason::NoSuchDisplay);
    keeper.go("/dev/input/event5");
    plug();
    // Its number is never another's.
    EXPECT_EQ(refusalOf(1, ":1.5", kUser), Refusal::Reason::NoSuchDisplay);
}

TEST_F(DeviceKeeperTest, ASecondProgramIsToldThatTheDisplayIsBusy) {
    plug();
    EXPECT_EQ(refusalOf(1, ":1.5", kUser), std::nullopt);
    EXPECT_EQ(refusalOf(1, ":1.6", kUser), Refusal::Reason::Busy);
    EXPECT_EQ(refusalOf(1, ":1.5", kUser), Refusal::Reason::Busy);
}

TEST_F(DeviceKeeperTest, WhatAProgramHadIsTakenBackWhenItLeavesAndTheDevicesAreMadeAnew) {
    plug();
    (void)keeper.open(1, ":1.5", kUser);
    (void)doneSoFar();
    (void)toldSoFar();
    keeper.leave(":1.5");
    EXPECT_EQ(
        doneSoFar(),
        "revoke /dev/input/event5 revoke 0 revoke 1 revoke 2 revoke 3 drop display-1 unmake seat0/1 make seat0/1 ");
    EXPECT_EQ(told, "added 1 Panel ");
    EXPECT_EQ(refusalOf(1, ":1.6", kUser), std::nullopt);
    // The new devices serve the next one.
    EXPECT_EQ(doneSoFar(), "open /dev/input/event5 store display-1 ");
}

TEST_F(DeviceKeeperTest, OfSeveralDisplaysOnlyTheLeaversAreTakenBack) {
    plug();
    plug("/dev/input/event7");
    (void)keeper.open(1, ":1.5", kUser);
    (void)keeper.open(2, ":1.6", kUser);
    keeper.leave(":1.5");
    EXPECT_EQ(refusalOf(2, ":1.7", kUser), Refusal::Reason::Busy);
    EXPECT_EQ(refusalOf(1, ":1.7", kUser), std::nullopt);
}

TEST_F(DeviceKeeperTest, AProgramThatHadNothingMayLeave) {
    plug();
    (void)toldSoFar();
    keeper.leave(":1.5");
    EXPECT_EQ(hardware.diary, "");
    EXPECT_EQ(told, "");
}

TEST_F(DeviceKeeperTest, AnotherUsersSessionThatBecomesActiveTakesTheDisplayAway) {
    plug();
    (void)keeper.open(1, ":1.5", kUser);
    (void)doneSoFar();
    (void)toldSoFar();
    seats.active = {{"seat0", kAnother}};
    keeper.seatsChanged();
    EXPECT_EQ(
        doneSoFar(),
        "revoke /dev/input/event5 revoke 0 revoke 1 revoke 2 revoke 3 drop display-1 unmake seat0/1 make seat0/1 ");
    EXPECT_EQ(toldSoFar(), "revoked 1 of :1.5 added 1 Panel ");
    EXPECT_EQ(refusalOf(1, ":1.5", kUser), Refusal::Reason::NotActive);
    EXPECT_EQ(refusalOf(1, ":1.6", kAnother), std::nullopt);
}

TEST_F(DeviceKeeperTest, ALoginScreenTakesTheDisplayAwayAndTheSameUserHasItBackLater) {
    plug();
    (void)keeper.open(1, ":1.5", kUser);
    (void)toldSoFar();
    seats.active.clear();
    keeper.seatsChanged();
    EXPECT_EQ(toldSoFar(), "revoked 1 of :1.5 ");
    seats.active = {{"seat0", kUser}};
    keeper.seatsChanged();
    EXPECT_EQ(toldSoFar(), "added 1 Panel ");
    EXPECT_EQ(refusalOf(1, ":1.5", kUser), std::nullopt);
}

TEST_F(DeviceKeeperTest, AChangeOfNoSeatOfOursChangesNothing) {
    plug();
    (void)keeper.open(1, ":1.5", kUser);
    (void)doneSoFar();
    (void)toldSoFar();
    seats.active["seat1"] = kAnother;
    keeper.seatsChanged();
    EXPECT_EQ(doneSoFar(), "");
    EXPECT_EQ(told, "");
}

TEST_F(DeviceKeeperTest, AHeldDisplayThatIsUnpluggedIsTakenBackWithItsVirtualDevices) {
    plug();
    (void)keeper.open(1, ":1.5", kUser);
    (void)doneSoFar();
    (void)toldSoFar();
    keeper.go("/dev/input/event5");
    EXPECT_EQ(doneSoFar(),
              "revoke /dev/input/event5 revoke 0 revoke 1 revoke 2 revoke 3 drop display-1 unmake seat0/1 ");
    EXPECT_EQ(told, "removed 1 ");
    keeper.leave(":1.5");
    EXPECT_EQ(doneSoFar(), "");
}

TEST_F(DeviceKeeperTest, WithoutUinputTheRefusalSaysSoAndNobodyHasTheDisplay) {
    hardware.cannotMake = true;
    plug();
    EXPECT_EQ(refusalOf(1, ":1.5", kUser), Refusal::Reason::Failed);
    hardware.cannotMake = false;
    EXPECT_EQ(refusalOf(1, ":1.5", kUser), std::nullopt);
}

TEST_F(DeviceKeeperTest, TheLossOfTheBusTakesEverythingBack) {
    plug();
    plug("/dev/input/event7");
    (void)keeper.open(1, ":1.5", kUser);
    (void)keeper.open(2, ":1.6", kUser);
    keeper.leaveAll();
    EXPECT_EQ(refusalOf(1, ":1.7", kUser), std::nullopt);
    EXPECT_EQ(refusalOf(2, ":1.7", kUser), std::nullopt);
}

} // namespace
