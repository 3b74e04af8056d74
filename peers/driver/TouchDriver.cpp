#include "peers/driver/TouchDriver.h"

#include "TDUtilities.h"
#include "linux/EvdevDisplay.h"
#include "linux/VirtualDescriptions.h"
#include "linux/VirtualDevices.h"
#include "peers/JsonLine.h"
#include "peers/driver/DisplayNames.h"
#include "peers/driver/DoubleClickCommand.h"
#include "platform/Log.h"
#include "platform/PropertyList.h"
#include "touch/Glass.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace kelvo {

namespace {

using platform::NSMutableDictionary;

std::string_view nameOf(PanelDisplay::State state) {
    switch (state) {
    case PanelDisplay::State::Off:
        return "off";
    case PanelDisplay::State::Waiting:
        return "waiting until no finger is on it";
    case PanelDisplay::State::HeldByAnother:
        return "held by another program";
    case PanelDisplay::State::Held:
        break;
    }
    return "in use";
}

std::string propertyListOf(const NSMutableDictionary& dictionary) {
    const auto data = platform::PropertyLists::current().createXMLData(dictionary);
    if (!data) throw std::runtime_error("the name of a display cannot be stored in a property list");
    return {data->begin(), data->end()};
}

} // namespace

TouchDriver::TouchDriver(platform::CFRunLoop& loop, std::function<void(std::size_t count)> displaysChanged)
    : loop_(loop), displaysChanged_(std::move(displaysChanged)), caller_(loop), core_(*this, {}, ownCommands()) {}

TouchDriver::~TouchDriver() = default;

bool TouchDriver::start() { return core_.start(); }

void TouchDriver::stop() {
    source_.reset();
    core_.stop();
}

void TouchDriver::use(std::unique_ptr<DisplaySource> source, std::unique_ptr<DisplaySource> next) {
    source_ = std::move(source);
    nextSource_ = std::move(next);
    source_->begin({[this](FoundDisplay found) {
                        // std::function cannot hold the move-only value that is handed over.
                        const auto shared = std::make_shared<FoundDisplay>(std::move(found));
                        later([this, shared] { come(std::move(*shared)); });
                    },
                    [this](std::uint32_t id) { later([this, id] { suspend(id); }); },
                    [this](std::uint32_t id) { later([this, id] { go(id); }); },
                    [this](std::uint32_t id, const std::string& name, const std::string& reason) {
                        platform::NSLog("%@ is not used: %@", name, reason);
                        refused_[id] = {name, reason};
                    },
                    [](std::size_t count) {
                        if (count == 0) platform::NSLog("no touch display found; waiting for one to be plugged in");
                    },
                    [this] { later([this] { changeSource(); }); }});
}

void TouchDriver::later(std::function<void()> event) {
    events_.push_back(std::move(event));
    platform::NSTimer::scheduledTimerWithTimeInterval(0.0, life_, [this] { serveEvents(); });
}

void TouchDriver::serveEvents() {
    if (isServing_) return;
    isServing_ = true;
    while (!events_.empty()) {
        const auto event = std::move(events_.front());
        events_.pop_front();
        try {
            event();
        } catch (const std::runtime_error& error) {
            platform::NSLog("%@", std::string_view(error.what()));
        }
    }
    isServing_ = false;
}

void TouchDriver::changeSource() {
    if (nextSource_) {
        platform::NSLog("kelvo-touch-devices is not installed; the driver opens displays itself");
        use(std::exchange(nextSource_, nullptr));
    } else {
        platform::NSLog("cannot look for displays; check that kelvo-touch-devices and udev are installed");
    }
}

// Displays come and go

void TouchDriver::come(FoundDisplay found) {
    refused_.erase(found.id);
    if (Display* known = displayWith(found.id)) {
        (void)give(*known, std::move(found));
    } else {
        connect(std::move(found));
    }
}

void TouchDriver::connect(FoundDisplay found) {
    lookAtDesktop();
    const std::string kernelName = found.name;
    displays_.push_back(displayOf(found));
    Display& display = displays_.back();
    if (!display.known.name.empty()) found.name = display.known.name;
    display.name = newNameFor(found);
    try {
        if (!give(display, std::move(found))) throw std::runtime_error("it is no longer a touch display");
        core_.connect(display.name, desktopOf(display).nativePixels);
    } catch (const std::runtime_error& error) {
        platform::NSLog("%@ is not used: %@", kernelName, std::string_view(error.what()));
        displays_.pop_back();
    }
    displaysChanged_(displays_.size());
}

/// What is known of a display before its panel is opened.
TouchDriver::Display TouchDriver::displayOf(const FoundDisplay& found) {
    Display display;
    display.id = found.id;
    const Evdev device = evdevOf(found.file.number());
    if (!device) return display;
    const touch::PanelDescription panel = panelDescriptionOf(device.get());
    display.known = knownDevice(panel.vendor, panel.product);
    const touch::Glass glass(panel.x, panel.y, display.known.size);
    if (glass.isSizeKnown()) display.glass = glass.size();
    display.touchpad = touchpadNameOf(panel);
    return display;
}

