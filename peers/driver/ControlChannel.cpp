#include "peers/driver/ControlChannel.h"

#include "linux/BusService.h"
#include "peers/DriverCommand.h"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <cerrno>
#include <deque>
#include <exception>
#include <list>
#include <stdexcept>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr char kWatchMethod[] = "Watch";
constexpr char kUnwatchMethod[] = "Unwatch";
constexpr char kFrameSignal[] = "Frame";
constexpr char kFrameSignature[] = "stdda(idd)";
constexpr char kWatchEndedSignal[] = "WatchEnded";
constexpr char kRefusal[] = "com.kelvo.TouchDisplay.Driver.Refused";

int readWords(sd_bus_message* message, std::vector<std::string>& words) {
    int result = sd_bus_message_enter_container(message, 'a', "s");
    const char* word = nullptr;
    while (result >= 0 && (result = sd_bus_message_read(message, "s", &word)) > 0) words.emplace_back(word);
    return result;
}

int appendFrame(sd_bus_message* message, const std::string& display, const ContactFrame& frame) {
    int result = sd_bus_message_append(message, "stdd", display.c_str(), frame.time, frame.width, frame.height);
    if (result >= 0) result = sd_bus_message_open_container(message, 'a', "(idd)");
    for (const ContactFrame::Contact& contact : frame.contacts) {
        if (result >= 0) result = sd_bus_message_append(message, "(idd)", contact.id, contact.x, contact.y);
    }
    return result < 0 ? result : sd_bus_message_close_container(message);
}

/// Null if memory runs out.
BusMessage newSignalTo(sd_bus* bus, const std::string& receiver, const char* signal) {
    sd_bus_message* created = nullptr;
    if (sd_bus_message_new_signal(bus, &created, kDriverPath, kDriverName, signal) < 0) return nullptr;
    BusMessage message(created);
    return sd_bus_message_set_destination(created, receiver.c_str()) < 0 ? nullptr : std::move(message);
}

} // namespace

/// Queues commands until the loop gets to them: performing one sends to the pane, which runs the loop.
class ControlChannel::Server : public std::enable_shared_from_this<Server> {
public:
    explicit Server(Handlers handlers) : handlers_(std::move(handlers)) {}

    [[nodiscard]] bool open(platform::CFRunLoop& loop) {
        service_ = std::make_shared<BusService>(
            loop, "",
            BusService::Offer{kDriverName, kDriverPath, kDriverName, vtable, this, [weakSelf = weak_from_this()] {
                                  if (const auto self = weakSelf.lock()) self->afterProcessing();
                              }});
        return service_->open();
    }

    void sendFrame(const std::string& display, const ContactFrame& frame) {
        const Watch* watch = watchOf(display);
        sd_bus* bus = service_->bus();
        if (!watch || !bus) return;
        const BusMessage signal = newSignalTo(bus, watch->watcher, kFrameSignal);
        if (!signal || appendFrame(signal.get(), display, frame) < 0) return;
        if (sd_bus_send(bus, signal.get(), nullptr) >= 0) service_->process();
    }

    void refuseWatching(const std::string& display) {
        const Watch* watch = watchOf(display);
        if (!watch) return;
        if (sd_bus* bus = service_->bus()) {
            const BusMessage signal = newSignalTo(bus, watch->watcher, kWatchEndedSignal);
            if (signal && sd_bus_message_append(signal.get(), "s", display.c_str()) >= 0) {
                sd_bus_send(bus, signal.get(), nullptr);
            }
        }
        watches_.remove_if([&](const Watch& each) { return &each == watch; });
        service_->process();
    }

private:
    struct Watch {
        std::string display;
        /// The unique name of the watcher on the bus.
        std::string watcher;
        bool hasLeft = false;
        BusSlot departure;
        BusSlot presence;
    };

    static const sd_bus_vtable vtable[];

    static int onPerform(sd_bus_message* call, void* server, sd_bus_error* /*error*/) noexcept {
        try {
            static_cast<Server*>(server)->calls_.emplace_back(sd_bus_message_ref(call));
        } catch (const std::exception&) {
            return -ENOMEM;
        }
        return 1;
    }

    static int onWatch(sd_bus_message* call, void* server, sd_bus_error* error) noexcept {
        try {
            return static_cast<Server*>(server)->beginWatch(call);
        } catch (const std::runtime_error& refusal) {
            return sd_bus_error_set(error, kRefusal, refusal.what());
        } catch (const std::exception&) {
            return -ENOMEM;
        }
    }

    static int onUnwatch(sd_bus_message* call, void* server, sd_bus_error* /*error*/) noexcept {
        try {
            const std::string watcher = sd_bus_message_get_sender(call);
            static_cast<Server*>(server)->endWatches([&](const Watch& watch) { return watch.watcher == watcher; });
        } catch (const std::exception&) {
            return -ENOMEM;
        }
        return sd_bus_reply_method_return(call, "");
    }

