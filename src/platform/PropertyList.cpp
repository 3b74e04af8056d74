#include "platform/PropertyList.h"

#include "platform/Files.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <functional>
#include <limits>
#include <unordered_map>

namespace platform {

namespace {

/// A dictionary this small is searched faster in order than through an index; a larger one would take time that grows
/// with the square of a hostile file's size.
constexpr std::size_t kLargestUnindexedCount = 32;

struct HashOfKey {
    using is_transparent = void;
    std::size_t operator()(std::string_view key) const { return std::hash<std::string_view>()(key); }
};

bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

std::string_view withoutLeadingBlanks(std::string_view text) {
    const auto first = std::find_if_not(text.begin(), text.end(), isBlank);
    return text.substr(static_cast<std::size_t>(first - text.begin()));
}

/// The start of a text that a number can be read from: its sign, and its digits with point and exponent.
struct NumberText {
    bool negative = false;
    std::string_view digits;
    bool isWhole = true;
};

NumberText numberAtStart(std::string_view text) {
    text = withoutLeadingBlanks(text);
    NumberText number;
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
        number.negative = text.front() == '-';
        text.remove_prefix(1);
    }
    std::size_t end = 0;
    const auto skipDigits = [&] {
        const std::size_t start = end;
        while (end < text.size() && isDigit(text[end])) ++end;
        return end - start;
    };
    std::size_t digitCount = skipDigits();
    if (end < text.size() && text[end] == '.') {
        ++end;
        digitCount += skipDigits();
        number.isWhole = false;
    }
    if (digitCount == 0) return number;
    const std::size_t endOfMantissa = end;
    if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
        ++end;
        if (end < text.size() && (text[end] == '-' || text[end] == '+')) ++end;
        if (skipDigits() == 0) {
            end = endOfMantissa;
        } else {
            number.isWhole = false;
        }
    }
    number.digits = text.substr(0, end);
    return number;
}

/// An exponent with its sign, held to a range that no number of digits in a text can leave.
std::int64_t leadingExponent(std::string_view text) {
    constexpr std::int64_t kLargest = std::int64_t{1} << 62;
    const bool negative = text.front() == '-';
    if (negative || text.front() == '+') text.remove_prefix(1);
    std::int64_t exponent = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), exponent);
    exponent = error == std::errc() ? std::min(exponent, kLargest) : kLargest;
    return negative ? -exponent : exponent;
}

/// The magnitude of a number that std::from_chars found to be out of a double's range: infinite or nothing, by the
/// decimal place of its first digit that counts.
double magnitudeOutOfRange(std::string_view digits) {
    const std::size_t endOfMantissa = std::min(digits.find_first_of("eE"), digits.size());
    const std::string_view mantissa = digits.substr(0, endOfMantissa);
    const std::size_t firstCounting = mantissa.find_first_not_of("0.");
    if (firstCounting == std::string_view::npos) return 0.0;
    const auto point = static_cast<std::int64_t>(std::min(mantissa.find('.'), mantissa.size()));
    std::int64_t place = point - static_cast<std::int64_t>(firstCounting);
    if (endOfMantissa < digits.size()) place += leadingExponent(digits.substr(endOfMantissa + 1));
    return place > 0 ? std::numeric_limits<double>::infinity() : 0.0;
}

template <typename Integer>
Integer saturated(double number) {
    if (std::isnan(number)) return 0;
    // The bounds as doubles: the upper one is one more than the largest integer, which a double cannot always hold.
    constexpr auto lowest = static_cast<double>(std::numeric_limits<Integer>::min());
    constexpr double beyond = -lowest;
    if (number <= lowest) return std::numeric_limits<Integer>::min();
    if (number >= beyond) return std::numeric_limits<Integer>::max();
    return static_cast<Integer>(number);
}

std::int64_t leadingInteger(std::string_view text) {
    const NumberText number = numberAtStart(text);
    if (!number.isWhole) return saturated<std::int64_t>(leadingNumber(text));
    std::uint64_t magnitude = 0;
    const auto [end, error] =
        std::from_chars(number.digits.data(), number.digits.data() + number.digits.size(), magnitude);
    constexpr auto largest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    const bool tooLarge = error == std::errc::result_out_of_range || magnitude > largest;
    if (number.negative) {
        return tooLarge ? std::numeric_limits<std::int64_t>::min() : -static_cast<std::int64_t>(magnitude);
    }
    return tooLarge ? std::numeric_limits<std::int64_t>::max() : static_cast<std::int64_t>(magnitude);
}

