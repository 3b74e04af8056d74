#include "HardwareInfo/TDHardwareInformationViewCtl.h"
#include "Information/TDVersionViewCtl.h"
#include "KelvoTouchDisplayPref.h"
#include "Properties/TDSettingViewCtl.h"
#include "TDCalibrationViewCtl.h"
#include "TDNames.h"
#include "TDUtilities.h"
#include "linux/BundleDirectory.h"
#include "linux/BusConnection.h"
#include "linux/BusMessagePorts.h"
#include "linux/BusService.h"
#include "linux/PlistCoder.h"
#include "linux/PollRunLoop.h"
#include "linux/PosixFileManager.h"
#include "linux/SystemClock.h"
#include "platform/Application.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "qt/Forms.h"
#include "qt/QtNibs.h"
#include "qt/QtRunLoop.h"
#include "support/EnvironmentVariable.h"
#include "support/FormStandIn.h"
#include "support/PrivateBus.h"
#include "support/TemporaryDirectory.h"

#include <QApplication>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <systemd/sd-bus.h>
#include <unistd.h>

namespace {

using platform::NSMutableArray;
using platform::NSMutableDictionary;

constexpr const char* kDevices[] = {"Desk", "Wall"};
constexpr int kTabs = 4;
/// What the first cycles allocate stays, in caches of the libraries and of the allocator.
constexpr int kWarmUpCycles = 20;
constexpr int kMostSamples = 10;
/// Longer than any timer that a cycle leaves running.
constexpr double kSettlingSeconds = 0.3;
/// By so much the resident memory may be off between two samples, as the allocator keeps or returns pages.
constexpr long kAllowedGrowthKiB = 4096;

struct Options {
    int cycles = 0;
    bool hasForms = false;
    /// Takes the settings file away before each cycle; the rows of the list before are left standing then.
    bool keepsRows = false;
};

/// Writes nowhere, and knows how much it would have been.
class CountedLog final : public platform::SystemLog {
public:
    std::uint64_t lines = 0;
    void write(std::string_view /*line*/) override { ++lines; }
};

class SilentDesktop final : public platform::NSApplication, public platform::NSWorkspace {
public:
    void activateIgnoringOtherApps() override {}
    void beginInformationalAlertSheet(const platform::NSAlertSheet& /*sheet*/, const platform::NSObject& /*delegate*/,
                                      std::function<void(std::int32_t)> /*didEnd*/) override {}
    void endSheetInKeyWindow() override {}
    bool launchApplication(const std::string& /*fullPath*/) override { return false; }
};

/// Knows of another loop how many of its timers and watches live.
class CountedRunLoop final : public platform::CFRunLoop {
public:
    explicit CountedRunLoop(platform::CFRunLoop& loop) : loop_(loop) {}

    [[nodiscard]] long timers() const { return timer_.use_count() - 1; }
    [[nodiscard]] long watches() const { return watch_.use_count() - 1; }

    std::shared_ptr<platform::NSTimer> scheduleTimer(double seconds, std::function<void()> action) override {
        return loop_.scheduleTimer(seconds, [one = timer_, action = std::move(action)] { action(); });
    }
    std::unique_ptr<platform::CFFileDescriptor> watch(int descriptor, std::function<void()> ready) override {
        return loop_.watch(descriptor, [one = watch_, ready = std::move(ready)] { ready(); });
    }
    void runUntil(const std::function<bool()>& done, double seconds) override { loop_.runUntil(done, seconds); }

private:
    platform::CFRunLoop& loop_;
    std::shared_ptr<int> timer_ = std::make_shared<int>();
    std::shared_ptr<int> watch_ = std::make_shared<int>();
};

/// Connects the controls that a cycle uses, as the forms do.
class PlainNibs final : public platform::NSNibs {
public:
    std::unique_ptr<platform::NSNib> instantiate(const std::string& name, platform::NSNibOwner& owner,
                                                 platform::NSView& view) override {
        if (name == "KelvoTouchDisplayPref") {
            for (int i = 0; i < kTabs; ++i) {
                support::outlet<platform::NSTabView>(owner, "tabView_").addTabViewItem("tab");
                support::outlet<platform::NSPopUpButton>(owner, "tabPopUp_").addItemWithTitle(std::to_string(i));
            }
            support::connect(owner, "tabPopUp_", "selectItem:");
            support::connect(owner, "selectDeviceBtn_", "selectDeviceForSetting:");
        } else if (name == "TDSettingViewCtl") {
            support::connect(owner, "rateSlider_", "rateSliderValueChange:");
        } else if (name == "TDGesturesCellView") {
            view.setFrame({.width = 300, .height = 30});
            support::connect(owner, "clickBtn", "changeAction:");
            support::connect(owner, "m_gestures", "changeAction:");
        }
        return std::make_unique<platform::NSNib>();
    }
};

/// Knows the gesture row that was made last.
class RowFinder final : public platform::NSNibs {
public:
    explicit RowFinder(platform::NSNibs& nibs) : nibs_(nibs) {}

