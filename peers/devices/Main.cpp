#include "linux/EvdevDisplay.h"
#include "linux/PollRunLoop.h"
#include "linux/StandardStreams.h"
#include "linux/SystemBus.h"
#include "linux/TerminationSignals.h"
#include "linux/TouchScreenMonitor.h"
#include "peers/PeerPlatform.h"
#include "peers/devices/DevicesService.h"
#include "peers/devices/KernelHardware.h"
#include "peers/devices/LogindSeats.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr char kProgram[] = "kelvo-touch-devices";

constexpr char kUsage[] = R"(Usage: kelvo-touch-devices
       kelvo-touch-devices --seat-of PHYS

System service that opens touch displays and creates their virtual devices for the driver of the user whose session is
active, and takes them back when the session is no longer active. The bus starts it; see kelvo-touch-devices(8).

  --seat-of PHYS    print the seat of one of our virtual devices in the format of a udev rule
  --help, --version show this help, or the version
)";

int run() {
    kelvo::PollRunLoop runLoop;
    const kelvo::PeerPlatform services(kProgram, runLoop);
    kelvo::KernelHardware hardware;
    kelvo::revokeWhatWasStored(hardware);

    std::unique_ptr<kelvo::DevicesService> service;
    const kelvo::LogindSeats seats(runLoop, [&] { service->seatsChanged(); });
    service = std::make_unique<kelvo::DevicesService>(runLoop, kelvo::systemBusAddress(), hardware, seats);
    const auto monitor =
        kelvo::TouchScreenMonitor::open(runLoop, {[&](const kelvo::TouchScreen& screen) { service->come(screen); },
                                                  [&](const std::string& node) { service->go(node); }});
    if (!monitor) throw std::runtime_error("cannot list the devices of the system; check that udev is running");
    // Displays are found first, so that a caller that starts the service by asking for them gets them all.
    monitor->begin();

    const kelvo::TerminationSignals signals(runLoop, [&] { runLoop.stop(); });
    if (!service->open()) {
        throw std::runtime_error(
            "cannot take the name of the service on the system bus: it is already running, or not permitted");
    }
    runLoop.run();
    return 0;
}

/// The part of a phys between our prefix and the number of the display.
int printSeat(std::string_view phys) {
    if (!phys.starts_with(kelvo::kOwnPhys)) throw std::runtime_error("this PHYS does not belong to one of our devices");
    phys.remove_prefix(kelvo::kOwnPhys.size());
    std::cout << "ID_SEAT=" << phys.substr(0, phys.find('/')) << '\n';
    return 0;
}

} // namespace

int main(int argc, char* argv[]) {
    kelvo::keepPlacesOfClosedStreams();
    const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    try {
        if (words.empty()) return run();
        if (words[0] == "--seat-of" && words.size() == 2) return printSeat(words[1]);
        if (words[0] == "--version") {
            std::cout << "kelvo-touch-devices " KELVO_VERSION "\n";
            return 0;
        }
        std::cout << kUsage;
        return words[0] == "--help" || words[0] == "-h" ? 0 : 2;
    } catch (const std::exception& error) {
        std::cerr << "kelvo-touch-devices: " << error.what() << '\n';
        return 1;
    }
}