bool readsAsTrue(std::string_view text) {
    text = withoutLeadingBlanks(text);
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);
    text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
    return !text.empty() && (std::string_view("YyTt").find(text.front()) != std::string_view::npos ||
                             (text.front() >= '1' && text.front() <= '9'));
}

template <typename Number>
std::string textForm(Number number) {
    std::array<char, 32> buffer{};
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    return {buffer.data(), end};
}

void appendHexadecimal(std::string& text, std::uint32_t number, int digits) {
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) text += "0123456789abcdef"[(number >> shift) & 0xFU];
}

/// The UTF-16 units of the character that starts at `position`, which moves behind it. A byte that starts no character
/// stands for itself.
std::uint32_t nextCodePoint(std::string_view text, std::size_t& position) {
    const auto byteAt = [&](std::size_t index) {
        return static_cast<std::uint32_t>(static_cast<unsigned char>(text[index]));
    };
    const std::uint32_t first = byteAt(position++);
    const std::size_t following = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : first >= 0xC0 ? 1 : 0;
    if (following == 0 || position + following > text.size()) return first;
    std::uint32_t codePoint = first & (0x3FU >> following);
    for (std::size_t i = 0; i < following; ++i) {
        if ((byteAt(position + i) & 0xC0U) != 0x80U) return first;
        codePoint = (codePoint << 6U) | (byteAt(position + i) & 0x3FU);
    }
    position += following;
    return codePoint;
}

/// A text inside a collection: bare when it is a plain word, else in quotes with everything unprintable escaped, so
/// that no text can break the line it is logged on.
std::string quotedIfNeeded(std::string_view text) {
    const auto isWordCharacter = [](char c) { return isLetter(c) || isDigit(c) || c == '_' || c == '$'; };
    if (!text.empty() && std::all_of(text.begin(), text.end(), isWordCharacter)) return std::string(text);
    std::string quoted = "\"";
    for (std::size_t position = 0; position < text.size();) {
        const std::uint32_t codePoint = nextCodePoint(text, position);
        if (codePoint == '"' || codePoint == '\\') {
            quoted += '\\';
            quoted += static_cast<char>(codePoint);
        } else if (codePoint == '\n') {
            quoted += "\\n";
        } else if (codePoint >= 0x20 && codePoint < 0x7F) {
            quoted += static_cast<char>(codePoint);
        } else if (codePoint > 0xFFFF) {
            quoted += "\\U";
            appendHexadecimal(quoted, 0xD7C0U + (codePoint >> 10U), 4);
            quoted += "\\U";
            appendHexadecimal(quoted, 0xDC00U + (codePoint & 0x3FFU), 4);
        } else {
            quoted += "\\U";
            appendHexadecimal(quoted, codePoint, 4);
        }
    }
    return quoted += '"';
}

/// A property list nested deeper than this is cut short in a description.
constexpr int kDeepestDescription = 64;

std::string describe(const Value& value, int depth);

std::string describe(const NSMutableArray& array, int depth) {
    std::string text = "(";
    for (std::size_t i = 0; i < array.count(); ++i)
        text += (i == 0 ? " " : ", ") + describe(array.objectAtIndex(i), depth);
    return text += " )";
}

std::string describe(const NSMutableDictionary& dictionary, int depth) {
    std::string text = "{";
    for (const std::string& key : dictionary.allKeys()) {
        text += ' ' + quotedIfNeeded(key) + " = " + describe(dictionary.objectForKey(key), depth) + ';';
    }
    return text += " }";
}

std::string describe(const NSData& data) {
    std::string text = "<";
    for (const std::uint8_t byte : data) appendHexadecimal(text, byte, 2);
    return text += '>';
}

