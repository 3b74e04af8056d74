#include "peers/driver/ControlChannel.h"

#include "linux/BusService.h"

#include <systemd/sd-bus.h>

#include <cerrno>
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

    [[nodiscard]] bool open(platform::CFRunLoop& loop) {
        service_ = std::make_shared<BusService>(
            loop, "", BusService::Offer{kBusName, kObjectPath, kBusName, vtable, this, [weakSelf = weak_from_this()] {
                                            if (const auto self = weakSelf.lock()) self->performNext();
                                        }});
        return service_->open();
    }

private:
    static const sd_bus_vtable vtable[];

    static int onCall(sd_bus_message* call, void* server, sd_bus_error* /*error*/) noexcept {
        try {
            static_cast<Server*>(server)->calls_.emplace_back(sd_bus_message_ref(call));
        } catch (const std::exception&) {
            return -ENOMEM;
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
        service_->process();
    }

    Perform perform_;
    std::shared_ptr<BusService> service_;
    std::deque<BusMessage> calls_;
    bool isPerforming_ = false;
};

const sd_bus_vtable ControlChannel::Server::vtable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD(kMethod, "as", "bs", Server::onCall, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

std::unique_ptr<ControlChannel> ControlChannel::open(platform::CFRunLoop& loop, Perform perform) {
    auto server = std::make_shared<Server>(std::move(perform));
    if (!server->open(loop)) return nullptr;
    return std::make_unique<ControlChannel>(std::move(server));
}

ControlChannel::ControlChannel(std::shared_ptr<Server> server) : server_(std::move(server)) {}

ControlChannel::~ControlChannel() = default;

CommandResult sendCommand(const std::vector<std::string>& words) {
    CommandResult noBus{false, "there is no session bus; set DBUS_SESSION_BUS_ADDRESS to the simulator's"};
    sd_bus* opened = nullptr;
    if (sd_bus_open_user(&opened) < 0) return noBus;
    const Bus bus(opened);
    sd_bus_message* created = nullptr;
    if (sd_bus_message_new_method_call(opened, &created, kBusName, kObjectPath, kBusName, kMethod) < 0) return noBus;
    const BusMessage call(created);
    if (sd_bus_message_set_auto_start(created, 0) < 0) return noBus;
    if (appendWords(created, words) < 0) return {false, "a command's words are UTF-8 texts"};

    sd_bus_message* received = nullptr;
    sd_bus_error error{};
    const int status = sd_bus_call(opened, created, kAnswerTimeoutMicroseconds, &error, &received);
    const BusMessage reply(received);
    const bool isAbsent = isNameAbsent(error);
    sd_bus_error_free(&error);
    if (isAbsent) return {false, "no simulator runs on this bus; start one with \"kelvo-touch-driver-sim run\""};
    int succeeded = 0;
    const char* text = nullptr;
    if (status < 0 || sd_bus_message_read(received, "bs", &succeeded, &text) < 0) {
        return {false,
                "the simulator does not answer, perhaps because it hangs (see \"hang\"); it does this when it goes on"};
    }
    return {succeeded != 0, text};
}

} // namespace kelvo
