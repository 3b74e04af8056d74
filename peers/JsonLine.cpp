#include "peers/JsonLine.h"

#include "peers/Utf8.h"

#include <cmath>
#include <cstddef>
#include <string_view>

namespace kelvo {

namespace {

constexpr std::string_view kHexadecimal = "0123456789abcdef";

/// Including U+0080 to U+009F, some of which terminals interpret like escape sequences.
bool isControlCharacter(std::string_view character) {
    return character < " " || character == "\x7F" || (character >= "\u0080" && character <= "\u009f");
}

std::string jsonText(std::string_view text) {
    constexpr std::string_view kReplacementCharacter = "\uFFFD";
    std::string json = "\"";
    while (!text.empty()) {
        const auto byte = static_cast<unsigned char>(text.front());
        const std::size_t length = lengthOfFirstCharacter(text);
        if (length == 0) {
            json += kReplacementCharacter;
        } else if (byte == '"' || byte == '\\') {
            json += '\\';
            json += text.front();
        } else if (isControlCharacter(text.substr(0, length))) {
            // In the two-byte characters, the second byte is the code.
            const auto number = static_cast<unsigned char>(text[length - 1]);
            json += "\\u00";
            json += kHexadecimal[number >> 4U];
            json += kHexadecimal[number & 0xFU];
        } else {
            json += text.substr(0, length);
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return json += '"';
}

std::string jsonReal(const platform::Value& real) {
    if (!std::isfinite(real.doubleValue())) return "null";
    std::string text = real.stringValue().value_or("null");
    return text.find_first_of(".e") == std::string::npos ? text + ".0" : text;
}

std::string jsonData(const platform::NSData& data) {
    std::string text;
    for (const std::uint8_t byte : data) {
        text += kHexadecimal[byte >> 4U];
        text += kHexadecimal[byte & 0xFU];
    }
    return jsonText(text);
}

std::string jsonArray(const platform::NSMutableArray& array) {
    std::string json = "[";
    for (std::size_t i = 0; i < array.count(); ++i) {
        if (i > 0) json += ", ";
        json += jsonLine(array.objectAtIndex(i));
    }
    return json += ']';
}

std::string jsonDictionary(const platform::NSMutableDictionary& dictionary) {
    std::string json = "{";
    for (const std::string& key : dictionary.allKeys()) {
        if (json.size() > 1) json += ", ";
        json += jsonText(key) + ": " + jsonLine(dictionary.objectForKey(key));
    }
    return json += '}';
}

} // namespace

std::string jsonLine(const platform::Value& value) {
    using Kind = platform::Value::Kind;
    switch (value.kind()) {
    case Kind::None:
        return "null";
    case Kind::Boolean:
        return value.boolValue() ? "true" : "false";
    case Kind::Integer:
    case Kind::UnsignedInteger:
        return value.stringValue().value_or("null");
    case Kind::Real:
        return jsonReal(value);
    case Kind::Data:
        return jsonData(*value.data());
    case Kind::Array:
        return jsonArray(value.array());
    case Kind::Dictionary:
        return jsonDictionary(value.dictionary());
    case Kind::String:
    case Kind::Date:
        break;
    }
    return jsonText(value.description());
}

} // namespace kelvo
