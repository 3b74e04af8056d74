// What needs no toolkit: the payload codec, merging a settings file, the lock tests, and messages sent without the
// program. Each benchmark is called ROW:SIDE.

#include "TDCurrentDevice.h"
#include "TDGestureCatalogue.h"
#include "TDMessages.h"
#include "TDNames.h"
#include "TDUtilities.h"
#include "benchmarks/BarePlist.h"
#include "benchmarks/BenchPlatform.h"
#include "linux/PollRunLoop.h"

#include <benchmark/benchmark.h>
#include <systemd/sd-bus.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include <dirent.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using platform::NSMutableDictionary;
using platform::Value;

constexpr char kDeviceName[] = "Kelvo T27";

void check(bool holds, const char* what) {
    if (!holds) throw std::runtime_error(what);
}

std::string asText(const platform::NSData& data) { return {data.begin(), data.end()}; }

/// The payload of the program as the bare side holds it.
std::vector<bare::Gesture> bareGestures() {
    Value payload = payloads::gestureArray();
    return bare::decode(asText(*Helpers::NSDate::dataWithContentsOfDictionary(payload)));
}

void encodeHere(benchmark::State& state) {
    while (state.KeepRunning()) {
        Value payload = payloads::gestureArray();
        benchmark::DoNotOptimize(Helpers::NSDate::dataWithContentsOfDictionary(payload));
    }
}

void encodeBare(benchmark::State& state) {
    const auto gestures = bareGestures();
    while (state.KeepRunning()) benchmark::DoNotOptimize(bare::encode(gestures, kDeviceName));
}

void decodeHere(benchmark::State& state) {
    Value payload = payloads::gestureArray();
    const auto data = *Helpers::NSDate::dataWithContentsOfDictionary(payload);
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(Helpers::NSMutableDictionary::dictionaryWithContentsOfData(data));
    }
}

void decodeBare(benchmark::State& state) {
    Value payload = payloads::gestureArray();
    const std::string text = asText(*Helpers::NSDate::dataWithContentsOfDictionary(payload));
    while (state.KeepRunning()) benchmark::DoNotOptimize(bare::decode(text));
}

/// A settings file with all its keys, alone in its folder.
class SettingsFile {
public:
    explicit SettingsFile(const std::string& name) : path_(getSettingsFilePath(name)) {
        check(bool(readSettingItemsFromPlist(path_)), "the settings file cannot be made");
        check(saveSettingItemsToPlist(payloads::gestureArray(), path_), "the settings file cannot be written");
    }

    [[nodiscard]] const std::string& path() const { return path_; }

private:
    std::string path_;
};

void mergeHere(benchmark::State& state) {
    const SettingsFile file("merged here");
    std::int64_t range = 0;
    while (state.KeepRunning()) {
        const auto items = NSMutableDictionary::dictionaryWithObjectsAndKeys({{++range, keys::doubleClickRange}});
        check(saveSettingItemsToPlist(items, file.path()), "the settings file cannot be written");
    }
}

void mergeBare(benchmark::State& state) {
    const SettingsFile file("merged bare");
    std::uint64_t range = 0;
    while (state.KeepRunning()) bare::merge(file.path(), ++range);
}

/// A home whose preferences folder has so many entries, none of them a lock. It goes with the home it lies in.
std::string crowdedHome(std::int64_t entries) {
    static const std::string home = platform::NSFileManager::defaultManager().homeDirectory();
    std::string crowded = home + "/crowded-" + std::to_string(entries);
    const std::string preferences = crowded + "/Library/Preferences";
    if (std::filesystem::exists(preferences)) return crowded;
    std::filesystem::create_directories(preferences);
    for (std::int64_t i = 0; i < entries; ++i) {
        const std::ofstream entry(preferences + "/org.example.program" + std::to_string(i) + ".plist");
    }
    return crowded;
}

void lockTestHere(benchmark::State& state) {
    const std::string home = crowdedHome(state.range(0));
    const std::string former = platform::NSFileManager::defaultManager().homeDirectory();
    (void)setenv("HOME", home.c_str(), 1);
    while (state.KeepRunning()) benchmark::DoNotOptimize(isDockPreferenceFileLock());
    (void)setenv("HOME", former.c_str(), 1);
}

