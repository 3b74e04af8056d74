#include "peers/driver/ControlChannel.h"

#include "linux/BusConnection.h"

#include <systemd/sd-bus.h>

#include <deque>
#include <exception>
#include <utility>

namespace kelvo {

namespace {

constexpr char kBusName[] = "com.kelvo.TouchDisplay.DriverSimulator";
constexpr char kObjectPath[] = "/com/kelvo/TouchDisplay/DriverSimulator";
constexpr char kMethod[] = "Perform";
/// A command tells the pane, which may take its two time-outs.
constexpr std::uint64_t kAnswerTimeoutMicroseconds = 5'000'000;
constexpr double kOpenTimeoutSeconds = 2.0;
constexpr std::uint32_t kPrimaryOwner = 1;

struct MessageReleaser {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using BusMessage = std::unique_ptr<sd_bus_message, MessageReleaser>;

int readWords(sd_bus_message* message, std::vector<std::string>& words) {
    int result = sd_bus_message_enter_container(message, 'a', "s");
    const char* word = nullptr;
    while (result >= 0 && (result = sd_bus_message_read(message, "s", &word)) > 0) words.emplace_back(word);
    return result;
}

int appendWords(sd_bus_message* message, const std::vector<std::string>& words) {
    int result = sd_bus_message_open_container(message, 'a', "s");
    for (const std::string& word : words) {
        if (result >= 0) result = sd_bus_message_append(message, "s", word.c_str());
    }
    return result < 0 ? result : sd_bus_message_close_container(message);
}

} // namespace

/// Keeps the calls that came until the loop gets to them: performing one sends to the pane, which runs the loop.
class ControlChannel::Server : public std::enable_shared_from_this<Server> {
public:
    explicit Server(Perform perform) : perform_(std::move(perform)) {}

    bool open(platform::CFRunLoop& loop) {
        connection_ = BusConnection::open(loop, {}, [weakSelf = weak_from_this()] {
            if (const auto self = weakSelf.lock()) self->performNext();
        });
        if (!connection_) return false;
        static const sd_bus_vtable vtable[] = {SD_BUS_VTABLE_START(0),
                                               SD_BUS_METHOD(kMethod, "as", "bs", onCall, SD_BUS_VTABLE_UNPRIVILEGED),
                                               SD_BUS_VTABLE_END};
        sd_bus* bus = connection_->bus();
        if (sd_bus_add_object_vtable(bus, nullptr, kObjectPath, kBusName, vtable, this) < 0 ||
            sd_bus_request_name_async(bus, nullptr, kBusName, 0, onNameAnswer, this) < 0) {
            return false;
        }
        connection_->process();
        loop.runUntil([&] { return isOwner_ || isRefused_ || !connection_->isOpen(); }, kOpenTimeoutSeconds);
        return isOwner_;
    }

private:
    static int onNameAnswer(sd_bus_message* answer, void* server, sd_bus_error* /*error*/) noexcept {
        std::uint32_t result = 0;
        auto& self = *static_cast<Server*>(server);
        self.isOwner_ = !sd_bus_message_is_method_error(answer, nullptr) &&
                        sd_bus_message_read(answer, "u", &result) > 0 && result == kPrimaryOwner;
        self.isRefused_ = !self.isOwner_;
        return 0;
    }

    static int onCall(sd_bus_message* call, void* server, sd_bus_error* /*error*/) noexcept {
        try {
            static_cast<Server*>(server)->calls_.emplace_back(sd_bus_message_ref(call));
        } catch (const std::exception&) {
            return -1;
        }
        return 1;
    }

    void performNext() {
        if (isPerforming_ || calls_.empty()) return;
        isPerforming_ = true;
        while (!calls_.empty()) {
            const BusMessage call = std::move(calls_.front());
            calls_.pop_front();
            std::vector<std::string> words;
            CommandResult result{false, "the command could not be read"};
            if (readWords(call.get(), words) >= 0) result = perform_(words);
            sd_bus_reply_method_return(call.get(), "bs", result.succeeded ? 1 : 0, result.text.c_str());
        }
        isPerforming_ = false;
        connection_->process();
    }

    Perform perform_;
    std::shared_ptr<BusConnection> connection_;
    std::deque<BusMessage> calls_;
    bool isOwner_ = false;
    bool isRefused_ = false;
    bool isPerforming_ = false;
};

std::unique_ptr<ControlChannel> ControlChannel::open(platform::CFRunLoop& loop, Perform perform) {
    auto server = std::make_shared<Server>(std::move(perform));
    if (!server->open(loop)) return nullptr;
    return std::make_unique<ControlChannel>(std::move(server));
}

ControlChannel::ControlChannel(std::shared_ptr<Server> server) : server_(std::move(server)) {}

ControlChannel::~ControlChannel() = default;

CommandResult sendCommand(const std::vector<std::string>& words) {
    const CommandResult noBus{false, "there is no session bus; set DBUS_SESSION_BUS_ADDRESS to the simulator's"};
    sd_bus* opened = nullptr;
    if (sd_bus_open_user(&opened) < 0) return noBus;
    const Bus bus(opened);
    sd_bus_message* created = nullptr;
    if (sd_bus_message_new_method_call(opened, &created, kBusName, kObjectPath, kBusName, kMethod) < 0) return noBus;
    const BusMessage call(created);
    if (sd_bus_message_set_auto_start(created, 0) < 0 || appendWords(created, words) < 0) return noBus;

    sd_bus_message* received = nullptr;
    sd_bus_error error = SD_BUS_ERROR_NULL;
    const int status = sd_bus_call(opened, created, kAnswerTimeoutMicroseconds, &error, &received);
    const BusMessage reply(received);
    const bool isAbsent =
        sd_bus_error_has_names(&error, SD_BUS_ERROR_SERVICE_UNKNOWN, SD_BUS_ERROR_NAME_HAS_NO_OWNER) > 0;
    sd_bus_error_free(&error);
    if (isAbsent) return {false, "no simulator runs on this bus; start one with \"kelvo-touch-driver-sim run\""};
    int succeeded = 0;
    const char* text = nullptr;
    if (status < 0 || sd_bus_message_read(received, "bs", &succeeded, &text) < 0) {
        return {false, "the simulator does not answer; it may be hanging (see \"hang\")"};
    }
    return {succeeded != 0, text};
}

} // namespace kelvo
