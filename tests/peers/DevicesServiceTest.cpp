#include "peers/devices/DevicesService.h"

#include "linux/BusConnection.h"
#include "linux/PollRunLoop.h"
#include "peers/DevicesBus.h"
#include "support/FakeHardware.h"
#include "support/FakePlatform.h"
#include "support/FakePolkit.h"
#include "support/PrivateBus.h"

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr double kLongest = 20.0;

/// A program that asks the service.
class Program {
public:
    Program(platform::CFRunLoop& loop, const std::string& address)
        : loop_(loop), connection_(kelvo::BusConnection::open(loop, address)) {
        sd_bus_slot* slot = nullptr;
        const std::string rule = "type='signal',interface='" + std::string(kelvo::kDevicesName) + "'";
        sd_bus_add_match_async(connection_->bus(), &slot, rule.c_str(), onSignal, nullptr, this);
        signals_.reset(slot);
        loop_.runUntil([&] { return connection_->hasSentEverything(); }, kLongest);
    }

    /// "refused with ERROR", or "got" the display and its files.
    std::string open(std::uint32_t id, const support::FakeHardware& hardware) {
        hardware_ = &hardware;
        answer_.clear();
        sd_bus_slot* slot = nullptr;
        sd_bus_call_method_async(connection_->bus(), &slot, kelvo::kDevicesName, kelvo::kDevicesPath,
                                 kelvo::kDevicesName, kelvo::kOpenMethod, onOpened, this, "u", id);
        const kelvo::BusSlot call(slot);
        connection_->process();
        loop_.runUntil([&] { return !answer_.empty(); }, kLongest);
        return answer_;
    }

    [[nodiscard]] std::string displays() {
        answer_.clear();
        sd_bus_slot* slot = nullptr;
        sd_bus_call_method_async(connection_->bus(), &slot, kelvo::kDevicesName, kelvo::kDevicesPath,
                                 kelvo::kDevicesName, kelvo::kDisplaysMethod, onDisplays, this, "");
        const kelvo::BusSlot call(slot);
        connection_->process();
        loop_.runUntil([&] { return !answer_.empty(); }, kLongest);
        return answer_;
    }

    void leave() { connection_->close(); }

    std::string heard;

private:
    static int onSignal(sd_bus_message* signal, void* self, sd_bus_error* /*error*/) {
        std::uint32_t id = 0;
        sd_bus_message_read(signal, "u", &id);
        static_cast<Program*>(self)->heard +=
            std::string(sd_bus_message_get_member(signal)) + " " + std::to_string(id) + " ";
        return 0;
    }

    static int onOpened(sd_bus_message* message, void* self, sd_bus_error* /*error*/) {
        auto& program = *static_cast<Program*>(self);
        if (const sd_bus_error* error = sd_bus_message_get_error(message)) {
            program.answer_ = std::string("refused with ") + error->name;
            return 0;
        }
        program.answer_ = "got";
        int file = -1;
        sd_bus_message_read(message, "h", &file);
        program.answer_ += " " + program.hardware_->nameOf(file);
        sd_bus_message_enter_container(message, 'a', "h");
        while (sd_bus_message_read(message, "h", &file) > 0) {
            program.answer_ += " " + program.hardware_->nameOf(file);
        }
        return 0;
    }

    static int onDisplays(sd_bus_message* message, void* self, sd_bus_error* /*error*/) {
        auto& program = *static_cast<Program*>(self);
        program.answer_ = "displays";
        std::uint32_t id = 0;
        const char* name = nullptr;
        sd_bus_message_enter_container(message, 'a', "(us)");
        while (sd_bus_message_read(message, "(us)", &id, &name) > 0) {
            program.answer_ += " " + std::to_string(id) + " " + name;
        }
        return 0;
    }

    platform::CFRunLoop& loop_;
    std::shared_ptr<kelvo::BusConnection> connection_;
    kelvo::BusSlot signals_;
    const support::FakeHardware* hardware_ = nullptr;
    std::string answer_;
};

class DevicesServiceTest : public testing::Test {
protected:
    DevicesServiceTest() {
        seats.active = {{"seat0", getuid()}};
        EXPECT_TRUE(polkit.open());
        EXPECT_TRUE(service.open());
        service.come({"/dev/input/event5", "Panel", "seat0", ""});
    }

    void await(const std::string& end) {
        loop.runUntil([&] { return hardware.diary.ends_with(end); }, kLongest);
        EXPECT_TRUE(hardware.diary.ends_with(end)) << hardware.diary;
    }

    support::FakePlatform platform;
    PrivateBus bus;
    kelvo::PollRunLoop loop;
    support::FakeHardware hardware;
    support::FakeSeats seats;
    support::FakePolkit polkit{loop, bus.address()};
    kelvo::DevicesService service{loop, bus.address(), hardware, seats};
    Program driver{loop, bus.address()};
};

