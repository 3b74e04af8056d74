// A utilities file of any bytes leads the pane through its whole life.

#include "TDNames.h"
#include "fuzz/PaneOnFakes.h"
#include "fuzz/StoredFile.h"

#include <cstddef>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::Input input({data, size});
    fuzzing::Input script(input.part());

    fuzzing::PaneOnFakes fakes;
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
    while (!script.isEmpty()) {
        fakes.act(script);
        fakes.requireMirrors();
    }
    fakes.pane().willUnselect();
    fakes.pane().willSelect();
    fakes.useEveryControl(script);
    fakes.pane().willUnselect();

    file.requireKept({keys::selectDeviceName, keys::selectedMenuItem, keys::isShowStatuMenu});
    fakes.requireDecodablePayloads();
    return 0;
}