std::string TouchDriver::newNameFor(const FoundDisplay& found) {
    return rememberedDisplayName(found.name, found.identity,
                                 [this](const std::string& name) { return displayNamed(name) != nullptr; });
}

/// False if the panel is already gone.
bool TouchDriver::give(Display& display, FoundDisplay found) {
    const Evdev device = evdevOf(found.file.number());
    if (!device || !isTouchDisplay(device.get())) return false;
    auto out = std::make_unique<VirtualDevices>(std::move(found.nodes), panelDescriptionOf(device.get()));
    display.panel = PanelDisplay::open(
        [&](touch::Panel::Listener& listener) -> std::unique_ptr<touch::Panel> {
            return EvdevDisplay::open(loop_, std::move(found.file), listener, sizeFromOutside(display));
        },
        std::move(out),
        {[this] { core_.followOtherFiles(); },
         [this, name = display.name](const ContactFrame& frame) { core_.sendFrame(name, frame); },
         [this](touch::Gesture gesture, touch::Direction direction) {
             caller_.call(actions_.actionFor(gesture, direction).call);
         },
         [this, id = display.id] { suspend(id); }});
    if (!display.panel) return false;
    display.devices = std::move(found.devices);
    display.panel->setSettings(display.settings);
    followDesktop(display);
    display.panel->setWatched(display.isWatched);
    display.panel->setEnabled(isDriverEnabled_);
    return true;
}

void TouchDriver::suspend(std::uint32_t id) {
    Display* display = displayWith(id);
    if (!display) return;
    display->panel.reset();
    display->devices.reset();
}

void TouchDriver::go(std::uint32_t id) {
    refused_.erase(id);
    const Display* display = displayWith(id);
    if (!display) return;
    core_.disconnect(std::string(display->name));
    displaysChanged_(displays_.size());
}

// The desktop

void TouchDriver::lookAtDesktop() {
    if (desktop_ || !openDesktop_) return;
    desktop_ = openDesktop_([this] { desktopChanged(); });
    if (!desktop_) platform::NSLog("cannot access the desktop; assuming one monitor that is not rotated");
    openDesktop_ = nullptr;
}

void TouchDriver::desktopChanged() {
    for (Display& display : displays_) {
        followDesktop(display);
        const auto pixels = desktopOf(display).nativePixels;
        if (pixels && core_.isConnected(display.name)) core_.storeNativePixels(display.name, *pixels);
    }
}

/// Takes effect from the next hand on.
void TouchDriver::followDesktop(Display& display) {
    if (!display.panel) return;
    display.panel->setDesktop(desktopOf(display));
    const auto command = commandForSlowDoubleClick(display);
    if (command && !display.hasToldOfSlowDoubleClick) {
        platform::NSLog(
            "%@ is set to a slower double-click than the desktop, whose setting wins; to slow that down: %@",
            display.name, *command);
    }
    display.hasToldOfSlowDoubleClick = command.has_value();
}

const touch::Surroundings& TouchDriver::surroundings() const {
    static const touch::Surroundings kUnseen;
    return desktop_ ? desktop_->surroundings() : kUnseen;
}

const touch::Monitor* TouchDriver::monitorOf(const Display& display) const {
    return touch::monitorOf(surroundings().monitors, display.settings.monitor, display.glass);
}

/// For a panel that does not report its size.
std::optional<touch::Size> TouchDriver::sizeFromOutside(const Display& display) const {
    const touch::Monitor* monitor = monitorOf(display);
    return monitor && monitor->millimetres ? monitor->millimetres : display.known.size;
}

touch::Desktop TouchDriver::desktopOf(const Display& display) const {
    const touch::Surroundings& seen = surroundings();
    touch::Desktop desktop;
    // No desktop has been measured to discard cancelled touches completely, so touches are output only when certain.
    desktop.takesTouchesBack = false;
    desktop.doubleClickInterval = seen.doubleClickInterval.value_or(desktop.doubleClickInterval);
    desktop.doubleClickDistance = seen.doubleClickDistance.value_or(desktop.doubleClickDistance);
    desktop.scrollsNaturally = seen.scrollsNaturally || std::ranges::find(seen.naturalTouchpads, display.touchpad) !=
                                                            seen.naturalTouchpads.end();
    desktop.turnsTouches = seen.turnsTouches;
    desktop.nativePixels = display.known.nativePixels;
    desktop.actions = actions_.table();
    const touch::Monitor* monitor = monitorOf(display);
    if (!monitor) return desktop;
    desktop.turns = monitor->turns;
    desktop.place = monitor->place;
    if (monitor->nativePixels) desktop.nativePixels = monitor->nativePixels;
    return desktop;
}