std::string describe(NSDate date) {
    constexpr double kReferenceDateSince1970 = 978307200.0;
    const auto seconds =
        saturated<std::int64_t>(std::floor(date.timeIntervalSinceReferenceDate + kReferenceDateSince1970));
    constexpr std::int64_t secondsPerDay = 86400;
    std::int64_t day = seconds / secondsPerDay;
    std::int64_t second = seconds % secondsPerDay;
    if (second < 0) {
        second += secondsPerDay;
        --day;
    }
    // Days to year, month and day in the Gregorian calendar, counted in eras of 400 years that begin in March.
    day += 719468;
    const std::int64_t era = (day >= 0 ? day : day - 146096) / 146097;
    const std::int64_t dayOfEra = day - era * 146097;
    const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t monthFromMarch = (5 * dayOfYear + 2) / 153;
    const std::int64_t month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
    const std::int64_t year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
    const auto padded = [](std::int64_t number, std::size_t width) {
        std::string digits = textForm(number);
        return digits.size() < width ? std::string(width - digits.size(), '0') + digits : digits;
    };
    return padded(year, 4) + '-' + padded(month, 2) + '-' + padded(dayOfYear - (153 * monthFromMarch + 2) / 5 + 1, 2) +
           ' ' + padded(second / 3600, 2) + ':' + padded(second / 60 % 60, 2) + ':' + padded(second % 60, 2) + " +0000";
}

/// The description of a value inside a collection; at depth 0, of the value by itself.
std::string describe(const Value& value, int depth) {
    if (depth > kDeepestDescription) return "...";
    switch (value.kind()) {
    case Value::Kind::None:
        return "(null)";
    case Value::Kind::Boolean:
        return value.boolValue() ? "1" : "0";
    case Value::Kind::Data:
        return describe(*value.data());
    case Value::Kind::Date:
        return depth == 0 ? describe(*value.date()) : quotedIfNeeded(describe(*value.date()));
    case Value::Kind::Array:
        return describe(value.array(), depth + 1);
    case Value::Kind::Dictionary:
        return describe(value.dictionary(), depth + 1);
    case Value::Kind::Integer:
    case Value::Kind::UnsignedInteger:
    case Value::Kind::Real:
    case Value::Kind::String:
        break;
    }
    const std::string text = value.stringValue().value_or("");
    return depth == 0 ? text : quotedIfNeeded(text);
}

/// Whether an integer and a real are one number. A real at or beyond `limit`, the first that the integer's kind cannot
/// hold, is none of its numbers; it must not be converted.
template <typename Integer>
bool isEqualToReal(Integer integer, double real, double limit) {
    return static_cast<double>(integer) == real && real < limit && static_cast<Integer>(real) == integer;
}

} // namespace

double leadingNumber(std::string_view text) {
    const NumberText number = numberAtStart(text);
    if (number.digits.empty()) return 0.0;
    double magnitude = 0.0;
    const auto [end, error] =
        std::from_chars(number.digits.data(), number.digits.data() + number.digits.size(), magnitude);
    if (error == std::errc::result_out_of_range) magnitude = magnitudeOutOfRange(number.digits);
    return number.negative ? -magnitude : magnitude;
}

bool isWhollyNumber(std::string_view text) {
    const std::string_view digits = numberAtStart(text).digits;
    if (digits.empty()) return false;
    const auto end = static_cast<std::size_t>(digits.data() - text.data()) + digits.size();
    return withoutLeadingBlanks(text.substr(end)).empty();
}

std::int32_t truncatedToInt32(double number) { return saturated<std::int32_t>(number); }

NSMutableArray NSMutableArray::arrayWithObjects(std::initializer_list<Value> values) {
    NSMutableArray array;
    array.storage_ = std::make_shared<std::vector<Value>>(values);
    return array;
}

NSMutableArray NSMutableArray::arrayWithCapacity(std::size_t capacity) {
    NSMutableArray array = arrayWithObjects();
    array.storage_->reserve(capacity);
    return array;
}

std::size_t NSMutableArray::count() const { return storage_ ? storage_->size() : 0; }

Value NSMutableArray::objectAtIndex(std::size_t index) const { return index < count() ? (*storage_)[index] : Value(); }

std::span<const Value> NSMutableArray::objects() const { return storage_ ? *storage_ : std::span<const Value>(); }

void NSMutableArray::addObject(Value value) {
    if (storage_ && value) storage_->push_back(std::move(value));
}

bool NSMutableArray::isEqual(const NSMutableArray& other) const {
    if (isIdenticalTo(other)) return true;
    return storage_ && other.storage_ &&
           std::equal(storage_->begin(), storage_->end(), other.storage_->begin(), other.storage_->end(),
                      [](const Value& mine, const Value& theirs) { return mine.isEqual(theirs); });
}

struct NSMutableDictionary::Storage {
    std::vector<Entry> entries;
    std::unordered_map<std::string, std::size_t, HashOfKey, std::equal_to<>> index;

