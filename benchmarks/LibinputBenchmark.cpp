#include "tests/support/EventNode.h"

#include <benchmark/benchmark.h>
#include <libinput.h>
#include <umockdev.h>

#include <dlfcn.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <memory>

// What libinput takes for a frame of the same fingers on a touchpad, which it understands gestures of. It reads them
// from a node without a kernel, many at a time, so that the system's calls hardly count.

namespace {

constexpr char kPath[] = "/dev/input/event5";
constexpr std::int64_t kFrameInMicroseconds = 8'000;
constexpr std::int64_t kFramesOfAHand = 100;
constexpr std::int64_t kFramesAtOnce = 20;

/// The node that stands for kPath.
support::EventNode* nodeOfPath = nullptr;

support::EventNode::Device touchpad() {
    support::EventNode::Device device = support::EventNode::panel();
    device.properties = {INPUT_PROP_POINTER, INPUT_PROP_BUTTONPAD};
    device.keys = {BTN_LEFT,           BTN_TOUCH,        BTN_TOOL_FINGER,  BTN_TOOL_DOUBLETAP,
                   BTN_TOOL_TRIPLETAP, BTN_TOOL_QUADTAP, BTN_TOOL_QUINTTAP};
    device.axes.erase(ABS_MT_TOOL_TYPE);
    const input_absinfo axis{.value = 0, .minimum = 0, .maximum = 16'000, .fuzz = 0, .flat = 0, .resolution = 20};
    device.axes[ABS_X] = device.axes[ABS_Y] = axis;
    device.axes[ABS_MT_POSITION_X] = device.axes[ABS_MT_POSITION_Y] = axis;
    return device;
}

std::uint16_t toolOf(std::int64_t fingers) {
    switch (fingers) {
    case 1:
        return BTN_TOOL_FINGER;
    case 2:
        return BTN_TOOL_DOUBLETAP;
    default:
        return BTN_TOOL_QUINTTAP;
    }
}

/// All fingers go down together and come back, as in the measurement beside this one.
void sendFrame(support::EventNode& node, std::int64_t number, std::int64_t fingers, std::int64_t time) {
    const std::int64_t inHand = number % kFramesOfAHand;
    const bool isLast = inHand == kFramesOfAHand - 1;
    for (std::int64_t i = 0; i < fingers; ++i) {
        const auto slot = static_cast<std::int32_t>(i);
        const auto id = static_cast<std::int32_t>((number / kFramesOfAHand * fingers + i) % 60'000);
        if (isLast) {
            node.lift(slot);
        } else {
            node.touch(slot, id, 800 + 1'000 * slot, 1'200 + 30 * static_cast<std::int32_t>(inHand));
        }
    }
    if (inHand == 0 || isLast) {
        node.send(EV_KEY, BTN_TOUCH, isLast ? 0 : 1);
        node.send(EV_KEY, toolOf(fingers), isLast ? 0 : 1);
    }
    node.report(time);
}

std::int64_t nowInMicroseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * std::int64_t{1'000'000} + now.tv_nsec / 1'000;
}

void handleAll(libinput& context) {
    libinput_dispatch(&context);
    while (libinput_event* const event = libinput_get_event(&context)) libinput_event_destroy(event);
}

void keepQuiet(libinput* /*context*/, libinput_log_priority /*priority*/, const char* /*format*/,
               std::va_list /*rest*/) {}

void understandFrames(benchmark::State& state) {
    support::EventNode node(touchpad());
    nodeOfPath = &node;
    const libinput_interface access{[](const char*, int, void*) { return nodeOfPath->open(); },
                                    [](int descriptor, void*) { nodeOfPath->forget(descriptor); }};
    const std::unique_ptr<libinput, decltype(&libinput_unref)> context(libinput_path_create_context(&access, nullptr),
                                                                       libinput_unref);
    libinput_log_set_handler(context.get(), keepQuiet);
    if (!libinput_path_add_device(context.get(), kPath)) {
        state.SkipWithError("libinput does not take the touchpad");
        return;
    }
    handleAll(*context);
    // None in the future, where libinput expects no event.
    const std::int64_t length = static_cast<std::int64_t>(state.max_iterations) * kFrameInMicroseconds;
    std::int64_t time = std::max<std::int64_t>(0, nowInMicroseconds() - length);
    std::int64_t number = 0;
    while (state.KeepRunningBatch(kFramesAtOnce)) {
        state.PauseTiming();
        for (std::int64_t i = 0; i < kFramesAtOnce; ++i) {
            sendFrame(node, number++, state.range(0), time += kFrameInMicroseconds);
        }
        state.ResumeTiming();
        handleAll(*context);
    }
}

BENCHMARK(understandFrames)->Name("libinput:frame")->Arg(1)->Arg(2)->Arg(5)->Arg(10);

} // namespace

extern "C" {

// libinput asks whether the descriptor is the node that udev knows, and whether udev has looked at it.

int fstat64(int descriptor, struct stat64* status) noexcept {
    if (nodeOfPath && nodeOfPath->has(descriptor)) return stat64(kPath, status);
    static const auto next = reinterpret_cast<int (*)(int, struct stat64*)>(dlsym(RTLD_NEXT, "fstat64"));
    return next(descriptor, status);
}

int udev_device_get_is_initialized(udev_device* /*device*/) { return 1; }
}

int main(int argc, char* argv[]) {
    UMockdevTestbed* const testbed = umockdev_testbed_new();
    umockdev_testbed_add_from_string(testbed,
                                     "P: /devices/pad/event5\nN: input/event5\nE: DEVNAME=/dev/input/event5\n"
                                     "E: SUBSYSTEM=input\nE: MAJOR=13\nE: MINOR=69\nE: ID_INPUT=1\n"
                                     "E: ID_INPUT_TOUCHPAD=1\nA: dev=13:69\n",
                                     nullptr);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    g_object_unref(testbed);
    return 0;
}
