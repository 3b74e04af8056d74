#include "linux/PlistCoder.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <string>
#include <string_view>

namespace {

using platform::Value;

std::string inHexadecimal(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += {digits[byte >> 4U], digits[byte & 0xFU]};
    }
    return text;
}

std::string_view asText(const platform::NSData& data) {
    return {reinterpret_cast<const char*>(data.data()), data.size()};
}

std::string bitsOf(double real) {
    if (std::isnan(real)) return "nan";
    std::array<char, 16> digits{};
    const auto [end, error] =
        std::to_chars(digits.data(), digits.data() + digits.size(), std::bit_cast<std::uint64_t>(real), 16);
    return {digits.data(), end};
}

/// A text that is the same only for values of the same kind, in the same order, to the last bit.
std::string exactly(const Value& value) {
    switch (value.kind()) {
    case Value::Kind::None:
        return "unreadable";
    case Value::Kind::Boolean:
        return value.boolValue() ? "true" : "false";
    case Value::Kind::Integer:
    case Value::Kind::UnsignedInteger:
        return "integer " + *value.stringValue();
    case Value::Kind::Real:
        return "real " + bitsOf(value.doubleValue());
    case Value::Kind::String:
        return "string " + inHexadecimal(*value.text());
    case Value::Kind::Data:
        return "data " + inHexadecimal(asText(*value.data()));
    case Value::Kind::Date:
        return "date " + std::to_string(static_cast<std::int64_t>(value.date()->timeIntervalSinceReferenceDate));
    case Value::Kind::Array: {
        std::string text = "[";
        const platform::NSMutableArray items = value.array();
        for (const Value& item : items.objects()) text += exactly(item) + ',';
        return text + ']';
    }
    case Value::Kind::Dictionary: {
        std::string text = "{";
        const platform::NSMutableDictionary items = value.dictionary();
        for (const auto& [key, item] : items.entries()) {
            text += inHexadecimal(key) + ':' + exactly(item) + ',';
        }
        return text + '}';
    }
    }
    return {};
}

} // namespace

/// Reads property lists from its input, each behind a line with its size, and says of each on a line what was read; and
/// behind a tab, in hexadecimal, what is written of that.
int main() {
    std::ios::sync_with_stdio(false);
    std::size_t size = 0;
    while (std::cin >> size && std::cin.get() == '\n') {
        platform::NSData list(size);
        std::cin.read(reinterpret_cast<char*>(list.data()), static_cast<std::streamsize>(size));
        const Value value = kelvo::PlistCoder().createFromFileData(list);
        const auto written = kelvo::PlistCoder().createXMLData(value);
        std::cout << exactly(value) << '\t' << (written ? inHexadecimal(asText(*written)) : "") << '\n';
    }
    return 0;
}
