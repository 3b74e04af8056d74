// A settings file of any bytes, or one of the system's preference files, is read by every tab, and the user does
// anything there is to do.

#include "TDNames.h"
#include "fuzz/PaneOnFakes.h"
#include "fuzz/PlistMutator.h"
#include "fuzz/StoredFile.h"

#include <array>
#include <cstddef>

using fuzzing::PaneOnFakes;
using support::arrayOf;
using support::dictionaryOf;

namespace {

const std::string kSettings = fuzzing::kFolder + "Settings_A.plist";
const std::array kPaths = {kSettings, fuzzing::kPreferences + "com.apple.dock.plist",
                           fuzzing::kPreferences + ".GlobalPreferences.plist"};
constexpr std::array<std::int32_t, 4> kVersions = {0x1090, 0x1074, 0x1068, 0x1050};
constexpr int kTabs = 4;
constexpr int kMostActs = 8;
/// A run of four has a log that is read, since the whole file is written to it several times.
constexpr std::uint8_t kLogged = 64;

void showEveryTab(PaneOnFakes& fakes) {
    for (int tab = kTabs - 1; tab >= 0; --tab) {
        fakes.showTab(tab);
        fakes.requireMirrors();
    }
}

void requireKept(const fuzzing::StoredFile& file, const std::string& path) {
    const bool hasGestures = static_cast<bool>(file.contents().objectForKey(keys::gestureArray).array());
    if (path == kSettings && !hasGestures) {
        file.requireKept({keys::gestureArray});
    } else {
        file.requireUntouched();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::Input input({data, size});
    const std::string& path = input.oneOf(kPaths);
    const std::uint8_t choice = input.byte();
    fuzzing::Input script(input.part());

    PaneOnFakes fakes;
    fakes.platform.systemVersion.version = kVersions[choice % kVersions.size()];
    fakes.platform.log.isKept = choice < kLogged;
    fakes.platform.setPlist(fuzzing::kUtilities, dictionaryOf({{1, keys::selectedMenuItem},
                                                               {true, keys::driverEnable},
                                                               {arrayOf({"A"}), keys::currentDeviceType}}));
    const fuzzing::StoredFile file(fakes.platform, path, input.rest());
    fakes.load();
    fakes.pane().willSelect();

    showEveryTab(fakes);
    fakes.platform.ports.peers[kTouchDisplayDriverPortName] = support::MemoryPorts::Peer::Answers;
    for (int acts = 0; acts < kMostActs && !script.isEmpty(); ++acts) {
        fakes.act(script);
        fakes.requireMirrors();
    }
    requireKept(file, path);
    fakes.requireDecodablePayloads();
    fakes.pane().willUnselect();
    return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned seed) {
    fuzzing::Input input({data, size});
    (void)input.byte(); // path
    (void)input.byte(); // version
    (void)input.part(); // script
    return fuzzing::mutatePlist(data, size, maxSize, size - input.rest().size(), seed);
}
