#include "linux/XMLPlistWriter.h"

#include "linux/PlistTexts.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace kelvo {

using platform::NSData;
using platform::NSMutableArray;
using platform::NSMutableDictionary;
using platform::Value;

namespace {

constexpr std::string_view kHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";
constexpr std::string_view kFoot = "</plist>\n";

/// How to write a byte of a text.
enum class Byte : std::uint8_t { Plain, Escaped, Multiple, Forbidden };

constexpr std::array<Byte, 256> kindsOfBytes() {
    std::array<Byte, 256> table{};
    std::fill_n(table.begin(), ' ', Byte::Forbidden);
    table['\t'] = table['\n'] = Byte::Plain;
    // A literal carriage return would be read as a line feed.
    table['\r'] = table['&'] = table['<'] = table['>'] = Byte::Escaped;
    std::fill(table.begin() + 0x80, table.end(), Byte::Multiple);
    return table;
}

std::string_view escapeOf(char c) {
    switch (c) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    default:
        return "&#13;";
    }
}

/// The length in bytes of the UTF-8 character at the start of `text`, if XML can represent it; 0 for any
/// other.
std::size_t lengthOfCharacter(std::string_view text) {
    const auto byteAt = [text](std::size_t index) { return std::uint32_t{static_cast<unsigned char>(text[index])}; };
    const std::uint32_t first = byteAt(0);
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 0;
    if (length == 0 || length > text.size() || first > 0xF4) return 0;
    std::uint32_t character = first & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(i) & 0xC0U) != 0x80U) return 0;
        character = (character << 6U) | (byteAt(i) & 0x3FU);
    }
    constexpr std::array<std::uint32_t, 5> kLeastOfLength{0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    const bool isCharacter =
        character >= kLeastOfLength[length] && character <= 0x10FFFF && !isSurrogate && (character | 1U) != 0xFFFF;
    return isCharacter ? length : 0;
}

class Writer {
public:
    explicit Writer(std::size_t deepest) : deepest_(deepest) {}

    [[nodiscard]] std::optional<NSData> write(const Value& root) {
        constexpr std::size_t kUsualSize = 4096;
        xml_.reserve(kUsualSize);
        append(kHead);
        if (!appendValue(root)) return std::nullopt;
        append(kFoot);
        return std::move(xml_);
    }

private:
    void append(std::string_view text) { xml_.insert(xml_.end(), text.begin(), text.end()); }

    void beginLine() { xml_.insert(xml_.end(), depth_, '\t'); }

    void appendLine(std::string_view text) {
        beginLine();
        append(text);
        xml_.push_back('\n');
    }

    /// All of these return false if the value cannot be written.
    bool appendValue(const Value& value) {
        switch (value.kind()) {
        case Value::Kind::None:
            return false;
        case Value::Kind::Boolean:
            appendLine(value.boolValue() ? "<true/>" : "<false/>");
            return true;
        case Value::Kind::Integer:
        case Value::Kind::UnsignedInteger:
            return appendElement("<integer>", *value.stringValue(), "</integer>\n");
        case Value::Kind::Real:
            return appendElement("<real>", plisttexts::textOf(value.doubleValue()), "</real>\n");
        case Value::Kind::String:
            return appendElement("<string>", *value.text(), "</string>\n");
        case Value::Kind::Data:
            appendData(*value.data());
            return true;
        case Value::Kind::Date: {
            const auto text = plisttexts::textOf(*value.date());
            return text && appendElement("<date>", *text, "</date>\n");
        }
        case Value::Kind::Array:
            return appendArray(value.array());
        case Value::Kind::Dictionary:
            return appendDictionary(value.dictionary());
        }
        return false;
    }

    bool appendElement(std::string_view opening, std::string_view text, std::string_view closing) {
        beginLine();
        append(opening);
        if (!appendText(text)) return false;
        append(closing);
        return true;
    }

    bool appendText(std::string_view text) {
        static constexpr auto kKinds = kindsOfBytes();
        std::size_t written = 0;
        for (std::size_t i = 0; i < text.size();) {
            switch (kKinds[static_cast<unsigned char>(text[i])]) {
            case Byte::Plain:
                ++i;
                break;
            case Byte::Escaped:
                append(text.substr(written, i - written));
                append(escapeOf(text[i]));
                written = ++i;
                break;
            case Byte::Multiple: {
                const std::size_t length = lengthOfCharacter(text.substr(i));
                if (length == 0) return false;
                i += length;
                break;
            }
            case Byte::Forbidden:
                return false;
            }
        }
        append(text.substr(written));
        return true;
    }

    /// In base64, with the line breaks of other writers of the format.
    void appendData(const NSData& data) {
        appendLine("<data>");
        const std::size_t room = 76 - std::min<std::size_t>(8 * depth_, 60);
        const std::size_t bytesOfLine = room / 4 * 3;
        for (std::size_t start = 0; start < data.size(); start += bytesOfLine) {
            beginLine();
            appendBase64(std::span(data).subspan(start, std::min(bytesOfLine, data.size() - start)));
            xml_.push_back('\n');
        }
        appendLine("</data>");
    }

    void appendBase64(std::span<const std::uint8_t> bytes) {
        constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        for (; !bytes.empty(); bytes = bytes.subspan(std::min<std::size_t>(3, bytes.size()))) {
            std::array<std::uint32_t, 3> group{};
            std::copy_n(bytes.begin(), std::min<std::size_t>(3, bytes.size()), group.begin());
            const std::uint32_t bits = group[0] << 16U | group[1] << 8U | group[2];
            std::array<char, 4> digits{kDigits[bits >> 18U], kDigits[bits >> 12U & 0x3FU], kDigits[bits >> 6U & 0x3FU],
                                       kDigits[bits & 0x3FU]};
            if (bytes.size() < 3) digits[3] = '=';
            if (bytes.size() < 2) digits[2] = '=';
            append({digits.data(), digits.size()});
        }
    }

    bool appendArray(const NSMutableArray& array) {
        if (array.count() == 0) return appendEmpty("<array/>");
        return appendContainer("<array>", "</array>", array.objects(),
                               [this](const Value& value) { return appendValue(value); });
    }

    bool appendDictionary(const NSMutableDictionary& dictionary) {
        if (dictionary.count() == 0) return appendEmpty("<dict/>");
        return appendContainer("<dict>", "</dict>", dictionary.entries(), [this](const auto& entry) {
            return appendElement("<key>", entry.first, "</key>\n") && appendValue(entry.second);
        });
    }

    bool appendEmpty(std::string_view element) {
        if (depth_ == deepest_) return false;
        appendLine(element);
        return true;
    }

    template <typename Items, typename AppendItem>
    bool appendContainer(std::string_view opening, std::string_view closing, Items items, AppendItem appendItem) {
        if (depth_ == deepest_) return false;
        appendLine(opening);
        ++depth_;
        if (!std::all_of(items.begin(), items.end(), appendItem)) return false;
        --depth_;
        appendLine(closing);
        return true;
    }

    std::size_t deepest_;
    std::size_t depth_ = 0;
    NSData xml_;
};

} // namespace

std::optional<NSData> xmlOfValue(const Value& root, std::size_t deepest) { return Writer(deepest).write(root); }

} // namespace kelvo
