// What host, peers and user do, in any order; after each step the pane stands as a second account of it says.

#include "TDGestureCatalogue.h"
#include "TDNames.h"
#include "fuzz/ExpectedPane.h"
#include "fuzz/PaneOnFakes.h"
#include "fuzz/Require.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iostream>
#include <string_view>

namespace fuzzing {

namespace {

using support::dictionaryOf;

const std::array<std::vector<std::string>, 7> kDeviceLists = {
    {{}, {"A"}, {"B"}, {"A", "B"}, {"B", "C", "A"}, {""}, {"", "A"}}};
constexpr std::array<std::int64_t, 10> kTabNumbers = {0, 1, 2, 3, 4, 7, 258, -1, 255, (std::int64_t{1} << 32) + 2};
constexpr std::array<double, 4> kDelays = {0.05, 0.1, 0.5, 2.0};
constexpr std::array<std::int32_t, 4> kVersions = {0x1090, 0x1074, 0x1068, 0x1050};
constexpr std::string_view kDamage = "<plist><dict>";
constexpr std::size_t kMostSteps = 200;

/// The lines that the shell writes; the tabs have their own.
bool isShellLine(std::string_view line) {
    constexpr std::array<std::string_view, 7> lines = {"mainViewDidLoad",
                                                       "willSelect",
                                                       "return",
                                                       "gModelType == nil",
                                                       "selectItem.....",
                                                       "save OK",
                                                       " device  COMMAND_DRIVER_DISABLE "};
    return std::find(lines.begin(), lines.end(), line) != lines.end() ||
           line.starts_with("kMessageIDForDeviceIsConnected");
}

template <typename T>
void setIfThere(platform::NSMutableDictionary& dictionary, const std::optional<T>& value, std::string_view key) {
    if (value) dictionary.setObjectForKey(platform::Value(*value), key);
}

/// The pane and the account of it, led through the same steps.
class Walk {
public:
    explicit Walk(Input& input) : input_(input) {
        fakes_.platform.systemVersion.version = input_.oneOf(kVersions);
        fakes_.platform.ports.peers[kStatusBarPortName] = support::MemoryPorts::Peer::Answers;
        fakes_.storeSettings();
        changeFile();
        fakes_.load();
        expected_.mainViewDidLoad();
        requireAsExpected("mainViewDidLoad");
    }

    void step() {
        switch (input_.below(12)) {
        case 0:
            fakes_.pane().willSelect();
            expected_.willSelect();
            return requireAsExpected("willSelect");
        case 1:
            fakes_.pane().willUnselect();
            expected_.willUnselect();
            return requireAsExpected("willUnselect");
        case 2:
        case 3:
            deliver(nextMessage());
            return requireAsExpected("a message");
        case 4:
            fakes_.platform.runLoop.scheduleTimer(input_.oneOf(kDelays),
                                                  [this, message = nextMessage()] { deliver(message); });
            return;
        case 5:
            fakes_.platform.runLoop.advance(input_.oneOf(kDelays));
            return requireAsExpected("time that passes");
        case 6:
            changeFile();
            return;
        case 7:
            changeSettings();
            return;
        case 8:
            pickDevice();
            return requireAsExpected("the choice of a device");
        case 9:
            pickTab();
            return requireAsExpected("the choice of a tab");
        case 10:
            clickStatusBox();
            return requireAsExpected("the status box");
        default:
            if (!expected_.shell.isTabViewHidden) fakes_.actOnTabs(input_);
            return requireAsExpected("an act on a tab");
        }
    }

private:
    struct Message {
        std::int32_t id = 0;
        Payload payload{};
    };

    std::optional<bool> nextBoolean() {
        const std::size_t choice = input_.below(3);
        return choice == 2 ? std::nullopt : std::optional(choice == 1);
    }

    Message nextMessage() {
        constexpr std::array<std::int32_t, 4> ids = {COMMAND_DRIVER_DISABLE, kMessageIDForDeviceIsConnected,
                                                     kMessageIDForSelectedMenuItem, 9};
        Message message{.id = input_.oneOf(ids)};
        message.payload.driverEnable = message.payload.isConnected = nextBoolean();
        message.payload.selectedMenuItem = input_.oneOf(kTabNumbers);
        return message;
    }

