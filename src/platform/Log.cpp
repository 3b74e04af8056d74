#include "platform/Log.h"

#include <array>
#include <charconv>
#include <cmath>

namespace platform {

namespace {

/// "%f" of the C locale, whatever the locale is.
std::string withSixDecimals(double number) {
    if (std::isnan(number)) return "nan";
    if (std::isinf(number)) return number < 0 ? "-inf" : "inf";
    // The largest double has 309 digits before the point.
    std::array<char, 330> buffer{};
    const auto [end, error] =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::fixed, 6);
    return {buffer.data(), end};
}

std::string formatted(char conversion, const Value& argument) {
    switch (conversion) {
    case 'd':
        return std::to_string(argument.intValue());
    case 'f':
        return withSixDecimals(argument.doubleValue());
    default:
        return argument.description();
    }
}

} // namespace

std::string stringWithFormat(std::string_view format, std::initializer_list<Value> arguments) {
    std::string text;
    const Value* next = arguments.begin();
    for (std::size_t i = 0; i < format.size(); ++i) {
        const char conversion = format[i] == '%' && i + 1 < format.size() ? format[i + 1] : '\0';
        if (conversion == '%') {
            text += '%';
            ++i;
        } else if (conversion == '@' || conversion == 'd' || conversion == 'f') {
            text += formatted(conversion, next == arguments.end() ? Value() : *next++);
            ++i;
        } else {
            text += format[i];
        }
    }
    return text;
}

SystemLog::~SystemLog() = default;

} // namespace platform
