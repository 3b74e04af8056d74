// Any id with any bytes reaches the pane in any of its display states.

#include "TDNames.h"
#include "fuzz/PaneOnFakes.h"
#include "fuzz/PlistMutator.h"
#include "fuzz/Require.h"

#include <cstddef>

using fuzzing::PaneOnFakes;
using fuzzing::require;
using support::arrayOf;
using support::dictionaryOf;

namespace {

enum class Display : std::uint8_t { Disconnected, DriverDisabled, OneDevice, SeveralDevices, ChosenOfSeveral };
constexpr std::uint8_t kDisplays = 5;

platform::NSMutableArray devicesIn(Display display) {
    if (display == Display::Disconnected) return arrayOf({});
    if (display == Display::OneDevice || display == Display::DriverDisabled) return arrayOf({"A"});
    return arrayOf({"A", "B"});
}

void show(PaneOnFakes& fakes, Display display, std::int32_t tab) {
    fakes.platform.setPlist(fuzzing::kUtilities, dictionaryOf({{tab, keys::selectedMenuItem},
                                                               {display != Display::DriverDisabled, keys::driverEnable},
                                                               {devicesIn(display), keys::currentDeviceType},
                                                               {true, keys::verboseLog}}));
    fakes.platform.log.isKept = false;
    fakes.storeSettings();
    fakes.load();
    fakes.pane().willSelect();
    if (display == Display::ChosenOfSeveral) {
        fakes.pickDevice(1);
    }
}

/// How the shell stands after a message came, and once more after all that it began has ended.
fuzzing::Shell shellAfter(Display display, std::int32_t tab, std::int32_t id, std::span<const std::uint8_t> payload) {
    PaneOnFakes fakes;
    show(fakes, display, tab);
    const fuzzing::Shell before = fakes.shell();
    fakes.deliver(id, payload);
    fakes.platform.runLoop.advance(1.0);
    const fuzzing::Shell after = fakes.shell();

    const bool isKnown =
        id == COMMAND_DRIVER_DISABLE || id == kMessageIDForDeviceIsConnected || id == kMessageIDForSelectedMenuItem;
    require(isKnown || before == after, "an unknown message changes nothing that is shown");
    fakes.requireMirrors();
    fakes.deliver(id, payload);
    fakes.pane().willUnselect();
    require(!fakes.shell().isListening, "a pane that was left does not listen");
    return after;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::Input input({data, size});
    const auto display = static_cast<Display>(input.below(kDisplays));
    const std::int32_t tab = input.byte();
    const std::int32_t id = input.int32();
    const auto payload = input.rest();

    const fuzzing::Shell shell = shellAfter(display, tab, id, payload);
    const bool isDecodable = static_cast<bool>(kelvo::PlistCoder().createFromXMLData(payload).dictionary());
    if (!isDecodable) require(shell == shellAfter(display, tab, id, {}), "what cannot be decoded reads as empty");
    return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned seed) {
    constexpr std::size_t kBeforePayload = 6;
    return fuzzing::mutatePlist(data, size, maxSize, kBeforePayload, seed);
}