    static int onDeparture(sd_bus_message* /*signal*/, void* watch, sd_bus_error* /*error*/) noexcept {
        static_cast<Watch*>(watch)->hasLeft = true;
        return 0;
    }

    static int onPresence(sd_bus_message* answer, void* watch, sd_bus_error* /*error*/) noexcept {
        if (sd_bus_message_is_method_error(answer, nullptr)) static_cast<Watch*>(watch)->hasLeft = true;
        return 0;
    }

    [[nodiscard]] const Watch* watchOf(const std::string& display) const {
        const auto found = std::find_if(watches_.begin(), watches_.end(),
                                        [&](const Watch& watch) { return watch.display == display; });
        return found == watches_.end() ? nullptr : &*found;
    }

    int beginWatch(sd_bus_message* call) {
        const char* name = nullptr;
        const int result = sd_bus_message_read(call, "s", &name);
        if (result < 0) return result;
        const std::string display = name;
        const std::string watcher = sd_bus_message_get_sender(call);
        if (const Watch* watch = watchOf(display)) {
            if (watch->watcher == watcher) return sd_bus_reply_method_return(call, "");
            throw std::runtime_error("\"" + display + "\" is already being watched; quit the other program");
        }
        handlers_.watchBegan(display);
        watches_.push_back({display, watcher, false, nullptr, nullptr});
        followDeparture(watches_.back());
        return sd_bus_reply_method_return(call, "");
    }

    /// Starts to watch whether the watcher leaves, and asks whether it has already left.
    void followDeparture(Watch& watch) {
        const std::string rule =
            "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" + watch.watcher + "'";
        sd_bus_slot* departure = nullptr;
        sd_bus_slot* presence = nullptr;
        watch.hasLeft =
            sd_bus_add_match_async(service_->bus(), &departure, rule.c_str(), onDeparture, nullptr, &watch) < 0 ||
            sd_bus_call_method_async(service_->bus(), &presence, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                     "org.freedesktop.DBus", "GetNameOwner", onPresence, &watch, "s",
                                     watch.watcher.c_str()) < 0;
        watch.departure.reset(departure);
        watch.presence.reset(presence);
    }

    void endWatches(const std::function<bool(const Watch&)>& isMeant) {
        std::vector<std::string> ended;
        watches_.remove_if([&](const Watch& watch) {
            const bool ends = isMeant(watch);
            if (ends) ended.push_back(watch.display);
            return ends;
        });
        for (const std::string& display : ended) handlers_.watchEnded(display);
    }

    void afterProcessing() {
        const bool isLost = !service_->bus();
        endWatches([&](const Watch& watch) { return isLost || watch.hasLeft; });
        performNext();
    }

    void performNext() {
        if (isPerforming_ || calls_.empty()) return;
        isPerforming_ = true;
        while (!calls_.empty()) {
            const BusMessage call = std::move(calls_.front());
            calls_.pop_front();
            std::vector<std::string> words;
            CommandResult result{false, "the command could not be read"};
            if (readWords(call.get(), words) >= 0) result = handlers_.perform(words);
            sd_bus_reply_method_return(call.get(), kPerformedSignature, result.succeeded ? 1 : 0, result.text.c_str());
        }
        isPerforming_ = false;
        service_->process();
    }

    Handlers handlers_;
    std::shared_ptr<BusService> service_;
    std::deque<BusMessage> calls_;
    bool isPerforming_ = false;
    std::list<Watch> watches_;
};

const sd_bus_vtable ControlChannel::Server::vtable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD(kPerformMethod, kPerformSignature, kPerformedSignature, Server::onPerform,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD(kWatchMethod, "s", "", Server::onWatch, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD(kUnwatchMethod, "", "", Server::onUnwatch, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_SIGNAL(kFrameSignal, kFrameSignature, 0),
    SD_BUS_SIGNAL(kWatchEndedSignal, "s", 0),
    SD_BUS_VTABLE_END,
};

std::unique_ptr<ControlChannel> ControlChannel::open(platform::CFRunLoop& loop, Handlers handlers) {
    auto server = std::make_shared<Server>(std::move(handlers));
    if (!server->open(loop)) return nullptr;
    return std::make_unique<ControlChannel>(std::move(server));
}

ControlChannel::ControlChannel(std::shared_ptr<Server> server) : server_(std::move(server)) {}

ControlChannel::~ControlChannel() = default;

void ControlChannel::sendFrame(const std::string& display, const ContactFrame& frame) {
    server_->sendFrame(display, frame);
}

void ControlChannel::refuseWatching(const std::string& display) { server_->refuseWatching(display); }

} // namespace kelvo
