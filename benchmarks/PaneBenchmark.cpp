// What the touch settings tab does, without and with its widgets. Each benchmark is called ROW:SIDE.

#include "Properties/TDSettingViewCtl.h"
#include "TDCurrentDevice.h"
#include "TDGestureCatalogue.h"
#include "TDNames.h"
#include "TDUtilities.h"
#include "benchmarks/BenchPlatform.h"
#include "qt/Forms.h"
#include "qt/QtNibs.h"
#include "qt/QtRunLoop.h"

#include <QApplication>
#include <QCheckBox>
#include <QDBusInterface>
#include <QDBusReply>
#include <QSlider>

#include <benchmark/benchmark.h>

#include <iostream>
#include <stdexcept>
#include <variant>

namespace {

using platform::NSMutableArray;
using platform::NSMutableDictionary;

void check(bool holds, const char* what) {
    if (!holds) throw std::runtime_error(what);
}

/// A controller binds to no widget here: what it does by itself.
class NoNibs final : public platform::NSNibs {
public:
    [[nodiscard]] std::unique_ptr<platform::NSNib> instantiate(const std::string& /*name*/, platform::NSNibOwner& owner,
                                                               platform::NSView& view) override {
        view.setFrame({0.0, 0.0, 420.0, 80.0});
        owner.awakeFromNib();
        return nullptr;
    }
};

/// The program's services with a settings file that holds so many gestures, for its device of that name.
class World {
public:
    World(platform::NSNibs& nibs, std::int64_t gestures) : platform_(runLoop_, panePath, &nibs) {
        gModelType = "Display with " + std::to_string(gestures);
        const std::string path = getSettingsFilePath(gModelType);
        check(bool(readSettingItemsFromPlist(path)), "the settings file cannot be made");
        const auto items = NSMutableDictionary::dictionaryWithObjectsAndKeys({{listOf(gestures), keys::gestureArray}});
        check(saveSettingItemsToPlist(items, path), "the settings file cannot be written");
    }

    /// Does what the user changes, and sees to it that the driver's end has answered by the time that it is done.
    template <typename Change>
    void change(const Change& change) const {
        const std::int64_t before = platform_.answered();
        change();
        check(platform_.answered() == before + 1, "a change is not one message that is answered");
    }

    static std::string panePath;

private:
    /// The gestures there are, then more of one that collides with no other.
    static NSMutableArray listOf(std::int64_t gestures) {
        NSMutableArray list = initGesturesInformationForMountainLion();
        while (list.count() < static_cast<std::size_t>(gestures)) {
            list.addObject(newGestureDictionary("Rotate", {"RotateWithTwoFingers"}, false));
        }
        return list;
    }

    kelvo::QtRunLoop runLoop_;
    kelvo::BenchPlatform platform_;
};

std::string World::panePath;

kelvo::QtNibs realNibs() { return {std::string(kPaneBundleIdentifier), kelvo::paneForms()}; }

/// The tab with its widgets in a window.
class Tab {
public:
    explicit Tab(std::int64_t gestures) : nibs_(realNibs()), world_(nibs_, gestures) {
        form().show();
        reload();
    }

    /// Until what is new is on the screen.
    void reload() {
        controller_.updateUIState();
        QApplication::sendPostedEvents();
        form().repaint();
    }

    /// Until it is sent and on the screen.
    void moveSlider() {
        world_.change([this] {
            auto& slider = child<QSlider>("rateSlider_");
            slider.setValue(slider.value() == slider.minimum() ? slider.maximum() : slider.value() - 1);
            QApplication::processEvents();
        });
    }

    /// The check box of a gesture in the middle.
    QCheckBox& someSwitch() {
        const auto switches = form().findChildren<QCheckBox*>("clickBtn");
        return *switches[switches.size() / 2 - 1];
    }

    void click(QCheckBox& gesture) {
        world_.change([&] { gesture.click(); });
    }

private:
    QWidget& form() { return *nibs_.widgetFor(controller_.view()); }

    template <typename Widget>
    Widget& child(const char* name) {
        return *form().findChild<Widget*>(name);
    }

