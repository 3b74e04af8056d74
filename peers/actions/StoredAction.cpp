#include "peers/actions/ActionsInForce.h"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <utility>

namespace kelvo {

namespace {

using platform::NSMutableArray;
using platform::NSMutableDictionary;
using platform::Value;
using Kind = touch::Action::Kind;

constexpr std::array<std::pair<std::string_view, Kind>, 5> kKinds{{
    {"Nothing", Kind::Nothing},
    {"Fingers", Kind::Fingers},
    {"Chord", Kind::Chord},
    {"RightClick", Kind::RightClick},
    {"Call", Kind::Call},
}};

Kind kindIn(const NSMutableDictionary& stored) {
    const std::string name = stored.objectForKey("Kind").string().value_or("");
    const auto* const found =
        std::find_if(kKinds.begin(), kKinds.end(), [&](const auto& each) { return each.first == name; });
    if (found == kKinds.end()) {
        throw std::runtime_error("its Kind must be Nothing, Fingers, Chord, RightClick or Call");
    }
    return found->second;
}

std::int32_t fingersIn(const NSMutableDictionary& stored) {
    const Value fingers = stored.objectForKey("Fingers");
    if (!fingers) return 0;
    if (fingers.kind() != Value::Kind::Integer) throw std::runtime_error("Fingers must be a whole number");
    return fingers.intValue();
}

void takeKeys(const NSMutableDictionary& stored, touch::Action& action) {
    const NSMutableArray names = stored.objectForKey("Keys").array();
    for (const Value& name : names.objects()) {
        const std::string text = name.string().value_or("");
        const auto code = touch::codeOfChordKey(text);
        if (!code) throw std::runtime_error("there is no key \"" + text + "\"");
        if (!action.keys.add(*code)) throw std::runtime_error("a shortcut has at most four keys");
    }
}

std::string textIn(const NSMutableDictionary& stored, std::string_view key) {
    const auto text = stored.objectForKey(key).string();
    if (!text) throw std::runtime_error("its " + std::string(key) + " must be a string");
    return *text;
}

bool canBeSent(const Value& argument) {
    switch (argument.kind()) {
    case Value::Kind::String:
    case Value::Kind::Boolean:
    case Value::Kind::Real:
        return true;
    case Value::Kind::Integer:
        return argument.longLongValue() >= std::numeric_limits<std::int32_t>::min() &&
               argument.longLongValue() <= std::numeric_limits<std::int32_t>::max();
    case Value::Kind::None:
    case Value::Kind::UnsignedInteger:
    case Value::Kind::Data:
    case Value::Kind::Date:
    case Value::Kind::Array:
    case Value::Kind::Dictionary:
        break;
    }
    return false;
}

BusCall callIn(const NSMutableDictionary& stored) {
    BusCall call{
        textIn(stored, "Service"), textIn(stored, "Path"), textIn(stored, "Interface"), textIn(stored, "Method"), {}};
    if (sd_bus_service_name_is_valid(call.service.c_str()) <= 0)
        throw std::runtime_error("its Service is not a bus name");
    if (sd_bus_object_path_is_valid(call.path.c_str()) <= 0) throw std::runtime_error("its Path is not an object path");
    if (sd_bus_interface_name_is_valid(call.interface.c_str()) <= 0) {
        throw std::runtime_error("its Interface is not an interface name");
    }
    if (sd_bus_member_name_is_valid(call.method.c_str()) <= 0)
        throw std::runtime_error("its Method is not a method name");
    const Value arguments = stored.objectForKey("Arguments");
    if (arguments && !arguments.array()) throw std::runtime_error("its Arguments must be a list");
    const platform::NSMutableArray list = arguments.array();
    for (const Value& argument : list.objects()) {
        if (!canBeSent(argument)) {
            throw std::runtime_error("its Arguments must be strings, booleans, reals or 32-bit integers");
        }
        call.arguments.push_back(argument);
    }
    return call;
}

} // namespace

DesktopAction storedActionIn(const Value& stored, touch::Gesture gesture) {
    const NSMutableDictionary dictionary = stored.dictionary();
    if (!dictionary) throw std::runtime_error("it must be a dictionary");
    DesktopAction result;
    result.action.kind = kindIn(dictionary);
    if (result.action.kind == Kind::Fingers) result.action.fingers = fingersIn(dictionary);
    if (result.action.kind == Kind::Chord) takeKeys(dictionary, result.action);
    if (result.action.kind == Kind::Call) result.call = callIn(dictionary);
    const std::string_view reason = touch::reasonAgainst(result.action, gesture);
    if (!reason.empty()) throw std::runtime_error(std::string(reason));
    result.purpose = dictionary.objectForKey("Purpose").string().value_or("");
    return result;
}

NSMutableDictionary storedFormOf(const DesktopAction& action) {
    const Kind kind = action.action.kind;
    auto stored = NSMutableDictionary::dictionary();
    stored.setObjectForKey(kKinds.at(static_cast<std::size_t>(kind)).first, "Kind");
    if (kind == Kind::Fingers && action.action.fingers != 0) stored.setObjectForKey(action.action.fingers, "Fingers");
    if (kind == Kind::Chord) {
        auto keys = NSMutableArray::arrayWithObjects();
        for (const std::int32_t key : action.action.keys) keys.addObject(touch::nameOfChordKey(key));
        stored.setObjectForKey(keys, "Keys");
    }
    if (kind == Kind::Call) {
        stored.setObjectForKey(action.call.service, "Service");
        stored.setObjectForKey(action.call.path, "Path");
        stored.setObjectForKey(action.call.interface, "Interface");
        stored.setObjectForKey(action.call.method, "Method");
        auto arguments = NSMutableArray::arrayWithObjects();
        for (const Value& argument : action.call.arguments) arguments.addObject(argument);
        stored.setObjectForKey(arguments, "Arguments");
    }
    return stored;
}

} // namespace kelvo