    void deliver(const Message& message) {
        auto payload = platform::NSMutableDictionary::dictionary();
        setIfThere(payload, message.payload.driverEnable, keys::driverEnable);
        setIfThere(payload, message.payload.isConnected, keys::isConnected);
        setIfThere(payload, message.payload.selectedMenuItem, keys::selectedMenuItem);
        fakes_.platform.ports.deliver(kPreferencePortName, message.id, payload);
        if (!expected_.shell.isListening) return;
        switch (message.id) {
        case COMMAND_DRIVER_DISABLE:
            return expected_.driverMessage(message.payload);
        case kMessageIDForDeviceIsConnected:
            return expected_.connectionMessage(message.payload);
        case kMessageIDForSelectedMenuItem:
            return expected_.tabMessage(message.payload);
        default:
            return expected_.otherMessage();
        }
    }

    /// Another process writes the utilities file, or damages or removes it; or the disk fills up or is emptied.
    void changeFile() {
        UtilitiesFile& file = expected_.file;
        const std::size_t change = input_.below(10);
        // A single key is changed in a file that can be read.
        if (change > 2 && (!file.exists || file.isDamaged)) file = {.exists = true};
        switch (change) {
        case 0:
            file = {};
            break;
        case 1:
            file = {.exists = true, .isDamaged = true};
            break;
        case 2:
            expected_.isDiskFull = !expected_.isDiskFull;
            break;
        case 3:
            file.driverEnable = nextBoolean();
            break;
        case 4:
            file.verboseLog = nextBoolean();
            break;
        case 5:
            file.isShowStatuMenu = nextBoolean();
            break;
        case 6:
            file.selectedMenuItem = input_.oneOf(kTabNumbers);
            break;
        case 7:
            file.selectDeviceName = input_.below(2) == 0 ? "A" : "gone";
            break;
        case 8:
            file.devices.reset();
            break;
        default:
            // The whole file, as a driver leaves it.
            file = {.exists = true,
                    .devices = input_.oneOf(kDeviceLists),
                    .driverEnable = input_.below(4) != 0,
                    .verboseLog = input_.below(2) == 0,
                    .isShowStatuMenu = true,
                    .selectedMenuItem = input_.oneOf(kTabNumbers)};
            break;
        }
        fakes_.platform.files.isDiskFull = expected_.isDiskFull;
        storeFile();
    }

    void storeFile() {
        const UtilitiesFile& file = expected_.file;
        auto& files = fakes_.platform.files;
        if (file.isDamaged) {
            files.setText(kUtilities, kDamage);
        } else if (file.exists) {
            auto stored = platform::NSMutableDictionary::dictionary();
            if (file.devices) {
                auto devices = support::arrayOf({});
                for (const std::string& name : *file.devices) devices.addObject(name);
                stored.setObjectForKey(devices, keys::currentDeviceType);
            }
            setIfThere(stored, file.driverEnable, keys::driverEnable);
            setIfThere(stored, file.verboseLog, keys::verboseLog);
            setIfThere(stored, file.isShowStatuMenu, keys::isShowStatuMenu);
            setIfThere(stored, file.selectedMenuItem, keys::selectedMenuItem);
            setIfThere(stored, file.selectDeviceName, keys::selectDeviceName);
            fakes_.platform.setPlist(kUtilities, stored);
        } else {
            files.files.erase(kUtilities);
        }
    }

    /// The utilities file as the pane left it.
    UtilitiesFile storedFile() {
        if (expected_.file.isDamaged && fakes_.platform.files.textOf(kUtilities) == kDamage) return expected_.file;
        UtilitiesFile file{.exists = fakes_.platform.files.files.contains(kUtilities)};
        const platform::NSMutableDictionary stored = fakes_.platform.plist(kUtilities);
        if (const platform::NSMutableArray devices = stored.objectForKey(keys::currentDeviceType).array()) {
            file.devices.emplace();
            for (std::size_t i = 0; i < devices.count(); ++i) {
                file.devices->push_back(devices.objectAtIndex(i).string().value_or("no name"));
            }
        }
        const auto boolean = [&](std::string_view key) {
            const platform::Value value = stored.objectForKey(key);
            return value ? std::optional(value.boolValue()) : std::nullopt;
        };
        file.driverEnable = boolean(keys::driverEnable);
        file.verboseLog = boolean(keys::verboseLog);
        file.isShowStatuMenu = boolean(keys::isShowStatuMenu);
        if (const platform::Value item = stored.objectForKey(keys::selectedMenuItem)) {
            file.selectedMenuItem = item.longLongValue();
        }
        file.selectDeviceName = stored.objectForKey(keys::selectDeviceName).string();
        return file;
    }