constexpr char kGot[] = "got /dev/input/event5 0 1 2 3";

TEST_F(DevicesServiceTest, AnybodyMaySeeWhichDisplaysThereAre) { EXPECT_EQ(driver.displays(), "displays 1 Panel"); }

TEST_F(DevicesServiceTest, TheActiveUsersDriverGetsTheFiles) { EXPECT_EQ(driver.open(1, hardware), kGot); }

TEST_F(DevicesServiceTest, PolkitIsAskedForTheCallerAndAsksNobodyForAPassword) {
    (void)driver.open(1, hardware);
    EXPECT_TRUE(polkit.subject.starts_with("system-bus-name name :1.")) << polkit.subject;
    EXPECT_EQ(polkit.action, "com.kelvo.TouchDisplay.open-display");
    EXPECT_EQ(polkit.flags, 0U);
}

TEST_F(DevicesServiceTest, WhatPolkitDoesNotPermitIsRefused) {
    polkit.isWilling = false;
    EXPECT_EQ(driver.open(1, hardware), "refused with com.kelvo.TouchDisplay.Devices.Error.NotAuthorized");
    EXPECT_EQ(hardware.diary, "");
}

TEST_F(DevicesServiceTest, AUserWhoIsNotActiveIsRefusedBeforePolkitIsAsked) {
    seats.active = {{"seat0", getuid() + 1}};
    EXPECT_EQ(driver.open(1, hardware), "refused with com.kelvo.TouchDisplay.Devices.Error.NotActive");
    EXPECT_EQ(polkit.action, "");
}

TEST_F(DevicesServiceTest, ADisplayThatIsNotThereIsRefused) {
    EXPECT_EQ(driver.open(7, hardware), "refused with com.kelvo.TouchDisplay.Devices.Error.NoSuchDisplay");
}

TEST_F(DevicesServiceTest, ASecondDriverIsToldThatItIsBusyAndHearsWhenItIsNot) {
    EXPECT_EQ(driver.open(1, hardware), kGot);
    Program second(loop, bus.address());
    EXPECT_EQ(second.open(1, hardware), "refused with com.kelvo.TouchDisplay.Devices.Error.Busy");
    driver.leave();
    loop.runUntil([&] { return !second.heard.empty(); }, kLongest);
    EXPECT_EQ(second.heard, "Added 1 ");
    EXPECT_EQ(second.open(1, hardware), kGot);
}

TEST_F(DevicesServiceTest, WhatADriverHadIsTakenBackWhenItsConnectionEnds) {
    (void)driver.open(1, hardware);
    driver.leave();
    await("revoke /dev/input/event5 revoke 0 revoke 1 revoke 2 revoke 3 drop display-1 unmake seat0/1 make seat0/1 ");
}

TEST_F(DevicesServiceTest, TheHolderAloneHearsThatADisplayWasTakenAway) {
    (void)driver.open(1, hardware);
    Program another(loop, bus.address());
    seats.active = {{"seat0", getuid() + 1}};
    service.seatsChanged();
    loop.runUntil([&] { return another.heard == "Added 1 " && driver.heard.ends_with("Added 1 "); }, kLongest);
    EXPECT_EQ(another.heard, "Added 1 ");
    EXPECT_TRUE(driver.heard.ends_with("Revoked 1 Added 1 ")) << driver.heard;
}

TEST_F(DevicesServiceTest, ADisplayThatIsUnpluggedIsSaidToHaveGone) {
    Program another(loop, bus.address());
    service.go("/dev/input/event5");
    loop.runUntil([&] { return !another.heard.empty(); }, kLongest);
    EXPECT_EQ(another.heard, "Removed 1 ");
}

TEST_F(DevicesServiceTest, TheLossOfTheBusTakesEverythingBack) {
    (void)driver.open(1, hardware);
    bus.kill();
    await("drop display-1 unmake seat0/1 make seat0/1 ");
}

TEST(WithoutPolkit, NobodyGetsADisplay) {
    support::FakePlatform platform;
    const PrivateBus bus;
    kelvo::PollRunLoop loop;
    support::FakeHardware hardware;
    support::FakeSeats seats;
    seats.active = {{"seat0", getuid()}};
    kelvo::DevicesService service(loop, bus.address(), hardware, seats);
    ASSERT_TRUE(service.open());
    service.come({"/dev/input/event5", "Panel", "seat0", ""});
    Program driver(loop, bus.address());
    EXPECT_EQ(driver.open(1, hardware), "refused with com.kelvo.TouchDisplay.Devices.Error.NotAuthorized");
}

} // namespace
