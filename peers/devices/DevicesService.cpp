#include "peers/devices/DevicesService.h"

#include "linux/BusService.h"
#include "peers/DevicesBus.h"
#include "peers/devices/DeviceKeeper.h"
#include "platform/Log.h"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <functional>
#include <list>
#include <utility>

namespace kelvo {

namespace {

constexpr char kBusName[] = "org.freedesktop.DBus";
constexpr char kBusPath[] = "/org/freedesktop/DBus";
constexpr char kPolkitName[] = "org.freedesktop.PolicyKit1";
constexpr char kPolkitPath[] = "/org/freedesktop/PolicyKit1/Authority";
constexpr char kPolkitInterface[] = "org.freedesktop.PolicyKit1.Authority";
/// Never asks for a password.
constexpr std::uint32_t kWithoutInteraction = 0;

const char* errorOf(Refusal::Reason reason) {
    switch (reason) {
    case Refusal::Reason::NoSuchDisplay:
        return kNoSuchDisplayError;
    case Refusal::Reason::NotActive:
        return kNotActiveError;
    case Refusal::Reason::NotAuthorised:
        return kNotAuthorisedError;
    case Refusal::Reason::Busy:
        return kBusyError;
    case Refusal::Reason::Failed:
        break;
    }
    return kFailedError;
}

/// Whether polkit's answer is yes. An unreadable answer counts as no.
bool isYes(sd_bus_message* answer) {
    int isAuthorised = 0;
    return !sd_bus_message_is_method_error(answer, nullptr) &&
           sd_bus_message_enter_container(answer, 'r', "bba{ss}") > 0 &&
           sd_bus_message_read(answer, "b", &isAuthorised) > 0 && isAuthorised != 0;
}

int appendFiles(sd_bus_message* reply, const DeviceKeeper::Files& files) {
    int result = sd_bus_message_append(reply, "h", files.display.number());
    if (result >= 0) result = sd_bus_message_open_container(reply, 'a', "h");
    for (const Descriptor& node : files.devices) {
        if (result >= 0) result = sd_bus_message_append(reply, "h", node.number());
    }
    return result < 0 ? result : sd_bus_message_close_container(reply);
}

} // namespace

class DevicesService::Server {
public:
    Server(platform::CFRunLoop& loop, std::string address, Hardware& hardware, const Seats& seats)
        : keeper_(hardware, seats,
                  {[this](DeviceKeeper::Id id, const std::string& name) { tellAdded(id, name); },
                   [this](DeviceKeeper::Id id) { tell({}, kRemovedSignal, id); },
                   [this](DeviceKeeper::Id id, const std::string& holder) { tell(holder, kRevokedSignal, id); }}),
          service_(std::make_shared<BusService>(loop, std::move(address),
                                                BusService::Offer{kDevicesName, kDevicesPath, kDevicesName, vtable,
                                                                  this, [this] { afterProcessing(); }})) {}

    [[nodiscard]] bool open() { return service_->open(); }

    /// A change in the keeper, and its announcement.
    void change(const std::function<void(DeviceKeeper& keeper)>& act) {
        act(keeper_);
        service_->process();
    }

private:
    /// A caller on the bus that asked for a display; kept until it leaves the bus.
    struct Caller {
        Server& server;
        std::string name;
        BusSlot departure;
    };

    /// A requested display.
    struct Request {
        Server& server;
        BusMessage call;
        DeviceKeeper::Id id = 0;
        std::string caller;
        uid_t user = 0;
        BusSlot question;
        bool isOver = false;
    };

    static const sd_bus_vtable vtable[];

    // The bus calls these, and exceptions must not pass through it.

    static int onDisplays(sd_bus_message* call, void* server, sd_bus_error* /*error*/) noexcept {
        return answer([&] { return static_cast<Server*>(server)->listDisplays(call); });
    }

    static int onOpen(sd_bus_message* call, void* server, sd_bus_error* /*error*/) noexcept {
        return answer([&] { return static_cast<Server*>(server)->beginRequest(call); });
    }

