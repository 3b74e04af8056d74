#include "peers/touchctl/MessageWatch.h"

#include "TDUtilities.h"
#include "linux/BusMessagePorts.h"
#include "linux/BusService.h"
#include "peers/DriverCommand.h"
#include "peers/JsonLine.h"
#include "peers/MessageNames.h"
#include "platform/PropertyList.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string_view>
#include <utility>

namespace kelvo::touchctl {

namespace {

using platform::NSMutableDictionary;

constexpr char kBusName[] = "org.freedesktop.DBus";
constexpr std::uint64_t kTimeoutMicroseconds = 5'000'000;

// What to show: the messages, and their receivers as they come and go.
constexpr char kMessageRule[] = "type='method_call',interface='com.kelvo.TouchDisplay.MessagePort'";
constexpr char kOwnerRule[] =
    "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0namespace='com.kelvo.TouchDisplay'";

Bus startedMonitor(const std::string& address) {
    sd_bus* created = nullptr;
    if (sd_bus_new(&created) < 0) return nullptr;
    Bus bus(created);
    const bool started = sd_bus_set_address(created, address.c_str()) >= 0 && sd_bus_set_bus_client(created, 1) >= 0 &&
                         sd_bus_set_monitor(created, 1) >= 0 && sd_bus_start(created) >= 0;
    return started ? std::move(bus) : nullptr;
}

bool becomesMonitor(sd_bus* bus) {
    sd_bus_message* created = nullptr;
    if (sd_bus_message_new_method_call(bus, &created, kBusName, "/org/freedesktop/DBus",
                                       "org.freedesktop.DBus.Monitoring", "BecomeMonitor") < 0)
        return false;
    const BusMessage call(created);
    if (sd_bus_message_append(created, "asu", 2, kMessageRule, kOwnerRule, 0) < 0) return false;
    sd_bus_error error{};
    const int status = sd_bus_call(bus, created, kTimeoutMicroseconds, &error, nullptr);
    sd_bus_error_free(&error);
    return status >= 0;
}

/// The connection that owns a name; empty if none does.
std::string ownerOf(sd_bus* bus, const char* name) {
    sd_bus_message* received = nullptr;
    const int status = sd_bus_call_method(bus, kBusName, "/org/freedesktop/DBus", kBusName, "GetNameOwner", nullptr,
                                          &received, "s", name);
    const BusMessage reply(received);
    const char* owner = nullptr;
    return status >= 0 && sd_bus_message_read(received, "s", &owner) > 0 ? owner : "";
}

/// A bus name without the common prefix of all ports.
std::string portOf(std::string_view busName) {
    const std::string_view prefix = kBusNamePrefix;
    if (busName.starts_with(prefix)) busName.remove_prefix(prefix.size());
    return std::string(busName);
}

/// The control channel of the driver has a name like a port.
bool isNameOfPort(std::string_view busName) { return busName.starts_with(kBusNamePrefix) && busName != kDriverName; }

std::string lineOfState(const std::string& port, const char* state) {
    return jsonLine(NSMutableDictionary::dictionaryWithObjectsAndKeys({{port, "port"}, {state, "state"}}));
}

std::string lineOfMessage(sd_bus_message* message, const std::string& port) {
    auto line = NSMutableDictionary::dictionaryWithObjectsAndKeys({{port, "port"}});
    std::int32_t id = 0;
    const void* bytes = nullptr;
    std::size_t size = 0;
    if (sd_bus_message_has_signature(message, kSendSignature) <= 0 || sd_bus_message_read(message, "i", &id) < 0 ||
        sd_bus_message_read_array(message, 'y', &bytes, &size) < 0) {
        line.setObjectForKey("is to carry (i id, ay data)", "malformed");
        return jsonLine(line);
    }
    line.setObjectForKey(id, "id");
    if (const std::string_view name = nameOfMessage(port, id); !name.empty()) line.setObjectForKey(name, "name");
    const auto payload = Helpers::NSMutableDictionary::dictionaryWithContentsOfData(
        std::span(static_cast<const std::uint8_t*>(bytes), size));
    if (payload) {
        line.setObjectForKey(payload, "payload");
    } else {
        line.setObjectForKey(size, "undecodable bytes");
    }
    return jsonLine(line);
}

} // namespace

std::unique_ptr<MessageWatch> MessageWatch::open(platform::CFRunLoop& loop,
                                                 std::function<void(const std::string& line)> tell,
                                                 std::function<void()> lost) {
    // Only the library knows all possible locations of the session bus.
    sd_bus* opened = nullptr;
    const char* address = nullptr;
    if (sd_bus_open_user(&opened) < 0) return nullptr;
    const Bus ordinary(opened);
    if (sd_bus_get_address(opened, &address) < 0) return nullptr;
    Bus bus = startedMonitor(address);
    if (!bus || !becomesMonitor(bus.get())) return nullptr;
    auto watch = std::make_unique<MessageWatch>(std::move(bus), std::move(tell), std::move(lost));
    // A monitor cannot ask anything. From here on, changes are seen.
    watch->learnOwners(opened);
    const int descriptor = sd_bus_get_fd(watch->bus_.get());
    // Messages that arrived with the answer do not make the descriptor readable.
    watch->firstRead_ = loop.scheduleTimer(0.0, [self = watch.get()] {
        self->tellOpenPorts();
        self->read();
    });
    watch->watch_ = loop.watch(descriptor, [self = watch.get()] { self->read(); });
    return watch;
}

MessageWatch::MessageWatch(Bus bus, std::function<void(const std::string& line)> tell, std::function<void()> lost)
    : bus_(std::move(bus)), tell_(std::move(tell)), lost_(std::move(lost)) {}

MessageWatch::~MessageWatch() { firstRead_->invalidate(); }

void MessageWatch::learnOwners(sd_bus* bus) {
    char** listed = nullptr;
    if (sd_bus_list_names(bus, &listed, nullptr) < 0) return;
    for (char** name = listed; *name; ++name) {
        if (isNameOfPort(*name)) ownersOfPorts_.emplace(portOf(*name), ownerOf(bus, *name));
        std::free(*name);
    }
    std::free(static_cast<void*>(listed));
}

void MessageWatch::tellOpenPorts() {
    for (const auto& [port, owner] : ownersOfPorts_) tell_(lineOfState(port, "open"));
}

std::string MessageWatch::lineOf(sd_bus_message* message) {
    if (sd_bus_message_is_method_call(message, kPortInterface, nullptr) > 0) {
        const char* destination = sd_bus_message_get_destination(message);
        return lineOfMessage(message, portAt(destination ? destination : ""));
    }
    // Becoming a monitor loses one's own name, which must not be shown.
    return sd_bus_message_is_signal(message, kBusName, "NameOwnerChanged") > 0 ? lineOfChange(message) : "";
}

std::string MessageWatch::portAt(std::string_view destination) const {
    const auto port = std::find_if(ownersOfPorts_.begin(), ownersOfPorts_.end(),
                                   [&](const auto& each) { return each.second == destination; });
    return port != ownersOfPorts_.end() ? port->first : portOf(destination);
}

std::string MessageWatch::lineOfChange(sd_bus_message* message) {
    const char* name = nullptr;
    const char* oldOwner = nullptr;
    const char* newOwner = nullptr;
    if (sd_bus_message_read(message, "sss", &name, &oldOwner, &newOwner) < 0 || !isNameOfPort(name)) return "";
    const std::string port = portOf(name);
    if (*newOwner) {
        ownersOfPorts_[port] = newOwner;
    } else {
        ownersOfPorts_.erase(port);
    }
    return lineOfState(port, *newOwner ? "opened" : "closed");
}

void MessageWatch::read() {
    while (true) {
        sd_bus_message* received = nullptr;
        const int progress = sd_bus_process(bus_.get(), &received);
        const BusMessage message(received);
        if (progress < 0) return lost_();
        if (progress == 0) return;
        if (!received) continue;
        if (const std::string line = lineOf(received); !line.empty()) tell_(line);
        if (sd_bus_message_is_signal(received, "org.freedesktop.DBus.Local", "Disconnected") > 0) return lost_();
    }
}

} // namespace kelvo::touchctl
