#include "peers/driver/ServiceSource.h"

#include "linux/PollRunLoop.h"
#include "peers/devices/DevicesService.h"
#include "support/FakeHardware.h"
#include "support/FakePlatform.h"
#include "support/FakePolkit.h"
#include "support/PrivateBus.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

class ServiceSourceTest : public testing::Test {
protected:
    ServiceSourceTest() {
        seats.active = {{"seat0", getuid()}};
        EXPECT_TRUE(polkit.open());
        startService();
    }

    void startService() {
        service = std::make_unique<kelvo::DevicesService>(loop, bus.address(), hardware, seats);
        EXPECT_TRUE(service->open());
    }
    void plug() { service->come({"/dev/input/event5", "Panel", "seat0", ""}); }
    void begin() {
        source->begin({[this](kelvo::FoundDisplay display) {
                           told += "came " + std::to_string(display.id) + " " + display.name + " with " +
                                   hardware.nameOf(display.file.number()) + " " +
                                   hardware.nameOf(display.nodes[3].number()) + "; ";
                           kept.push_back(std::move(display));
                       },
                       [this](std::uint32_t id) { told += "suspended " + std::to_string(id) + "; "; },
                       [this](std::uint32_t id) { told += "went " + std::to_string(id) + "; "; },
                       [this](std::uint32_t id, const std::string& name, const std::string& reason) {
                           told += "refused " + std::to_string(id) + " " + name + "; ";
                           why = reason;
                       },
                       [this](std::size_t count) { told += "looked " + std::to_string(count) + "; "; },
                       [this] { told += "missing; "; }});
    }
    void await(const std::string& expected) {
        loop.runUntil([&] { return told == expected; }, 20.0);
        EXPECT_EQ(told, expected);
        told.clear();
    }

    support::FakePlatform platform;
    PrivateBus bus;
    kelvo::PollRunLoop loop;
    support::FakeHardware hardware;
    support::FakeSeats seats;
    support::FakePolkit polkit{loop, bus.address()};
    std::unique_ptr<kelvo::DevicesService> service;
    std::string told;
    std::string why;
    std::vector<kelvo::FoundDisplay> kept;
    std::unique_ptr<kelvo::ServiceSource> source = std::make_unique<kelvo::ServiceSource>(loop, bus.address());
};

constexpr char kCame[] = "came 1 Panel with /dev/input/event5 3; ";

TEST_F(ServiceSourceTest, ADisplayThatIsThereComesWithItsDevices) {
    plug();
    begin();
    await(std::string("looked 1; ") + kCame);
}

TEST_F(ServiceSourceTest, ADisplayThatIsPluggedInLaterComesThenAndGoesAgain) {
    begin();
    await("looked 0; ");
    plug();
    await(kCame);
    service->go("/dev/input/event5");
    await("went 1; ");
}

TEST_F(ServiceSourceTest, ADisplayThatIsRefusedIsSaidToBeWithTheReason) {
    polkit.isWilling = false;
    plug();
    begin();
    await("looked 1; refused 1 Panel; ");
    EXPECT_NE(why.find("polkit"), std::string::npos) << why;
}

TEST_F(ServiceSourceTest, ADisplayGoesWithTheSessionAndComesBackWithIt) {
    plug();
    begin();
    await(std::string("looked 1; ") + kCame);
    seats.active = {{"seat0", getuid() + 1}};
    service->seatsChanged();
    // It is asked for at once, since the other session might be the same user's.
    await("suspended 1; refused 1 Panel; ");
    seats.active = {{"seat0", getuid()}};
    service->seatsChanged();
    await(kCame);
}

TEST_F(ServiceSourceTest, ADisplayGoesWithTheServiceAndComesBackWithTheNextOne) {
    plug();
    begin();
    await(std::string("looked 1; ") + kCame);
    service.reset();
    await("went 1; ");
    startService();
    plug();
    await(kCame);
}

TEST_F(ServiceSourceTest, ADisplayGoesWithTheBusAndComesBackWithTheNextOne) {
    plug();
    begin();
    await(std::string("looked 1; ") + kCame);
    for (int i = 0; i < 2; ++i) {
        bus.kill();
        await("went 1; ");
        // For longer than until the bus is first looked for.
        loop.runUntil([] { return false; }, 0.4);
        bus.start();
        await(kCame);
    }
    service->go("/dev/input/event5");
    await("went 1; ");
}

TEST_F(ServiceSourceTest, ASourceThatGoesWhileItLooksForTheBusLooksNoMore) {
    plug();
    begin();
    await(std::string("looked 1; ") + kCame);
    bus.kill();
    await("went 1; ");
    source = std::make_unique<kelvo::ServiceSource>(loop, bus.address());
    bus.start();
    EXPECT_TRUE(polkit.open());
    service.reset();
    startService();
    plug();
    begin();
    await(std::string("looked 1; ") + kCame);
}

TEST_F(ServiceSourceTest, WithoutTheServiceTheSourceIsMissing) {
    service.reset();
    begin();
    await("missing; ");
}

TEST(ASourceWithoutABus, IsMissing) {
    support::FakePlatform platform;
    kelvo::PollRunLoop loop;
    kelvo::ServiceSource source(loop, "unix:path=/nowhere");
    int missing = 0;
    source.begin({{}, {}, {}, {}, {}, [&] { ++missing; }});
    loop.runUntil([&] { return missing > 0; }, 20.0);
    EXPECT_EQ(missing, 1);
}

} // namespace