    static int onUser(sd_bus_message* message, void* request, sd_bus_error* /*error*/) noexcept {
        return step(*static_cast<Request*>(request), [&](Request& each) {
            std::uint32_t user = 0;
            if (sd_bus_message_is_method_error(message, nullptr) || sd_bus_message_read(message, "u", &user) < 0) {
                // The caller has left, perhaps before that could be watched.
                each.server.departed_.push_back(each.caller);
                throw Refusal(Refusal::Reason::NotAuthorised, "the bus does not identify the caller");
            }
            each.user = user;
            each.server.keeper_.check(each.id, each.user);
            each.server.askPolkit(each);
        });
    }

    static int onPolkit(sd_bus_message* message, void* request, sd_bus_error* /*error*/) noexcept {
        return step(*static_cast<Request*>(request), [&](Request& each) {
            if (!isYes(message)) {
                throw Refusal(Refusal::Reason::NotAuthorised,
                              "polkit does not permit it, or is not running; check the action " +
                                  std::string(kOpenAction));
            }
            each.server.handOut(each);
        });
    }

    static int onDeparture(sd_bus_message* /*signal*/, void* caller, sd_bus_error* /*error*/) noexcept {
        const auto& gone = *static_cast<Caller*>(caller);
        return answer([&] {
            gone.server.departed_.push_back(gone.name);
            return 0;
        });
    }

    static int answer(const std::function<int()>& act) noexcept {
        try {
            return act();
        } catch (const std::exception&) {
            return -ENOMEM;
        }
    }

    /// The next step of a request; a refusal is its answer.
    static int step(Request& request, const std::function<void(Request&)>& act) noexcept {
        return answer([&] {
            try {
                act(request);
            } catch (const Refusal& refusal) {
                sd_bus_reply_method_errorf(request.call.get(), errorOf(refusal.reason()), "%s", refusal.what());
                request.isOver = true;
            }
            return 0;
        });
    }

    int listDisplays(sd_bus_message* call) {
        sd_bus_message* created = nullptr;
        int result = sd_bus_message_new_method_return(call, &created);
        if (result < 0) return result;
        const BusMessage reply(created);
        result = sd_bus_message_open_container(created, 'a', "(us)");
        for (const auto& [id, name] : keeper_.displays()) {
            if (result >= 0) result = sd_bus_message_append(created, "(us)", id, name.c_str());
        }
        if (result >= 0) result = sd_bus_message_close_container(created);
        return result < 0 ? result : sd_bus_send(nullptr, created, nullptr);
    }

    /// Starts to watch whether the caller leaves, then asks who it is, so that a caller that has left is noticed.
    int beginRequest(sd_bus_message* call) {
        std::uint32_t id = 0;
        const int result = sd_bus_message_read(call, "u", &id);
        if (result < 0) return result;
        const std::string caller = sd_bus_message_get_sender(call);
        const int followed = followDeparture(caller);
        if (followed < 0) return followed;
        requests_.push_back({*this, BusMessage(sd_bus_message_ref(call)), id, caller, 0, nullptr, false});
        Request& request = requests_.back();
        sd_bus_slot* question = nullptr;
        const int asked = sd_bus_call_method_async(service_->bus(), &question, kBusName, kBusPath, kBusName,
                                                   "GetConnectionUnixUser", onUser, &request, "s", caller.c_str());
        request.question.reset(question);
        if (asked < 0) {
            requests_.pop_back();
            return asked;
        }
        return 1;
    }

    int followDeparture(const std::string& caller) {
        const auto isKnown = [&](const Caller& each) { return each.name == caller; };
        if (std::any_of(callers_.begin(), callers_.end(), isKnown)) return 0;
        callers_.push_back({*this, caller, nullptr});
        const std::string rule =
            "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" + caller + "',arg2=''";
        sd_bus_slot* departure = nullptr;
        const int result =
            sd_bus_add_match_async(service_->bus(), &departure, rule.c_str(), onDeparture, nullptr, &callers_.back());
        callers_.back().departure.reset(departure);
        if (result < 0) callers_.pop_back();
        return result;
    }