    platform::NSNibOwner* lastRow = nullptr;

    std::unique_ptr<platform::NSNib> instantiate(const std::string& name, platform::NSNibOwner& owner,
                                                 platform::NSView& view) override {
        if (name == "TDGesturesCellView") lastRow = &owner;
        return nibs_.instantiate(name, owner, view);
    }

private:
    platform::NSNibs& nibs_;
};

/// The driver and the status-bar utility, as far as the pane can tell.
class Peers {
public:
    Peers(platform::CFRunLoop& loop, const std::string& address) : loop_(loop), ports_(loop, address) {
        driver_ = ports_.createLocal(kTouchDisplayDriverPortName, [this](auto&, auto, auto) { ++received_; });
        if (!driver_) throw std::runtime_error("the driver's port could not be opened");
        source_ = driver_->createRunLoopSource();
        loop_.addSource(*source_);
    }
    Peers(const Peers&) = delete;
    Peers& operator=(const Peers&) = delete;
    ~Peers() { loop_.removeSource(*source_); }

    [[nodiscard]] std::uint64_t received() const { return received_; }

    void showTab(int index) {
        platform::Value payload = NSMutableDictionary::dictionaryWithObjectsAndKeys({{index, keys::selectedMenuItem}});
        const auto data = Helpers::NSDate::dataWithContentsOfDictionary(payload);
        platform::NSData reply;
        const auto status = ports_.createRemote(kPreferencePortName)
                                ->sendRequest(kMessageIDForSelectedMenuItem, *data, 30.0, 30.0, reply);
        if (status != platform::CFMessagePortStatus::Success) throw std::runtime_error("the pane did not answer");
    }

private:
    platform::CFRunLoop& loop_;
    kelvo::BusMessagePorts ports_;
    std::unique_ptr<platform::CFMessagePort> driver_;
    std::unique_ptr<platform::CFRunLoopSource> source_;
    std::uint64_t received_ = 0;
};

/// What must not grow.
struct Sample {
    long residentKiB = 0;
    long descriptors = 0;
    long timers = 0;
    long watches = 0;
    std::uint32_t matchRules = 0;
    std::uint32_t connections = 0;
    std::uint32_t names = 0;
};

long residentKiB() {
    std::ifstream file("/proc/self/statm");
    long size = 0;
    long resident = 0;
    if (!(file >> size >> resident)) throw std::runtime_error("/proc/self/statm cannot be read");
    return resident * (::sysconf(_SC_PAGESIZE) / 1024);
}

long countOfDescriptors() { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); }

/// Asks the bus over a connection of its own.
void addBusStatistics(const std::string& address, Sample& sample) {
    sd_bus* created = nullptr;
    if (sd_bus_new(&created) < 0) throw std::runtime_error("no connection to the bus");
    const kelvo::Bus bus(created);
    sd_bus_message* reply = nullptr;
    const char* const daemon = "org.freedesktop.DBus";
    if (sd_bus_set_address(created, address.c_str()) < 0 || sd_bus_set_bus_client(created, 1) < 0 ||
        sd_bus_start(created) < 0 ||
        sd_bus_call_method(created, daemon, "/org/freedesktop/DBus", "org.freedesktop.DBus.Debug.Stats", "GetStats",
                           nullptr, &reply, "") < 0) {
        throw std::runtime_error("the bus does not tell its statistics");
    }
    const kelvo::BusMessage message(reply);
    int found = 0;
    sd_bus_message_enter_container(reply, 'a', "{sv}");
    while (sd_bus_message_enter_container(reply, 'e', "sv") > 0) {
        const char* key = nullptr;
        std::uint32_t number = 0;
        sd_bus_message_read(reply, "s", &key);
        const std::string name = key;
        std::uint32_t* const wanted = name == "MatchRules"          ? &sample.matchRules
                                      : name == "ActiveConnections" ? &sample.connections
                                      : name == "BusNames"          ? &sample.names
                                                                    : nullptr;
        if (!wanted) {
            sd_bus_message_skip(reply, "v");
        } else if (sd_bus_message_read(reply, "v", "u", &number) > 0) {
            *wanted = number;
            ++found;
        }
        sd_bus_message_exit_container(reply);
    }
    if (found != 3) throw std::runtime_error("the bus tells other statistics than it did");
}

