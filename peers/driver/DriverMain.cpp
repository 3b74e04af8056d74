#include "linux/Desktop.h"
#include "linux/PollRunLoop.h"
#include "linux/StandardStreams.h"
#include "linux/SystemBus.h"
#include "linux/TerminationSignals.h"
#include "peers/PeerPlatform.h"
#include "peers/devices/KernelHardware.h"
#include "peers/driver/DirectSource.h"
#include "peers/driver/ServiceSource.h"
#include "peers/driver/TouchDriver.h"
#include "peers/driver/Watchdog.h"

#include <systemd/sd-daemon.h>

#include <algorithm>
#include <exception>
#include <functional>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr char kProgram[] = "kelvo-touch-driver";

constexpr char kUsage[] = R"(Usage: kelvo-touch-driver

The driver of touch displays. Translates touches on all plugged-in displays into input for the desktop, following the
settings of each display. Runs in the foreground in the session of the user. Press Ctrl+C or send SIGTERM to stop it; the
displays then work as plain touchscreens again.

  --help, --version show this help, or the version
)";

int run() {
    kelvo::PollRunLoop runLoop;
    const kelvo::PeerPlatform services(kProgram, runLoop);
    kelvo::KernelHardware hardware;
    kelvo::Watchdog watchdog(runLoop);

    kelvo::TouchDriver driver(runLoop, [&](std::size_t count) { watchdog.setNeeded(count > 0); });
    const kelvo::TerminationSignals signals(runLoop, [&] { runLoop.stop(); });
    if (!driver.start()) {
        throw std::runtime_error(
            "cannot take the driver's name on the session bus: either another driver is running (quit "
            "it), or there is no bus (set DBUS_SESSION_BUS_ADDRESS)");
    }
    driver.seeDesktopBy([&](std::function<void()> changed) { return kelvo::openDesktop(runLoop, std::move(changed)); });
    driver.use(std::make_unique<kelvo::ServiceSource>(runLoop, kelvo::systemBusAddress()),
               std::make_unique<kelvo::DirectSource>(runLoop, hardware));
    (void)sd_notify(0, "READY=1\nWATCHDOG_USEC=0");
    runLoop.run();
    (void)sd_notify(0, "STOPPING=1");
    driver.stop();
    return 0;
}

} // namespace

int main(int argc, char* argv[]) {
    kelvo::keepPlacesOfClosedStreams();
    const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    try {
        if (words.empty()) return run();
        if (words[0] == "--version") {
            std::cout << "kelvo-touch-driver " KELVO_VERSION "\n";
            return 0;
        }
        if (words[0] == "--help" || words[0] == "-h") {
            std::cout << kUsage;
            return 0;
        }
        throw std::runtime_error("unknown argument \"" + words[0] + "\"; see --help");
    } catch (const std::exception& error) {
        std::cerr << "kelvo-touch-driver: " << error.what() << '\n';
        return 1;
    }
}