    void askPolkit(Request& request) {
        sd_bus_slot* question = nullptr;
        const int asked =
            sd_bus_call_method_async(service_->bus(), &question, kPolkitName, kPolkitPath, kPolkitInterface,
                                     "CheckAuthorization", onPolkit, &request, "(sa{sv})sa{ss}us", "system-bus-name", 1,
                                     "name", "s", request.caller.c_str(), kOpenAction, 0, kWithoutInteraction, "");
        // The caller of this function releases the request that is being answered.
        finished_.push_back(std::exchange(request.question, BusSlot(question)));
        if (asked < 0) throw Refusal(Refusal::Reason::Failed, "polkit cannot be asked");
    }

    void handOut(Request& request) {
        request.isOver = true;
        if (std::find(departed_.begin(), departed_.end(), request.caller) != departed_.end()) return;
        const DeviceKeeper::Files files = keeper_.open(request.id, request.caller, request.user);
        sd_bus_message* created = nullptr;
        int result = sd_bus_message_new_method_return(request.call.get(), &created);
        const BusMessage reply(result < 0 ? nullptr : created);
        if (result >= 0) result = appendFiles(created, files);
        if (result >= 0) result = sd_bus_send(nullptr, created, nullptr);
        if (result >= 0) return;
        keeper_.leave(request.caller);
        throw Refusal(Refusal::Reason::Failed, "the display's files cannot be sent");
    }

    void afterProcessing() {
        finished_.clear();
        requests_.remove_if([](const Request& request) { return request.isOver; });
        const bool isLost = !service_->bus();
        if (isLost) {
            requests_.clear();
            callers_.clear();
            departed_.clear();
            keeper_.leaveAll();
            return;
        }
        const auto departed = std::exchange(departed_, {});
        for (const std::string& name : departed) {
            requests_.remove_if([&](const Request& request) { return request.caller == name; });
            callers_.remove_if([&](const Caller& caller) { return caller.name == name; });
            keeper_.leave(name);
        }
        if (!departed.empty()) service_->process();
    }

    void tellAdded(DeviceKeeper::Id id, const std::string& name) {
        if (sd_bus* bus = service_->bus()) {
            sd_bus_emit_signal(bus, kDevicesPath, kDevicesName, kAddedSignal, "us", id, name.c_str());
        }
    }

    /// Sent to everybody if there is no receiver.
    void tell(const std::string& receiver, const char* signal, DeviceKeeper::Id id) {
        sd_bus* bus = service_->bus();
        sd_bus_message* created = nullptr;
        if (!bus || sd_bus_message_new_signal(bus, &created, kDevicesPath, kDevicesName, signal) < 0) return;
        const BusMessage message(created);
        if (sd_bus_message_append(created, "u", id) < 0) return;
        if (!receiver.empty() && sd_bus_message_set_destination(created, receiver.c_str()) < 0) return;
        sd_bus_send(bus, created, nullptr);
    }

    DeviceKeeper keeper_;
    std::shared_ptr<BusService> service_;
    std::list<Caller> callers_;
    std::list<Request> requests_;
    /// Callers whose connections have ended.
    std::vector<std::string> departed_;
    /// Answered questions to the bus, to be released once the bus is done with them.
    std::vector<BusSlot> finished_;
};

const sd_bus_vtable DevicesService::Server::vtable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD(kDisplaysMethod, "", kDisplaysSignature, Server::onDisplays, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD(kOpenMethod, "u", kOpenedSignature, Server::onOpen, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_SIGNAL(kAddedSignal, "us", 0),
    SD_BUS_SIGNAL(kRemovedSignal, "u", 0),
    SD_BUS_SIGNAL(kRevokedSignal, "u", 0),
    SD_BUS_VTABLE_END,
};

DevicesService::DevicesService(platform::CFRunLoop& loop, std::string address, Hardware& hardware, const Seats& seats)
    : server_(std::make_unique<Server>(loop, std::move(address), hardware, seats)) {}

DevicesService::~DevicesService() = default;

bool DevicesService::open() { return server_->open(); }

void DevicesService::come(const TouchScreen& screen) {
    server_->change([&](DeviceKeeper& keeper) { keeper.come(screen); });
}

void DevicesService::go(const std::string& node) {
    server_->change([&](DeviceKeeper& keeper) { keeper.go(node); });
}

void DevicesService::seatsChanged() {
    server_->change([](DeviceKeeper& keeper) { keeper.seatsChanged(); });
}

} // namespace kelvo