/// Shows, changes, switches the device and leaves, over and over, each cycle an event of the loop of its own.
class LongRun {
public:
    LongRun(const Options& options, CountedRunLoop& loop, platform::NSNibs& nibs, platform::NSBundles& bundles)
        : options_(options),
          loop_(loop),
          nibs_(nibs),
          ports_(loop, bus_.address()),
          platform_{.log = log_,
                    .fileManager = files_,
                    .propertyLists = propertyLists_,
                    .bundles = bundles,
                    .messagePorts = ports_,
                    .runLoop = loop,
                    .clock = clock_,
                    .systemVersion = clock_,
                    .workspace = &desktop_,
                    .application = &desktop_,
                    .nibs = &nibs_},
          peers_(loop, bus_.address()) {
        auto devices = NSMutableArray::arrayWithObjects();
        for (const char* name : kDevices) {
            devices.addObject(name);
            (void)readSettingItemsFromPlist(getSettingsFilePath(name));
        }
        (void)readUtilitiesDictionary();
        saveSettingItemsToPlist(NSMutableDictionary::dictionaryWithObjectsAndKeys({{devices, keys::currentDeviceType}}),
                                getUilitiesFilePath());
        auto setting = std::make_unique<TDSettingViewCtl>();
        setting_ = setting.get();
        pane_ = std::make_unique<KelvoTouchDisplayPref>(KelvoTouchDisplayPref::Tabs{
            .calibration = std::make_unique<TDCalibrationViewCtl>(),
            .hardwareInformation = std::make_unique<TDHardwareInformationViewCtl>(),
            .setting = std::move(setting),
            .version = std::make_unique<TDVersionViewCtl>(),
        });
        (void)pane_->loadMainView();
        (void)setting_->view();
        pane_->mainViewDidLoad();
    }

    /// Calls `ended` after the last cycle.
    void start(std::function<void()> ended) {
        ended_ = std::move(ended);
        begin_ = std::chrono::steady_clock::now();
        std::cout << "cycle resident-KiB descriptors timers watches match-rules connections names\n";
        next();
    }

    /// Whether nothing grew.
    [[nodiscard]] bool report() const {
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin_;
        std::cout << options_.cycles << " cycles in " << time.count() << " s, " << peers_.received()
                  << " messages to the driver, " << log_.lines << " log lines\n";
        const Sample& first = samples_.front();
        const Sample& last = samples_.back();
        const long growth = last.residentKiB - first.residentKiB;
        const int measured = options_.cycles - kWarmUpCycles;
        std::cout << "growth: " << growth << " KiB in " << measured << " cycles, " << growth * 1024 / measured
                  << " bytes a cycle\n";
        const bool isFlat = std::all_of(samples_.begin(), samples_.end(), [&](const Sample& sample) {
            return sample.descriptors == first.descriptors && sample.timers == first.timers &&
                   sample.watches == first.watches && sample.matchRules == first.matchRules &&
                   sample.connections == first.connections && sample.names == first.names;
        });
        // Each change of a cycle is a message, or the cycles do not do what they are there for.
        const bool hasSent = peers_.received() >= 2 * static_cast<std::uint64_t>(options_.cycles);
        if (!hasSent) std::cout << "FAILED: fewer messages than changes\n";
        if (!isFlat) std::cout << "FAILED: something besides memory grew\n";
        const bool isMemoryFlat = options_.keepsRows || growth <= kAllowedGrowthKiB;
        if (!isMemoryFlat) std::cout << "FAILED: memory grew\n";
        return hasSent && isFlat && isMemoryFlat;
    }

    [[nodiscard]] std::exception_ptr failure() const { return failure_; }

private:
    void next() {
        step_ = loop_.scheduleTimer(0.0, [this] {
            try {
                if (!isOver()) return next();
            } catch (...) {
                failure_ = std::current_exception();
            }
            ended_();
        });
    }

    bool isOver() {
        cycle();
        ++done_;
        const int interval = std::max(kWarmUpCycles, (options_.cycles - kWarmUpCycles) / kMostSamples);
        const bool isMeasured = done_ >= kWarmUpCycles && (done_ - kWarmUpCycles) % interval == 0;
        if (isMeasured || done_ == options_.cycles) measure();
        return done_ == options_.cycles;
    }