void lockTestBare(benchmark::State& state) {
    const std::string folder = crowdedHome(state.range(0)) + "/Library/Preferences";
    while (state.KeepRunning()) {
        DIR* directory = opendir(folder.c_str());
        std::size_t locks = 0;
        while (const dirent* entry = readdir(directory)) locks += entry->d_name[0] == '\0' ? 1 : 0;
        (void)closedir(directory);
        benchmark::DoNotOptimize(locks);
    }
}

/// The bytes of one change: the slider's new rate.
platform::NSData changeData() {
    Value payload = payloads::doubleClickRate(0.25);
    return *Helpers::NSDate::dataWithContentsOfDictionary(payload);
}

void changeOverBareBus(benchmark::State& state) {
    const auto data = changeData();
    sd_bus* bus = nullptr;
    check(sd_bus_open_user(&bus) >= 0, "there is no bus");
    while (state.KeepRunning()) {
        sd_bus_message* call = nullptr;
        sd_bus_message* reply = nullptr;
        (void)sd_bus_message_new_method_call(bus, &call, "com.kelvo.BarePeer", "/bare", "com.kelvo.BarePeer", "Send");
        (void)sd_bus_message_append(call, "i", 0);
        (void)sd_bus_message_append_array(call, 'y', data.data(), data.size());
        check(sd_bus_call(bus, call, 0, nullptr, &reply) >= 0, "the bare peer does not answer");
        sd_bus_message_unref(reply);
        sd_bus_message_unref(call);
    }
    sd_bus_flush_close_unref(bus);
}

void readWhole(int socket, std::span<std::uint8_t> buffer) {
    while (!buffer.empty()) {
        const ssize_t count = read(socket, buffer.data(), buffer.size());
        if (count <= 0) _exit(0);
        buffer = buffer.subspan(static_cast<std::size_t>(count));
    }
}

/// Answers each message with one byte, until the other side goes.
[[noreturn]] void answerOver(int socket, std::size_t size) {
    std::vector<std::uint8_t> buffer(size);
    for (;;) {
        readWhole(socket, buffer);
        if (write(socket, buffer.data(), 1) != 1) _exit(0);
    }
}

void changeOverSocketPair(benchmark::State& state) {
    const auto data = changeData();
    std::array<int, 2> sockets{};
    check(socketpair(AF_UNIX, SOCK_STREAM, 0, sockets.data()) == 0, "there is no pair of sockets");
    const pid_t peer = fork();
    if (peer == 0) {
        (void)close(sockets[0]);
        answerOver(sockets[1], data.size());
    }
    (void)close(sockets[1]);
    std::uint8_t answer = 0;
    while (state.KeepRunning()) {
        check(write(sockets[0], data.data(), data.size()) == static_cast<ssize_t>(data.size()), "the peer is gone");
        readWhole(sockets[0], {&answer, 1});
    }
    (void)close(sockets[0]);
    (void)waitpid(peer, nullptr, 0);
}

void registerAll() {
    benchmark::RegisterBenchmark("encode:here", encodeHere);
    benchmark::RegisterBenchmark("encode:bare", encodeBare);
    benchmark::RegisterBenchmark("decode:here", decodeHere);
    benchmark::RegisterBenchmark("decode:bare", decodeBare);
    benchmark::RegisterBenchmark("merge:here", mergeHere)->UseRealTime();
    benchmark::RegisterBenchmark("merge:bare", mergeBare)->UseRealTime();
    for (const std::int64_t entries : {10, 1000, 100000}) {
        benchmark::RegisterBenchmark("locks:here", lockTestHere)->Arg(entries)->UseRealTime();
        benchmark::RegisterBenchmark("locks:bare", lockTestBare)->Arg(entries)->UseRealTime();
    }
    benchmark::RegisterBenchmark("change:sd-bus", changeOverBareBus)->UseRealTime();
    benchmark::RegisterBenchmark("change:socket-pair", changeOverSocketPair)->UseRealTime();
}

void run(const std::string& panePath) {
    kelvo::PollRunLoop runLoop;
    const kelvo::BenchPlatform platform(runLoop, panePath);
    gModelType = kDeviceName;
    gSettings = initGesturesInformationForMountainLion();
    registerAll();
    benchmark::RunSpecifiedBenchmarks();
}

} // namespace

int main(int argc, char* argv[]) {
    benchmark::Initialize(&argc, argv);
    try {
        check(argc == 2, "Usage: kelvo-bench-data PANE [--benchmark_...]");
        run(argv[1]);
    } catch (const std::exception& error) {
        std::cerr << "kelvo-bench-data: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