    /// Another process writes the settings of a device, or damages or removes them.
    void changeSettings() {
        const std::string path = kFolder + (input_.below(2) == 0 ? "Settings_A.plist" : "Settings_B.plist");
        switch (input_.below(4)) {
        case 0:
            fakes_.platform.files.files.erase(path);
            break;
        case 1:
            fakes_.platform.files.setText(path, kDamage);
            break;
        case 2:
            fakes_.platform.setPlist(path, dictionaryOf({{"0.8", keys::driverVersion}}));
            break;
        default:
            fakes_.platform.setPlist(
                path, dictionaryOf({{gestureCatalogueForVersion(input_.oneOf(kVersions)), keys::gestureArray}}));
            break;
        }
    }

    void pickDevice() {
        const std::size_t count = expected_.shell.chooserTitles.size();
        if (expected_.shell.isChooserHidden || count == 0) return;
        const int index = static_cast<int>(input_.below(count));
        fakes_.pickDevice(index);
        expected_.pickDevice(index);
    }

    void pickTab() {
        if (expected_.shell.isTabViewHidden) return;
        const int index = static_cast<int>(input_.below(4));
        if (input_.below(2) == 0) {
            fakes_.showTab(index);
            expected_.pickTabItem(index);
        } else {
            fakes_.selectTab(index);
            expected_.pickTab(index);
        }
    }

    void clickStatusBox() {
        if (expected_.shell.isStatusBarStateHidden) return;
        // While the utility takes its time to answer, messages come in that change both.
        expected_.clickStatusBox();
        fakes_.clickStatusBox();
        expected_.storeStatusBox();
    }

    void requireAsExpected(std::string_view step) {
        const Shell shell = fakes_.shell();
        if (!(shell == expected_.shell)) {
            std::cerr << "after " << step << "\nexpected: " << expected_.shell.description()
                      << "\nfound:    " << shell.description() << '\n';
        }
        require(shell == expected_.shell, "the shell stands as the transitions lead to");
        require(storedFile() == expected_.file, "the utilities file holds what the pane is to store");
        requireLog();
        requireRequests();
        fakes_.requireMirrors();
        fakes_.requireDecodablePayloads();
    }

    void requireLog() {
        auto& lines = fakes_.platform.log.lines;
        std::erase_if(lines, [](const std::string& line) { return !isShellLine(line); });
        require(lines == expected_.log, "the shell logs what it is to log");
        lines.clear();
        expected_.log.clear();
    }

    void requireRequests() {
        const auto& requests = fakes_.platform.application.requests;
        const auto& lookUps = fakes_.platform.ports.lookUps;
        const auto count = [&](std::string_view request) {
            return static_cast<std::size_t>(std::count_if(
                requests.begin(), requests.end(), [&](const std::string& made) { return made.starts_with(request); }));
        };
        require(count("activate") == expected_.activations.size(), "the application is activated when it is to be");
        require(count("endSheet") == expected_.endedSheets(), "each activation ends a sheet a moment later");
        require(count("launch") == expected_.launches, "the utility is launched when its box is switched on");
        const auto told = std::count(lookUps.begin(), lookUps.end(), kStatusBarPortName);
        require(static_cast<std::size_t>(told) == expected_.statusMessages,
                "the utility is told when it is switched off");
    }

    Input& input_;
    PaneOnFakes fakes_;
    ExpectedPane expected_{fakes_.shell(), [this] { return fakes_.platform.runLoop.now(); }};
};

} // namespace

} // namespace fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::Input input({data, size});
    fuzzing::Walk walk(input);
    for (std::size_t step = 0; step < fuzzing::kMostSteps && !input.isEmpty(); ++step) walk.step();
    return 0;
}