    void cycle() {
        const std::string device = kDevices[done_ % 2];
        if (options_.keepsRows) std::filesystem::remove(getSettingsFilePath(device));
        pane_->willSelect();
        support::outlet<platform::NSPopUpButton>(*pane_, "selectDeviceBtn_").performSelectItemAtIndex(done_ % 2);
        auto& tab = support::outlet<platform::NSPopUpButton>(*pane_, "tabPopUp_");
        tab.performSelectItemAtIndex(done_ % kTabs);
        if (options_.keepsRows) std::filesystem::remove(getSettingsFilePath(device));
        tab.performSelectItemAtIndex(1);
        setting_->updateUIState();
        support::outlet<platform::NSSlider>(*setting_, "rateSlider_").performSetDoubleValue(0.1 * (1 + done_ % 8));
        support::outlet<platform::NSButton>(*nibs_.lastRow, "clickBtn").performClick();
        peers_.showTab(done_ % kTabs);
        pane_->willUnselect();
    }

    void measure() {
        loop_.runUntil([] { return false; }, kSettlingSeconds);
        Sample sample{.residentKiB = residentKiB(),
                      .descriptors = countOfDescriptors(),
                      .timers = loop_.timers(),
                      .watches = loop_.watches()};
        addBusStatistics(bus_.address(), sample);
        samples_.push_back(sample);
        std::cout << done_ << ' ' << sample.residentKiB << ' ' << sample.descriptors << ' ' << sample.timers << ' '
                  << sample.watches << ' ' << sample.matchRules << ' ' << sample.connections << ' ' << sample.names
                  << std::endl;
    }

    Options options_;
    TemporaryDirectory home_;
    EnvironmentVariable homeVariable_{"HOME", home_.path()};
    PrivateBus bus_;
    CountedRunLoop& loop_;
    RowFinder nibs_;
    CountedLog log_;
    kelvo::PosixFileManager files_;
    kelvo::PlistCoder propertyLists_;
    kelvo::SystemClock clock_;
    SilentDesktop desktop_;
    kelvo::BusMessagePorts ports_;
    platform::Platform platform_;
    platform::PlatformInUse inUse_{platform_};
    Peers peers_;
    TDSettingViewCtl* setting_ = nullptr;
    std::unique_ptr<KelvoTouchDisplayPref> pane_;

    std::shared_ptr<platform::NSTimer> step_;
    std::function<void()> ended_;
    std::exception_ptr failure_;
    std::chrono::steady_clock::time_point begin_;
    int done_ = 0;
    std::vector<Sample> samples_;
};

bool run(const Options& options, platform::CFRunLoop& loop, platform::NSNibs& nibs, kelvo::BundleDirectory& bundle,
         const std::function<void()>& runLoop, const std::function<void()>& stopLoop) {
    CountedRunLoop counted(loop);
    LongRun longRun(options, counted, nibs, bundle);
    longRun.start(stopLoop);
    runLoop();
    if (longRun.failure()) std::rethrow_exception(longRun.failure());
    return longRun.report();
}

Options parse(int argc, char* argv[]) {
    Options options;
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    for (const std::string& argument : arguments) {
        if (argument == "--forms") {
            options.hasForms = true;
        } else if (argument == "--kept-rows") {
            options.keepsRows = true;
        } else {
            std::from_chars(argument.data(), argument.data() + argument.size(), options.cycles);
        }
    }
    return options;
}

} // namespace

/// Leads the whole pane, on the real services and a real bus, through many cycles and measures what must not grow:
/// long-run CYCLES [--forms] [--kept-rows].
int main(int argc, char* argv[]) {
    const Options options = parse(argc, argv);
    if (options.cycles <= kWarmUpCycles) {
        std::cerr << "Usage: long-run CYCLES [--forms] [--kept-rows], with more than " << kWarmUpCycles << " cycles\n";
        return 2;
    }
    try {
        const auto bundle = kelvo::BundleDirectory::open(KELVO_TEST_BUNDLE);
        if (options.hasForms) {
            const QApplication toolkit(argc, argv);
            kelvo::QtRunLoop loop;
            kelvo::QtNibs nibs(bundle->identifier(), kelvo::paneForms());
            return run(
                       options, loop, nibs, *bundle, [] { QApplication::exec(); }, [] { QApplication::quit(); })
                       ? 0
                       : 1;
        }
        kelvo::PollRunLoop loop;
        PlainNibs nibs;
        return run(
                   options, loop, nibs, *bundle, [&] { loop.run(); }, [&] { loop.stop(); })
                   ? 0
                   : 1;
    } catch (const std::exception& error) {
        std::cerr << "long-run: " << error.what() << '\n';
        return 1;
    }
}