/// None if the desktop does not provide its double-click interval.
std::optional<std::string> TouchDriver::commandForSlowDoubleClick(const Display& display) const {
    if (!display.panel || !surroundings().doubleClickInterval || !display.panel->isDoubleClickSlowerThanDesktop()) {
        return std::nullopt;
    }
    return commandForDoubleClick(display.settings.doubleClickRate);
}

TouchDriver::Display* TouchDriver::displayWith(std::uint32_t id) {
    const auto found =
        std::find_if(displays_.begin(), displays_.end(), [&](const Display& display) { return display.id == id; });
    return found == displays_.end() ? nullptr : &*found;
}

TouchDriver::Display* TouchDriver::displayNamed(const std::string& name) {
    const auto found =
        std::find_if(displays_.begin(), displays_.end(), [&](const Display& display) { return display.name == name; });
    return found == displays_.end() ? nullptr : &*found;
}

// What the core asks for

void TouchDriver::setSettings(const std::string& name, const touch::Settings& settings) {
    Display* display = displayNamed(name);
    if (!display) return;
    display->settings = settings;
    if (!display->panel) return;
    display->panel->setSettings(settings);
    // It may now belong to another monitor.
    followDesktop(*display);
}

void TouchDriver::setActions(const ActionsInForce& actions) {
    actions_ = actions;
    for (const Display& display : displays_) {
        if (display.panel) display.panel->setDesktop(desktopOf(display));
    }
}

void TouchDriver::forget(const std::string& name) {
    displays_.remove_if([&](const Display& display) { return display.name == name; });
}

void TouchDriver::setDriverEnabled(bool isEnabled) {
    isDriverEnabled_ = isEnabled;
    for (const Display& display : displays_) {
        if (display.panel) display.panel->setEnabled(isEnabled);
    }
}

void TouchDriver::setWatched(const std::string& name, bool isWatched) {
    Display* display = displayNamed(name);
    if (!display) return;
    if (isWatched && !display->panel) {
        throw std::runtime_error("\"" + name + "\" currently belongs to another session; switch back to this one");
    }
    display->isWatched = isWatched;
    if (display->panel) display->panel->setWatched(isWatched);
}

bool TouchDriver::isActive(const std::string& name) const {
    return std::any_of(displays_.begin(), displays_.end(),
                       [&](const Display& display) { return display.name == name && display.panel; });
}

void TouchDriver::beginRecording(const std::string& name, const std::string& path) {
    recordable(name).beginRecording(path, jsonLine(readSettingItemsFromPlist(getSettingsFilePath(name))));
}

void TouchDriver::endRecording(const std::string& name) {
    PanelDisplay& display = recordable(name);
    if (!display.isRecording()) throw std::runtime_error("\"" + name + "\" is not being recorded");
    if (!display.endRecording())
        throw std::runtime_error("the recording was not written completely; check the free disk space");
}

PanelDisplay& TouchDriver::recordable(const std::string& name) {
    Display* display = displayNamed(name);
    if (display && display->panel) return *display->panel;
    throw std::runtime_error("\"" + name + "\" currently belongs to another session; switch back to this one");
}

// Its own commands

std::vector<ControlCommand> TouchDriver::ownCommands() {
    return {{"states", 0, 1,
             [this](const ControlCommand::Words& words) {
                 if (words.empty()) return jsonLine(states());
                 if (words[0] == "plist") return propertyListOf(states());
                 throw std::runtime_error(R"("states" prints JSON, or a property list: "states plist")");
             }},
            // For the calibration tool: the quarter turns that the desktop applies to the output of the display.
            {"screen", 1, 1, [this](const ControlCommand::Words& words) {
                 const Display* display = displayNamed(words[0]);
                 if (!display) throw std::runtime_error("\"" + words[0] + "\" is not connected; see \"status\"");
                 return std::to_string(desktopOf(*display).turns);
             }}};
}

/// What each display is doing, and why a connected display is not used.
NSMutableDictionary TouchDriver::states() const {
    auto used = NSMutableDictionary::dictionary();
    for (const Display& display : displays_) {
        used.setObjectForKey(display.panel ? nameOf(display.panel->state()) : "inactive", display.name);
    }
    auto refused = NSMutableDictionary::dictionary();
    for (const auto& [id, nameAndReason] : refused_) {
        refused.setObjectForKey(nameAndReason.second, nameAndReason.first);
    }
    auto slow = NSMutableDictionary::dictionary();
    for (const Display& display : displays_) {
        if (const auto command = commandForSlowDoubleClick(display)) slow.setObjectForKey(*command, display.name);
    }
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{used, "displays"}, {refused, "refused"}, {slow, "slowDoubleClick"}});
}

} // namespace kelvo