    Value* find(std::string_view key) {
        if (entries.size() <= kLargestUnindexedCount) {
            const auto entry =
                std::find_if(entries.begin(), entries.end(), [&](const auto& e) { return e.first == key; });
            return entry == entries.end() ? nullptr : &entry->second;
        }
        const auto place = index.find(key);
        return place == index.end() ? nullptr : &entries[place->second].second;
    }

    void append(std::string_view key, Value value) {
        entries.emplace_back(key, std::move(value));
        if (entries.size() <= kLargestUnindexedCount) return;
        for (std::size_t i = index.size(); i < entries.size(); ++i) index.emplace(entries[i].first, i);
    }
};

NSMutableDictionary NSMutableDictionary::dictionary() {
    NSMutableDictionary dictionary;
    dictionary.storage_ = std::make_shared<Storage>();
    return dictionary;
}

NSMutableDictionary NSMutableDictionary::dictionaryWithCapacity(std::size_t capacity) {
    NSMutableDictionary made = dictionary();
    made.storage_->entries.reserve(capacity);
    return made;
}

NSMutableDictionary NSMutableDictionary::dictionaryWithObjectsAndKeys(std::initializer_list<ObjectAndKey> pairs) {
    NSMutableDictionary made = dictionary();
    for (const ObjectAndKey& pair : pairs) {
        if (!pair.object) break;
        made.setObjectForKey(pair.object, pair.key);
    }
    return made;
}

NSMutableDictionary NSMutableDictionary::dictionaryWithContentsOfFile(const std::string& path) {
    const std::optional<NSData> contents = NSFileManager::defaultManager().contentsAtPath(path);
    return contents ? PropertyLists::current().createFromFileData(*contents).dictionary() : NSMutableDictionary();
}

std::size_t NSMutableDictionary::count() const { return storage_ ? storage_->entries.size() : 0; }

std::vector<std::string> NSMutableDictionary::allKeys() const {
    std::vector<std::string> keys;
    if (!storage_) return keys;
    keys.reserve(count());
    for (const auto& entry : storage_->entries) keys.push_back(entry.first);
    return keys;
}

std::span<const NSMutableDictionary::Entry> NSMutableDictionary::entries() const {
    return storage_ ? storage_->entries : std::span<const Entry>();
}

Value NSMutableDictionary::objectForKey(std::string_view key) const {
    const Value* value = storage_ ? storage_->find(key) : nullptr;
    return value ? *value : Value();
}

void NSMutableDictionary::setObjectForKey(Value value, std::string_view key) {
    if (!storage_ || !value) return;
    if (Value* old = storage_->find(key)) {
        *old = std::move(value);
    } else {
        storage_->append(key, std::move(value));
    }
}

bool NSMutableDictionary::writeToFileAtomically(const std::string& path) const {
    if (!storage_) return false;
    const std::optional<NSData> contents = PropertyLists::current().createXMLData(*this);
    return contents && NSFileManager::defaultManager().writeAtomically(path, *contents);
}

bool NSMutableDictionary::writeToNewFileAtomically(const std::string& path) const {
    if (!storage_) return false;
    const std::optional<NSData> contents = PropertyLists::current().createXMLData(*this);
    return contents && NSFileManager::defaultManager().createAtomically(path, *contents);
}

bool NSMutableDictionary::isEqual(const NSMutableDictionary& other) const {
    if (isIdenticalTo(other)) return true;
    return storage_ && other.storage_ && count() == other.count() &&
           std::all_of(storage_->entries.begin(), storage_->entries.end(),
                       [&](const auto& entry) { return entry.second.isEqual(other.objectForKey(entry.first)); });
}

Value::Value(const std::optional<std::string>& value) {
    if (value) content_ = *value;
}

Value::Value(NSMutableArray value) {
    if (value) content_ = std::move(value);
}

Value::Value(NSMutableDictionary value) {
    if (value) content_ = std::move(value);
}

Value Value::fromUnsigned(std::uint64_t value) {
    if (std::in_range<std::int64_t>(value)) return {static_cast<std::int64_t>(value)};
    Value large;
    large.content_ = value;
    return large;
}

bool Value::isNumber() const {
    return kind() == Kind::Boolean || kind() == Kind::Integer || kind() == Kind::UnsignedInteger ||
           kind() == Kind::Real;
}

bool Value::hasNumber() const { return isNumber() || (text() && !numberAtStart(*text()).digits.empty()); }

