#include "peers/DriverCommand.h"

#include "linux/BusService.h"

#include <exception>
#include <utility>

namespace kelvo {

namespace {

using Outcome = DriverAnswer::Outcome;

constexpr double kPatienceSeconds = 5.0;

int appendWords(sd_bus_message* message, const std::vector<std::string>& words) {
    int result = sd_bus_message_open_container(message, 'a', "s");
    for (const std::string& word : words) {
        if (result >= 0) result = sd_bus_message_append(message, "s", word.c_str());
    }
    return result < 0 ? result : sd_bus_message_close_container(message);
}

DriverAnswer answerIn(sd_bus_message* reply) {
    const sd_bus_error* error = sd_bus_message_get_error(reply);
    if (error && isNameAbsent(*error)) return {Outcome::NotRunning, {}};
    int succeeded = 0;
    const char* text = nullptr;
    if (error || sd_bus_message_read(reply, kPerformedSignature, &succeeded, &text) < 0) {
        return {Outcome::NotAnswering, {}};
    }
    return {succeeded != 0 ? Outcome::Done : Outcome::Refused, text};
}

} // namespace

DriverCommand::DriverCommand(platform::CFRunLoop& loop, std::string address)
    : loop_(loop), address_(std::move(address)) {}

DriverCommand::~DriverCommand() { forget(); }

void DriverCommand::perform(const std::vector<std::string>& words, std::function<void(const DriverAnswer&)> tell) {
    forget();
    tell_ = std::move(tell);
    connection_ = BusConnection::open(loop_, address_, [this] { tellWhenKnown(); });
    if (!connection_) return finish({Outcome::NoBus, {}});
    if (!call(words)) return finish({Outcome::Refused, "the arguments of a command must be valid UTF-8"});
    deadline_ = loop_.scheduleTimer(kPatienceSeconds, [this] { finish({Outcome::NotAnswering, {}}); });
    connection_->process();
}

/// False if the words cannot be sent.
bool DriverCommand::call(const std::vector<std::string>& words) {
    sd_bus_message* created = nullptr;
    if (sd_bus_message_new_method_call(connection_->bus(), &created, kDriverName, kDriverPath, kDriverName,
                                       kPerformMethod) < 0)
        return false;
    const BusMessage message(created);
    if (sd_bus_message_set_auto_start(created, 0) < 0 || appendWords(created, words) < 0) return false;
    sd_bus_slot* slot = nullptr;
    if (sd_bus_call_async(connection_->bus(), &slot, created, onReply, this, kNoTimeout) < 0) return false;
    slot_.reset(slot);
    return true;
}

int DriverCommand::onReply(sd_bus_message* reply, void* command, sd_bus_error* /*error*/) noexcept {
    auto& answer = static_cast<DriverCommand*>(command)->answer_;
    try {
        answer = answerIn(reply);
    } catch (const std::exception&) {
        answer.emplace();
    }
    return 0;
}

void DriverCommand::tellWhenKnown() {
    if (answer_) return finish(DriverAnswer(*answer_));
    if (!connection_->isOpen()) finish({Outcome::NoBus, {}});
}

void DriverCommand::finish(const DriverAnswer& answer) {
    const auto tell = std::exchange(tell_, nullptr);
    forget();
    if (tell) tell(answer);
}

void DriverCommand::forget() {
    if (deadline_) deadline_->invalidate();
    deadline_.reset();
    slot_.reset();
    connection_.reset();
    answer_.reset();
}

DriverAnswer performAndWait(platform::CFRunLoop& loop, const std::vector<std::string>& words) {
    DriverCommand command(loop);
    std::optional<DriverAnswer> answer;
    command.perform(words, [&](const DriverAnswer& given) { answer = given; });
    // The command itself times out long before.
    loop.runUntil([&] { return answer.has_value(); }, 2.0 * kPatienceSeconds);
    return answer.value_or(DriverAnswer());
}

} // namespace kelvo
