#include "linux/BusProcesses.h"

#include "linux/BusService.h"

#include <algorithm>
#include <utility>

namespace kelvo {

namespace {

constexpr char kDaemon[] = "org.freedesktop.DBus";
constexpr char kDaemonPath[] = "/org/freedesktop/DBus";

} // namespace

/// Questions that were asked together, and the answers so far.
struct BusProcesses::Question {
    struct Name {
        std::string text;
        bool isAnswered = false;
        std::optional<std::uint32_t> process;
        BusSlot call;
    };

    [[nodiscard]] bool isAnswered() const {
        return std::all_of(names.begin(), names.end(), [](const Name& name) { return name.isAnswered; });
    }
    void tellProcesses() const {
        std::vector<std::optional<std::uint32_t>> processes;
        processes.reserve(names.size());
        for (const Name& name : names) processes.push_back(name.process);
        tell(processes);
    }

    std::vector<Name> names;
    Tell tell;
};

BusProcesses::BusProcesses(platform::CFRunLoop& loop, std::string address)
    : loop_(loop), address_(std::move(address)) {}

BusProcesses::~BusProcesses() = default;

void BusProcesses::ask(const std::vector<std::string>& names, Tell tell) {
    Question& question = questions_.emplace_back();
    for (const std::string& name : names) question.names.push_back({name, false, std::nullopt, nullptr});
    question.tell = std::move(tell);
    if (!connect() || !send(question)) {
        for (Question::Name& name : question.names) name.isAnswered = true;
    }
    if (connection_) return connection_->process();
    tellWhatIsKnown();
}

/// False if there is no bus.
bool BusProcesses::connect() {
    if (!connection_ || !connection_->isOpen()) {
        connection_ = BusConnection::open(loop_, address_, [this] { tellWhatIsKnown(); });
    }
    return connection_ != nullptr;
}

bool BusProcesses::send(Question& question) {
    for (Question::Name& name : question.names) {
        sd_bus_slot* slot = nullptr;
        if (sd_bus_call_method_async(connection_->bus(), &slot, kDaemon, kDaemonPath, kDaemon,
                                     "GetConnectionUnixProcessID", onAnswer, &name, "s", name.text.c_str()) < 0)
            return false;
        name.call.reset(slot);
    }
    return true;
}

int BusProcesses::onAnswer(sd_bus_message* answer, void* userData, sd_bus_error* /*error*/) noexcept {
    auto& name = *static_cast<Question::Name*>(userData);
    name.isAnswered = true;
    std::uint32_t process = 0;
    if (!sd_bus_message_is_method_error(answer, nullptr) && sd_bus_message_read(answer, "u", &process) > 0) {
        name.process = process;
    }
    return 0;
}

void BusProcesses::tellWhatIsKnown() {
    const bool isLost = !connection_ || !connection_->isOpen();
    // The callback may ask again.
    std::list<Question> answered;
    for (auto question = questions_.begin(); question != questions_.end();) {
        const auto next = std::next(question);
        if (isLost || question->isAnswered()) answered.splice(answered.end(), questions_, question);
        question = next;
    }
    for (const Question& question : answered) question.tellProcesses();
}

} // namespace kelvo
