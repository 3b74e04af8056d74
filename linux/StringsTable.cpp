#include "linux/StringsTable.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace kelvo {

namespace {

constexpr char32_t kReplacementCharacter = 0xFFFD;

bool isHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

void appendUTF8(std::string& text, char32_t codePoint) {
    const auto append = [&text](char32_t byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
    const auto appendTrail = [&](unsigned shift) { append(0x80U | ((codePoint >> shift) & 0x3FU)); };
    if (codePoint < 0x80) {
        append(codePoint);
    } else if (codePoint < 0x800) {
        append(0xC0U | (codePoint >> 6U));
        appendTrail(0);
    } else if (codePoint < 0x10000) {
        append(0xE0U | (codePoint >> 12U));
        appendTrail(6);
        appendTrail(0);
    } else {
        append(0xF0U | (codePoint >> 18U));
        appendTrail(12);
        appendTrail(6);
        appendTrail(0);
    }
}

/// Combines UTF-16 units into characters. An unpaired surrogate becomes the replacement character. The caller must
/// signal when other text follows, or the end.
class UTF16Joiner {
public:
    explicit UTF16Joiner(std::string& text) : text_(text) {}
    UTF16Joiner(const UTF16Joiner&) = delete;
    UTF16Joiner& operator=(const UTF16Joiner&) = delete;

    void add(char32_t unit) {
        if (high_ != 0 && isLowSurrogate(unit)) {
            appendUTF8(text_, 0x10000U + ((std::exchange(high_, 0) - 0xD800U) << 10U) + (unit - 0xDC00U));
            return;
        }
        finish();
        if (isHighSurrogate(unit)) {
            high_ = unit;
        } else {
            appendUTF8(text_, isLowSurrogate(unit) ? kReplacementCharacter : unit);
        }
    }

    /// No second half follows.
    void finish() {
        if (std::exchange(high_, 0) != 0) appendUTF8(text_, kReplacementCharacter);
    }

private:
    std::string& text_;
    char32_t high_ = 0;
};

std::string fromUTF16(std::span<const std::uint8_t> bytes, bool bigEndian) {
    std::string text;
    UTF16Joiner joiner(text);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const char32_t first = bytes[i];
        const char32_t second = bytes[i + 1];
        joiner.add(bigEndian ? (first << 8U) | second : (second << 8U) | first);
    }
    joiner.finish();
    return text;
}

std::string asUTF8(std::span<const std::uint8_t> data) {
    const auto startsWith = [data](std::initializer_list<std::uint8_t> mark) {
        return data.size() >= mark.size() && std::equal(mark.begin(), mark.end(), data.begin());
    };
    if (startsWith({0xFE, 0xFF})) return fromUTF16(data.subspan(2), true);
    if (startsWith({0xFF, 0xFE})) return fromUTF16(data.subspan(2), false);
    if (startsWith({0xEF, 0xBB, 0xBF})) data = data.subspan(3);
    return {data.begin(), data.end()};
}

bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

bool isWordCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '.' ||
           c == '-';
}

/// Splits the text of a table into tokens.
class Scanner {
public:
    explicit Scanner(std::string_view text) : rest_(text) {}

    bool take(std::string_view token) {
        skipBlanksAndComments();
        if (!rest_.starts_with(token)) return false;
        rest_.remove_prefix(token.size());
        return true;
    }

    std::optional<std::string> takeKey() {
        if (take("\"")) return takeQuoted();
        const auto end = std::find_if_not(rest_.begin(), rest_.end(), isWordCharacter);
        std::string word(rest_.begin(), end);
        rest_.remove_prefix(word.size());
        return word.empty() ? std::nullopt : std::optional(std::move(word));
    }

    std::optional<std::string> takeValue() { return take("\"") ? takeQuoted() : std::nullopt; }

private:
    void skipBlanksAndComments() {
        for (;;) {
            while (!rest_.empty() && isBlank(rest_.front())) rest_.remove_prefix(1);
            if (rest_.starts_with("/*")) {
                skipPast("*/", 2);
            } else if (rest_.starts_with("//")) {
                skipPast("\n", 2);
            } else {
                return;
            }
        }
    }

    /// Advances past the next `end`, or to the end of the text if there is none.
    void skipPast(std::string_view end, std::size_t from) {
        const std::size_t position = rest_.find(end, from);
        rest_.remove_prefix(position == std::string_view::npos ? rest_.size() : position + end.size());
    }

    /// The text up to the closing quote; none if it is missing.
    std::optional<std::string> takeQuoted() {
        std::string text;
        UTF16Joiner joiner(text);
        while (!rest_.empty()) {
            const char c = takeCharacter();
            if (c == '\\' && !rest_.empty()) {
                takeEscape(text, joiner);
                continue;
            }
            joiner.finish();
            if (c == '"') return text;
            text += c;
        }
        return std::nullopt;
    }

    /// The escape after a backslash: a UTF-16 code, the letter of a control character, or the character itself.
    void takeEscape(std::string& text, UTF16Joiner& joiner) {
        const char c = takeCharacter();
        if (c == 'u' || c == 'U') {
            if (const std::optional<char32_t> unit = takeHexadecimalUnit()) {
                joiner.add(*unit);
                return;
            }
        }
        joiner.finish();
        text += c == 'n' ? '\n' : c == 't' ? '\t' : c == 'r' ? '\r' : c;
    }

    std::optional<char32_t> takeHexadecimalUnit() {
        constexpr std::size_t kDigits = 4;
        const std::string_view digits = rest_.substr(0, kDigits);
        std::uint16_t unit = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), unit, 16);
        if (error != std::errc() || end != digits.data() + kDigits) return std::nullopt;
        rest_.remove_prefix(kDigits);
        return unit;
    }

    char takeCharacter() {
        const char c = rest_.front();
        rest_.remove_prefix(1);
        return c;
    }

    std::string_view rest_;
};

} // namespace

StringsTable::StringsTable(std::span<const std::uint8_t> data) {
    const std::string text = asUTF8(data);
    Scanner scanner(text);
    for (;;) {
        std::optional<std::string> key = scanner.takeKey();
        if (!key || !scanner.take("=")) return;
        std::optional<std::string> value = scanner.takeValue();
        if (!value || !scanner.take(";")) return;
        texts_.insert_or_assign(std::move(*key), std::move(*value));
    }
}

std::optional<std::string> StringsTable::textForKey(std::string_view key) const {
    const auto found = texts_.find(key);
    return found == texts_.end() ? std::nullopt : std::optional(found->second);
}

} // namespace kelvo