    kelvo::QtNibs nibs_;
    World world_;
    TDSettingViewCtl controller_;
};

/// The slider's action fires as if a form had tied it.
platform::NSSlider& tiedRateSlider(TDSettingViewCtl& controller) {
    for (const platform::NSOutlet& outlet : controller.outlets()) {
        if (outlet.name != "rateSlider_") continue;
        auto& slider = dynamic_cast<platform::NSSlider&>(*std::get<platform::NSView*>(outlet.target));
        slider.setAction([&controller](platform::NSControl& sender) { controller.rateSliderValueChange(sender); });
        return slider;
    }
    throw std::runtime_error("there is no rate slider");
}

void changeHere(benchmark::State& state) {
    NoNibs nibs;
    const World world(nibs, 13);
    TDSettingViewCtl controller;
    (void)controller.view();
    platform::NSSlider& slider = tiedRateSlider(controller);
    double value = 0.0;
    while (state.KeepRunning()) {
        value = value > 0.8 ? 0.0 : value + 0.01;
        world.change([&] { slider.performSetDoubleValue(value); });
    }
}

void changePainted(benchmark::State& state) {
    Tab tab(13);
    while (state.KeepRunning()) tab.moveSlider();
}

void changeByQDBusInterface(benchmark::State& state) {
    NoNibs nibs;
    const World world(nibs, 13);
    platform::Value payload = NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{0.25, keys::doubleClickRate}, {"Kelvo T27", keys::deviceName}});
    const auto data = *Helpers::NSDate::dataWithContentsOfDictionary(payload);
    const QByteArray bytes(reinterpret_cast<const char*>(data.data()), static_cast<qsizetype>(data.size()));
    QDBusInterface peer("com.kelvo.BarePeer", "/bare", "com.kelvo.BarePeer");
    while (state.KeepRunning()) {
        const QDBusReply<QByteArray> reply = peer.call("Send", 0, bytes);
        check(reply.isValid(), "the bare peer does not answer");
    }
}

void readFile(benchmark::State& state) {
    NoNibs nibs;
    const World world(nibs, 13);
    const std::string path = getSettingsFilePath(gModelType);
    while (state.KeepRunning()) benchmark::DoNotOptimize(NSMutableDictionary::dictionaryWithContentsOfFile(path));
}

void updateLogic(benchmark::State& state) {
    NoNibs nibs;
    const World world(nibs, 13);
    TDSettingViewCtl controller;
    (void)controller.view();
    while (state.KeepRunning()) controller.updateUIState();
}

void updateWidgets(benchmark::State& state) {
    Tab tab(13);
    while (state.KeepRunning()) tab.reload();
}

void buildList(benchmark::State& state) {
    Tab tab(state.range(0));
    while (state.KeepRunning()) tab.reload();
}

void changeOneOf(benchmark::State& state) {
    Tab tab(state.range(0));
    QCheckBox& gesture = tab.someSwitch();
    while (state.KeepRunning()) tab.click(gesture);
}

void encodeList(benchmark::State& state) {
    const Tab tab(state.range(0));
    while (state.KeepRunning()) {
        platform::Value payload = NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{gSettings, keys::gestureArray}, {gModelType, keys::deviceName}});
        benchmark::DoNotOptimize(Helpers::NSDate::dataWithContentsOfDictionary(payload));
    }
}

void registerAll() {
    benchmark::RegisterBenchmark("change:here", changeHere)->UseRealTime();
    benchmark::RegisterBenchmark("change:painted", changePainted)->UseRealTime();
    benchmark::RegisterBenchmark("change:QDBusInterface", changeByQDBusInterface)->UseRealTime();
    benchmark::RegisterBenchmark("update:file", readFile)->UseRealTime();
    benchmark::RegisterBenchmark("update:logic", updateLogic)->UseRealTime();
    benchmark::RegisterBenchmark("update:widgets", updateWidgets)->UseRealTime();
    for (const std::int64_t gestures : {13, 100, 1000}) {
        benchmark::RegisterBenchmark("list:build", buildList)->Arg(gestures)->UseRealTime();
        benchmark::RegisterBenchmark("list:change", changeOneOf)->Arg(gestures)->UseRealTime();
        benchmark::RegisterBenchmark("list:encode", encodeList)->Arg(gestures)->UseRealTime();
    }
}

} // namespace

int main(int argc, char* argv[]) {
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    try {
        check(argc == 2, "Usage: kelvo-bench-pane PANE [--benchmark_...]");
        World::panePath = argv[1];
        registerAll();
        benchmark::RunSpecifiedBenchmarks();
    } catch (const std::exception& error) {
        std::cerr << "kelvo-bench-pane: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
