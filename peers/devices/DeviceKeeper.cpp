#include "peers/devices/DeviceKeeper.h"

#include "platform/Log.h"

#include <algorithm>

namespace kelvo {

std::string storedNameOf(DeviceKeeper::Id id) { return "display-" + std::to_string(id); }

DeviceKeeper::DeviceKeeper(Hardware& hardware, const Seats& seats, Handlers handlers)
    : hardware_(hardware), seats_(seats), handlers_(std::move(handlers)) {}

// Coming and going

void DeviceKeeper::come(const TouchScreen& screen) {
    displays_.push_back({nextId_++, screen, seats_.activeUser(screen.seat), {}, nullptr, std::nullopt});
    handlers_.added(displays_.back().id, screen.name);
}

void DeviceKeeper::go(const std::string& node) {
    const auto gone = std::find_if(displays_.begin(), displays_.end(),
                                   [&](const Display& display) { return display.screen.node == node; });
    if (gone == displays_.end()) return;
    const Id id = gone->id;
    // Its virtual devices are destroyed with it.
    if (gone->holding) takeBack(*gone);
    displays_.erase(gone);
    handlers_.removed(id);
}

std::vector<std::pair<DeviceKeeper::Id, std::string>> DeviceKeeper::displays() const {
    std::vector<std::pair<Id, std::string>> list;
    for (const Display& display : displays_) list.emplace_back(display.id, display.screen.name);
    return list;
}

// Handing out

void DeviceKeeper::check(Id id, uid_t user) const {
    const Display& display = displayWith(id);
    if (seats_.activeUser(display.screen.seat) != user) {
        throw Refusal(Refusal::Reason::NotActive, "only the user whose session is active on " + display.screen.seat +
                                                      " can use this display; log in there, or switch to that session");
    }
    if (display.holding) {
        throw Refusal(Refusal::Reason::Busy,
                      "another program uses this display; quit the driver that is already running");
    }
}

DeviceKeeper::Files DeviceKeeper::open(Id id, const std::string& caller, uid_t user) {
    check(id, user);
    auto& display =
        *std::find_if(displays_.begin(), displays_.end(), [&](const Display& each) { return each.id == id; });
    try {
        hold(display, caller, user);
    } catch (const std::runtime_error& error) {
        throw Refusal(Refusal::Reason::Failed, error.what());
    }
    return {display.holding->file, display.holding->nodes};
}

void DeviceKeeper::hold(Display& display, const std::string& caller, uid_t user) {
    Holding holding{caller, user, hardware_.openDisplay(display.screen.node), {}};
    if (!display.devices) {
        display.panel = hardware_.describe(holding.file);
        display.devices = hardware_.makeDevices(display.panel, placeOf(display));
    }
    holding.nodes = display.devices->openNodes();
    hardware_.store(holding.file, storedNameOf(display.id));
    display.activeUser = user;
    display.holding = std::move(holding);
}

const DeviceKeeper::Display& DeviceKeeper::displayWith(Id id) const {
    const auto found =
        std::find_if(displays_.begin(), displays_.end(), [&](const Display& display) { return display.id == id; });
    if (found == displays_.end()) {
        throw Refusal(Refusal::Reason::NoSuchDisplay, "there is no display " + std::to_string(id));
    }
    return *found;
}

/// Includes the seat, which a udev rule also assigns to the virtual devices.
std::string DeviceKeeper::placeOf(const Display& display) const {
    return display.screen.seat + "/" + std::to_string(display.id);
}

// Taking back

void DeviceKeeper::leave(const std::string& caller) {
    takeBackAll([&](const Holding& holding) { return holding.holder == caller; });
}

void DeviceKeeper::leaveAll() {
    takeBackAll([](const Holding&) { return true; });
}

void DeviceKeeper::seatsChanged() {
    for (Display& display : displays_) {
        const auto active = seats_.activeUser(display.screen.seat);
        if (active == display.activeUser) continue;
        display.activeUser = active;
        if (display.holding && display.holding->user != active) {
            const std::string holder = display.holding->holder;
            takeBack(display);
            makeDevicesAnew(display);
            handlers_.revoked(display.id, holder);
        }
        if (active) handlers_.added(display.id, display.screen.name);
    }
}

void DeviceKeeper::takeBackAll(const std::function<bool(const Holding& holding)>& isMeant) {
    for (Display& display : displays_) {
        if (!display.holding || !isMeant(*display.holding)) continue;
        takeBack(display);
        makeDevicesAnew(display);
        handlers_.added(display.id, display.screen.name);
    }
}

void DeviceKeeper::takeBack(Display& display) {
    const Holding holding = *std::exchange(display.holding, std::nullopt);
    hardware_.revoke(holding.file);
    for (const Descriptor& node : holding.nodes) hardware_.revoke(node);
    hardware_.drop(storedNameOf(display.id));
    // Destroying a device releases everything that is pressed.
    display.devices.reset();
}

/// Immediately, so that the desktop knows the devices by the time somebody gets them.
void DeviceKeeper::makeDevicesAnew(Display& display) {
    try {
        display.devices = hardware_.makeDevices(display.panel, placeOf(display));
    } catch (const std::runtime_error& error) {
        // The request of the next holder creates them, or reports the error.
        platform::NSLog("%@", std::string_view(error.what()));
    }
}

} // namespace kelvo
