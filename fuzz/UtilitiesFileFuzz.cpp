// A utilities file of any bytes leads the pane through its whole life.

#include "TDNames.h"
#include "fuzz/PaneOnFakes.h"
#include "fuzz/PlistMutator.h"
#include "fuzz/StoredFile.h"

#include <cstddef>

namespace {

constexpr int kMostActs = 16;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::Input input({data, size});
    fuzzing::Input script(input.part());

    fuzzing::PaneOnFakes fakes;
    fakes.platform.log.isKept = false;
    fakes.storeSettings();
    const fuzzing::StoredFile file(fakes.platform, fuzzing::kUtilities, input.rest());
    fakes.load();
    fakes.pane().willSelect();
    fakes.requireMirrors();
    for (const std::int32_t id :
         {COMMAND_DRIVER_DISABLE, kMessageIDForDeviceIsConnected, kMessageIDForSelectedMenuItem}) {
        for (const bool isOn : {false, true}) {
            fakes.platform.ports.deliver(
                kPreferencePortName, id,
                support::dictionaryOf(
                    {{isOn, keys::driverEnable}, {isOn, keys::isConnected}, {isOn, keys::selectedMenuItem}}));
        }
        fakes.requireMirrors();
    }
    for (int acts = 0; acts < kMostActs && !script.isEmpty(); ++acts) {
        fakes.act(script);
        fakes.requireMirrors();
    }
    fakes.pane().willUnselect();
    fakes.pane().willSelect();
    fakes.pane().willUnselect();

    file.requireKept({keys::selectDeviceName, keys::selectedMenuItem, keys::isShowStatuMenu});
    fakes.requireDecodablePayloads();
    return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned seed) {
    fuzzing::Input input({data, size});
    (void)input.part(); // script
    return fuzzing::mutatePlist(data, size, maxSize, size - input.rest().size(), seed);
}
