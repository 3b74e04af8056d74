#include "TDUtilities.h"
#include "linux/BusService.h"
#include "linux/Launcher.h"
#include "linux/PosixFileManager.h"
#include "support/EnvironmentVariable.h"
#include "support/FakePlatform.h"
#include "support/PrivateBus.h"
#include "support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <stdexcept>
#include <thread>

namespace kelvo {

namespace {

constexpr char kPortName[] = "com.kelvo.TouchDisplay.StatusBarMessagePort";

/// Waits, for half a minute at most, until `condition` holds.
template <typename Condition>
bool holdsInTime(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

/// The test's own view of the bus.
class BusView {
public:
    explicit BusView(const std::string& address) {
        sd_bus* created = nullptr;
        if (sd_bus_new(&created) < 0) throw std::runtime_error("no bus");
        bus_.reset(created);
        if (sd_bus_set_address(created, address.c_str()) < 0 || sd_bus_set_bus_client(created, 1) < 0 ||
            sd_bus_start(created) < 0)
            throw std::runtime_error("no bus");
    }

    /// The process that owns the utility's port; 0 when there is none.
    [[nodiscard]] pid_t utility() const {
        sd_bus_message* received = nullptr;
        const int result =
            sd_bus_call_method(bus_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                               "GetConnectionUnixProcessID", nullptr, &received, "s", kPortName);
        const BusMessage reply(received);
        std::uint32_t process = 0;
        return result >= 0 && sd_bus_message_read(received, "u", &process) > 0 ? static_cast<pid_t>(process) : 0;
    }

private:
    Bus bus_;
};

TEST(StatusBarLaunch, PathThatThePaneLaunchesStartsTheUtilityWhichTakesItsPort) {
    const support::FakePlatform platform;
    const PrivateBus bus;
    const TemporaryDirectory home;
    const EnvironmentVariable busAddress("DBUS_SESSION_BUS_ADDRESS", bus.address());
    const EnvironmentVariable library("KELVO_LOCAL_LIBRARY", KELVO_BUILT_LIBRARY);
    const EnvironmentVariable homeFolder("HOME", home.path());
    const EnvironmentVariable screen("QT_QPA_PLATFORM", "offscreen");
    // The toolkit's platform libraries leak at exit.
    const EnvironmentVariable sanitizer("ASAN_OPTIONS", "detect_leaks=0");
    const BusView view(bus.address());
    PosixFileManager files;
    Launcher launcher(files);

    ASSERT_TRUE(launcher.launchApplication(utilitiesAppInStatusBarFullPath()));

    ASSERT_TRUE(holdsInTime([&] { return view.utility() != 0; }));
    const pid_t utility = view.utility();
    ASSERT_EQ(::kill(utility, SIGTERM), 0);
    EXPECT_TRUE(holdsInTime([&] { return view.utility() == 0; }));
    EXPECT_TRUE(holdsInTime([&] { return !std::filesystem::exists("/proc/" + std::to_string(utility)); }));
}

} // namespace

} // namespace kelvo
