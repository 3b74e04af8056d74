#include "peers/driver/BusCaller.h"

#include "linux/BusService.h"
#include "platform/Log.h"

#include <exception>
#include <string_view>
#include <utility>

namespace kelvo {

namespace {

using platform::Value;

int append(sd_bus_message* message, const Value& argument) {
    switch (argument.kind()) {
    case Value::Kind::String:
        return sd_bus_message_append(message, "s", argument.string()->c_str());
    case Value::Kind::Boolean:
        return sd_bus_message_append(message, "b", argument.boolValue() ? 1 : 0);
    case Value::Kind::Integer:
        return sd_bus_message_append(message, "i", argument.intValue());
    case Value::Kind::Real:
        return sd_bus_message_append(message, "d", argument.doubleValue());
    case Value::Kind::None:
    case Value::Kind::UnsignedInteger:
    case Value::Kind::Data:
    case Value::Kind::Date:
    case Value::Kind::Array:
    case Value::Kind::Dictionary:
        break;
    }
    return -1;
}

int onAnswer(sd_bus_message* answer, void* /*userData*/, sd_bus_error* /*error*/) noexcept {
    const sd_bus_error* error = sd_bus_message_get_error(answer);
    if (!error) return 0;
    try {
        platform::NSLog("the desktop does not do what a gesture asks for: %@",
                        std::string_view(error->message ? error->message : error->name));
    } catch (const std::exception&) {
        return 0;
    }
    return 0;
}

} // namespace

BusCaller::BusCaller(platform::CFRunLoop& loop, std::string address) : loop_(loop), address_(std::move(address)) {}

void BusCaller::call(const BusCall& call) {
    if (!connect()) return platform::NSLog("there is no session bus to call %@ on", call.service);
    sd_bus_message* created = nullptr;
    int result = sd_bus_message_new_method_call(connection_->bus(), &created, call.service.c_str(), call.path.c_str(),
                                                call.interface.c_str(), call.method.c_str());
    const BusMessage message(created);
    for (const Value& argument : call.arguments) {
        if (result >= 0) result = append(created, argument);
    }
    // The slot is released with the answer.
    if (result >= 0) result = sd_bus_call_async(connection_->bus(), nullptr, created, onAnswer, nullptr, 0);
    if (result < 0) platform::NSLog("%@ cannot be called", call.service);
    connection_->process();
}

/// Keeps the connection until it is lost.
bool BusCaller::connect() {
    if (!connection_ || !connection_->isOpen()) connection_ = BusConnection::open(loop_, address_);
    return connection_ != nullptr;
}

} // namespace kelvo