bool Value::boolValue() const {
    if (const auto* text = std::get_if<std::string>(&content_)) return readsAsTrue(*text);
    if (const auto* real = std::get_if<double>(&content_)) return *real != 0.0;
    return lowBits() != 0;
}

std::int32_t Value::intValue() const {
    if (const auto* real = std::get_if<double>(&content_)) return saturated<std::int32_t>(*real);
    constexpr std::int64_t lowest = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t highest = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp(longLongValue(), lowest, highest));
}

std::int64_t Value::longLongValue() const {
    if (kind() == Kind::UnsignedInteger) return std::numeric_limits<std::int64_t>::max();
    return static_cast<std::int64_t>(lowBits());
}

std::uint64_t Value::lowBits() const {
    switch (kind()) {
    case Kind::Boolean:
        return std::get<bool>(content_) ? 1 : 0;
    case Kind::Integer:
        return static_cast<std::uint64_t>(std::get<std::int64_t>(content_));
    case Kind::UnsignedInteger:
        return std::get<std::uint64_t>(content_);
    case Kind::Real:
        return static_cast<std::uint64_t>(saturated<std::int64_t>(std::get<double>(content_)));
    case Kind::String:
        return static_cast<std::uint64_t>(leadingInteger(std::get<std::string>(content_)));
    default:
        return 0;
    }
}

double Value::doubleValue() const {
    switch (kind()) {
    case Kind::Boolean:
        return std::get<bool>(content_) ? 1.0 : 0.0;
    case Kind::Integer:
        return static_cast<double>(std::get<std::int64_t>(content_));
    case Kind::UnsignedInteger:
        return static_cast<double>(std::get<std::uint64_t>(content_));
    case Kind::Real:
        return std::get<double>(content_);
    case Kind::String:
        return leadingNumber(std::get<std::string>(content_));
    default:
        return 0.0;
    }
}

float Value::floatValue() const {
    const double number = doubleValue();
    // Converting a finite double beyond the range of a float is undefined; it saturates like every narrowing here.
    constexpr double largest = std::numeric_limits<float>::max();
    return static_cast<float>(std::isfinite(number) ? std::clamp(number, -largest, largest) : number);
}

std::optional<std::string> Value::string() const { return text() ? std::optional(*text()) : std::nullopt; }

std::optional<std::string> Value::stringValue() const {
    switch (kind()) {
    case Kind::String:
        return std::get<std::string>(content_);
    case Kind::Boolean:
        return std::get<bool>(content_) ? "1" : "0";
    case Kind::Integer:
        return textForm(std::get<std::int64_t>(content_));
    case Kind::UnsignedInteger:
        return textForm(std::get<std::uint64_t>(content_));
    case Kind::Real:
        return textForm(std::get<double>(content_));
    default:
        return std::nullopt;
    }
}

NSMutableArray Value::array() const {
    const auto* array = std::get_if<NSMutableArray>(&content_);
    return array ? *array : NSMutableArray();
}

NSMutableDictionary Value::dictionary() const {
    const auto* dictionary = std::get_if<NSMutableDictionary>(&content_);
    return dictionary ? *dictionary : NSMutableDictionary();
}

bool Value::isEqual(const Value& other) const {
    if (isNumber() && other.isNumber()) {
        const auto* mine = std::get_if<double>(&content_);
        const auto* theirs = std::get_if<double>(&other.content_);
        if (mine && theirs) return *mine == *theirs;
        if (theirs) return other.isEqual(*this);
        if (kind() != Kind::UnsignedInteger && other.kind() != Kind::UnsignedInteger && !mine) {
            return longLongValue() == other.longLongValue();
        }
        if (!mine) return kind() == other.kind() && lowBits() == other.lowBits();
        return other.kind() == Kind::UnsignedInteger ? isEqualToReal(other.lowBits(), *mine, 0x1p64)
                                                     : isEqualToReal(other.longLongValue(), *mine, 0x1p63);
    }
    if (kind() != other.kind()) return false;
    switch (kind()) {
    case Kind::String:
        return std::get<std::string>(content_) == std::get<std::string>(other.content_);
    case Kind::Data:
        return *data() == *other.data();
    case Kind::Date:
        return *date() == *other.date();
    case Kind::Array:
        return array().isEqual(other.array());
    case Kind::Dictionary:
        return dictionary().isEqual(other.dictionary());
    default:
        return true;
    }
}

std::string Value::description() const { return describe(*this, 0); }

PropertyLists::~PropertyLists() = default;

} // namespace platform
