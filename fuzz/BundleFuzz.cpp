// A bundle whose Info.plist, or whose strings, are any bytes; and a pane whose texts are those.

#include "TDGestureCatalogue.h"
#include "TDNames.h"
#include "fuzz/PaneOnFakes.h"
#include "fuzz/Require.h"
#include "linux/BundleDirectory.h"
#include "linux/StringsTable.h"
#include "support/TemporaryDirectory.h"

#include <cstddef>
#include <stdexcept>

using fuzzing::require;
using support::arrayOf;
using support::dictionaryOf;

namespace {

constexpr std::string_view kInfo =
    "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>com.kelvo.TouchDisplay.PreferencePane</string>"
    "<key>CFBundleExecutable</key><string>Pane</string><key>NSPrincipalClass</key><string>Pane</string></dict></plist>";
constexpr std::string_view kStrings = "\"Alert.disconnect\" = \"Connect a display.\";";

std::string_view textOf(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

void openBundle(std::string_view info, std::string_view strings) {
    static const TemporaryDirectory folder;
    (void)folder.write("Contents/Info.plist", info);
    (void)folder.write("Contents/Resources/en.lproj/Localizable.strings", strings);
    support::FakePlatform platform;
    try {
        const auto bundle = kelvo::BundleDirectory::open(folder.path());
        require(!bundle->identifier().empty() && !bundle->principalClass().empty(), "an open bundle has its names");
        require(bundle->localizedStringForKey("no such key", "fallback") == "fallback",
                "a text without an entry is the fallback");
        // There is no binary, whatever the file calls it.
        platform::Platform nobody{.log = platform.log,
                                  .fileManager = platform.files,
                                  .propertyLists = platform.propertyLists,
                                  .bundles = platform.bundle,
                                  .messagePorts = platform.ports,
                                  .runLoop = platform.runLoop,
                                  .clock = platform.clock,
                                  .systemVersion = platform.systemVersion};
        (void)bundle->loadPane(nobody);
        require(false, "a bundle without a binary has no pane");
    } catch (const std::runtime_error&) { // what a damaged bundle is
    }
}

/// A pane for one device whose texts come from `table`.
void showTexts(const kelvo::StringsTable& table, fuzzing::Input& script) {
    fuzzing::PaneOnFakes fakes;
    for (const char* key :
         {"PreferenceFolderName", "Alert.disconnect", "Alert.driverDisable", "Alert.Rotate", "Alert.Button.YES",
          "Alert.HotKey.Title", "Rotate", "AppExpos\u00e9", "RotateWithTwoFingers"}) {
        if (const auto text = table.textForKey(key)) fakes.platform.bundle.strings[key] = *text;
    }
    const std::string folder = fuzzing::kPreferences + fakes.platform.bundle.strings["PreferenceFolderName"];
    fakes.platform.setPlist(folder + "/Settings_A.plist",
                            dictionaryOf({{arrayOf({newGestureDictionary("Rotate", {"RotateWithTwoFingers"}, true)}),
                                           keys::gestureArray}}));
    fakes.platform.setPlist(folder + "/Utilities.plist", dictionaryOf({{1, keys::selectedMenuItem},
                                                                       {true, keys::driverEnable},
                                                                       {arrayOf({"A"}), keys::currentDeviceType}}));
    fakes.load();
    fakes.pane().willSelect();
    fakes.useEveryControl(script);
    fakes.requireMirrors();
    fakes.pane().willUnselect();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::Input input({data, size});
    if (input.below(2) == 0) {
        openBundle(textOf(input.rest()), kStrings);
    } else {
        fuzzing::Input script(input.part());
        const auto strings = input.rest();
        openBundle(kInfo, textOf(strings));
        showTexts(kelvo::StringsTable(strings), script);
    }
    return 0;
}
