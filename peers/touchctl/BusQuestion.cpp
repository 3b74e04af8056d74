#include "peers/touchctl/BusQuestion.h"

namespace kelvo::touchctl {

namespace {

constexpr double kPatienceSeconds = 2.0;

struct Answer {
    BusMessage message;
    bool hasCome = false;
};

int onAnswer(sd_bus_message* message, void* answer, sd_bus_error* /*error*/) noexcept {
    auto& awaited = *static_cast<Answer*>(answer);
    awaited.hasCome = true;
    if (!sd_bus_message_is_method_error(message, nullptr)) awaited.message.reset(sd_bus_message_ref(message));
    return 0;
}

/// Null if it cannot be created.
BusMessage messageOf(const BusConnection& connection, const BusCall& call) {
    sd_bus_message* created = nullptr;
    if (sd_bus_message_new_method_call(connection.bus(), &created, call.destination.c_str(), call.path.c_str(),
                                       call.interface.c_str(), call.member.c_str()) < 0) {
        return nullptr;
    }
    BusMessage message(created);
    for (const std::string& argument : call.arguments) {
        if (sd_bus_message_append(created, "s", argument.c_str()) < 0) return nullptr;
    }
    return sd_bus_message_set_auto_start(created, 0) < 0 ? nullptr : std::move(message);
}

} // namespace

BusMessage answerOf(const std::string& address, const BusCall& call) {
    platform::CFRunLoop& loop = platform::CFRunLoop::getCurrent();
    const auto connection = BusConnection::open(loop, address);
    if (!connection) return nullptr;
    const BusMessage message = messageOf(*connection, call);
    Answer answer;
    sd_bus_slot* slot = nullptr;
    if (!message || sd_bus_call_async(connection->bus(), &slot, message.get(), onAnswer, &answer, kNoTimeout) < 0) {
        return nullptr;
    }
    const BusSlot question(slot);
    connection->process();
    loop.runUntil([&] { return answer.hasCome || !connection->isOpen(); }, kPatienceSeconds);
    return std::move(answer.message);
}

} // namespace kelvo::touchctl
