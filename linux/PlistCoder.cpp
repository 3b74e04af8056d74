#include "linux/PlistCoder.h"

#include "linux/PlistDepth.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include <locale.h>
#include <plist/plist.h>

namespace kelvo {

using platform::NSData;
using platform::NSDate;
using platform::NSMutableArray;
using platform::NSMutableDictionary;
using platform::Value;

namespace {

constexpr std::size_t kLargestMessage = std::size_t{1} << 20U;
constexpr std::size_t kDeepestMessage = 64;
/// Deeper than any file anyone writes, and far from what the stack holds of the library's and our own recursion.
constexpr std::size_t kDeepestFile = 512;

/// Seconds from the start of 1970 to the start of 2001, where property lists count from.
constexpr std::chrono::seconds kReferenceDate{978307200};

struct NodeDeleter {
    void operator()(void* node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, NodeDeleter>;

struct Deallocator {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using Allocated = std::unique_ptr<T, Deallocator>;

/// Makes this thread write and read numbers with a decimal point while it lives: the library formats and parses reals
/// by the locale of its caller.
class PointAsDecimalSeparator {
public:
    PointAsDecimalSeparator() : previous_(::uselocale(cLocale())) {}
    PointAsDecimalSeparator(const PointAsDecimalSeparator&) = delete;
    PointAsDecimalSeparator& operator=(const PointAsDecimalSeparator&) = delete;
    ~PointAsDecimalSeparator() { (void)::uselocale(previous_); }

private:
    /// One for the whole process, which ends with it.
    static locale_t cLocale() {
        static const locale_t locale = ::newlocale(LC_ALL_MASK, "C", nullptr);
        return locale;
    }

    locale_t previous_;
};

Node nodeFromXML(std::span<const std::uint8_t> text) {
    plist_t node = nullptr;
    plist_from_xml(reinterpret_cast<const char*>(text.data()), static_cast<std::uint32_t>(text.size()), &node);
    return Node(node);
}

Node nodeFromBinary(std::span<const std::uint8_t> data) {
    plist_t node = nullptr;
    plist_from_bin(reinterpret_cast<const char*>(data.data()), static_cast<std::uint32_t>(data.size()), &node);
    return Node(node);
}

/// The node of one XML element, for what the library's constructors cannot make.
Node nodeOfElement(const std::string& element) {
    return nodeFromXML({reinterpret_cast<const std::uint8_t*>(element.data()), element.size()});
}

/// What the library writes of `node`; empty when it has nothing to write.
template <typename Bytes>
Bytes xmlOf(plist_t node) {
    char* text = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(node, &text, &length);
    const Allocated<char> owner(text);
    // Of the result's own kind, so that they are copied in one piece.
    const auto* const first = reinterpret_cast<const typename Bytes::value_type*>(text);
    return text ? Bytes(first, first + length) : Bytes();
}

/// What stands between <tag> and </tag> when the library writes `node`, for what its accessors cannot tell; empty when
/// it has nothing to write.
std::string textOfElement(plist_t node, std::string_view tag) {
    const auto text = xmlOf<std::string>(node);
    const std::string opening = '<' + std::string(tag) + '>';
    const std::size_t start = text.find(opening);
    if (start == std::string::npos) return {};
    const std::size_t content = start + opening.size();
    return text.substr(content, text.find('<', content) - content);
}

Value decoded(plist_t node);

Value decodedBoolean(plist_t node) {
    std::uint8_t boolean = 0;
    plist_get_bool_val(node, &boolean);
    return boolean != 0;
}

/// The library's accessor gives 64 bits and keeps to itself whether they are signed.
Value decodedInteger(plist_t node) {
    std::uint64_t bits = 0;
    plist_get_uint_val(node, &bits);
    const bool isLarge = bits > std::uint64_t{std::numeric_limits<std::int64_t>::max()};
    if (isLarge && !textOfElement(node, "integer").starts_with('-')) return bits;
    return static_cast<std::int64_t>(bits);
}

Value decodedReal(plist_t node) {
    double real = 0.0;
    plist_get_real_val(node, &real);
    return real;
}

Value decodedString(plist_t node) {
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    return text ? std::string(text, length) : std::string();
}

Value decodedData(plist_t node) {
    std::uint64_t length = 0;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(plist_get_data_ptr(node, &length));
    return bytes ? NSData(bytes, bytes + length) : NSData();
}

/// Takes a number and the character behind it off the start of `text`.
template <typename Number>
bool takeNumber(std::string_view& text, Number& number, char separator) {
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || next == end || *next != separator) return false;
    text.remove_prefix(static_cast<std::size_t>(next - text.data()) + 1);
    return true;
}

/// Of four digits, as the XML format has it.
bool canBeWritten(int year) { return year >= 0 && year <= 9999; }

/// By way of its text, since the library's accessor ends in 2069 and gives no hint when it does.
Value decodedDate(plist_t node) {
    const std::string element = textOfElement(node, "date");
    std::string_view text = element;
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    if (!takeNumber(text, year, '-') || !takeNumber(text, month, '-') || !takeNumber(text, day, 'T') ||
        !takeNumber(text, hour, ':') || !takeNumber(text, minute, ':') || !takeNumber(text, second, 'Z')) {
        return {};
    }
    if (!canBeWritten(year)) return {};
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(month), std::chrono::day(day)};
    if (!date.ok()) return {};
    const std::chrono::sys_seconds moment = std::chrono::sys_days(date) + std::chrono::hours(hour) +
                                            std::chrono::minutes(minute) + std::chrono::seconds(second);
    return NSDate{static_cast<double>((moment.time_since_epoch() - kReferenceDate).count())};
}

Value decodedIdentifier(plist_t node) {
    std::uint64_t identifier = 0;
    plist_get_uid_val(node, &identifier);
    return NSMutableDictionary::dictionaryWithObjectsAndKeys({{identifier, "CF$UID"}});
}

Value decodedArray(plist_t node) {
    NSMutableArray array = NSMutableArray::arrayWithCapacity(plist_array_get_size(node));
    plist_array_iter iterator = nullptr;
    plist_array_new_iter(node, &iterator);
    const Allocated<void> owner(iterator);
    plist_t item = nullptr;
    for (plist_array_next_item(node, iterator, &item); item; plist_array_next_item(node, iterator, &item)) {
        Value value = decoded(item);
        if (!value) return {};
        array.addObject(std::move(value));
    }
    return array;
}

Value decodedDictionary(plist_t node) {
    NSMutableDictionary dictionary = NSMutableDictionary::dictionaryWithCapacity(plist_dict_get_size(node));
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    const Allocated<void> owner(iterator);
    for (;;) {
        char* key = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, iterator, &key, &item);
        const Allocated<char> keyOwner(key);
        if (!item) return dictionary;
        Value value = decoded(item);
        if (!value || !key) return {};
        dictionary.setObjectForKey(std::move(value), key);
    }
}

/// The value of a node; none when it, or anything in it, is none that a property list can hold.
Value decoded(plist_t node) {
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN:
        return decodedBoolean(node);
    case PLIST_UINT:
        return decodedInteger(node);
    case PLIST_REAL:
        return decodedReal(node);
    case PLIST_STRING:
        return decodedString(node);
    case PLIST_DATA:
        return decodedData(node);
    case PLIST_DATE:
        return decodedDate(node);
    case PLIST_UID:
        return decodedIdentifier(node);
    case PLIST_ARRAY:
        return decodedArray(node);
    case PLIST_DICT:
        return decodedDictionary(node);
    default:
        return {};
    }
}

/// The node of a value that stands inside of so many containers; null when it cannot be encoded.
Node encoded(const Value& value, std::size_t depth);

bool isEncodable(std::string_view text) { return text.find('\0') == std::string_view::npos; }

Node encodedString(const std::string& text) {
    return isEncodable(text) ? Node(plist_new_string(text.c_str())) : nullptr;
}

/// By way of its text, since the library's constructor takes the upper half of the range for negative numbers.
Node encodedLargeInteger(std::uint64_t integer) {
    return nodeOfElement("<integer>" + std::to_string(integer) + "</integer>");
}

Node encodedData(const NSData& data) {
    return Node(plist_new_data(reinterpret_cast<const char*>(data.data()), data.size()));
}

/// By way of its text, since the library's constructor ends in 2069.
Node encodedDate(NSDate date) {
    // Beyond what can be written, and within what the calendar's years of 16 bits can count; NaN is not below it.
    constexpr double kFarAway = 3e11;
    const double seconds = std::trunc(date.timeIntervalSinceReferenceDate);
    if (!(std::abs(seconds) < kFarAway)) return nullptr;
    const std::chrono::sys_seconds moment(std::chrono::seconds(static_cast<std::int64_t>(seconds)) + kReferenceDate);
    const auto midnight = std::chrono::floor<std::chrono::days>(moment);
    const std::chrono::year_month_day day(midnight);
    if (!canBeWritten(static_cast<int>(day.year()))) return nullptr;
    const std::chrono::hh_mm_ss time(moment - midnight);
    std::array<char, 64> element{};
    (void)std::snprintf(element.data(), element.size(), "<date>%04d-%02u-%02uT%02d:%02d:%02dZ</date>",
                        static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                        static_cast<unsigned>(day.day()), static_cast<int>(time.hours().count()),
                        static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
    return nodeOfElement(element.data());
}

Node encodedArray(const NSMutableArray& array, std::size_t depth) {
    Node node(plist_new_array());
    for (const Value& value : array.objects()) {
        Node item = encoded(value, depth + 1);
        if (!item) return nullptr;
        plist_array_append_item(node.get(), item.release());
    }
    return node;
}

Node encodedDictionary(const NSMutableDictionary& dictionary, std::size_t depth) {
    Node node(plist_new_dict());
    for (const auto& [key, value] : dictionary.entries()) {
        Node item = isEncodable(key) ? encoded(value, depth + 1) : nullptr;
        if (!item) return nullptr;
        plist_dict_set_item(node.get(), key.c_str(), item.release());
    }
    return node;
}

Node encoded(const Value& value, std::size_t depth) {
    // What is written can be read again. This also ends the walk through an array that holds itself.
    const bool isContainer = value.kind() == Value::Kind::Array || value.kind() == Value::Kind::Dictionary;
    if (isContainer && depth == kDeepestFile) return nullptr;
    switch (value.kind()) {
    case Value::Kind::None:
        return nullptr;
    case Value::Kind::Boolean:
        return Node(plist_new_bool(value.boolValue() ? 1 : 0));
    case Value::Kind::Integer:
        return Node(plist_new_uint(static_cast<std::uint64_t>(value.longLongValue())));
    case Value::Kind::UnsignedInteger:
        return encodedLargeInteger(value.lowBits());
    case Value::Kind::Real:
        return Node(plist_new_real(value.doubleValue()));
    case Value::Kind::String:
        return encodedString(*value.text());
    case Value::Kind::Data:
        return encodedData(*value.data());
    case Value::Kind::Date:
        return encodedDate(*value.date());
    case Value::Kind::Array:
        return encodedArray(value.array(), depth);
    case Value::Kind::Dictionary:
        return encodedDictionary(value.dictionary(), depth);
    }
    return nullptr;
}

std::span<const std::uint8_t> withoutByteOrderMark(std::span<const std::uint8_t> text) {
    const bool isMarked = text.size() >= 3 && text[0] == 0xEF && text[1] == 0xBB && text[2] == 0xBF;
    return isMarked ? text.subspan(3) : text;
}

/// The root of a list nested no deeper than `deepest`. The library counts sizes in 32 bits.
Value rootFrom(std::span<const std::uint8_t> data, std::size_t deepest) {
    if (!std::in_range<std::uint32_t>(data.size())) return {};
    const bool isBinary = isBinaryPropertyList(data);
    const std::optional<std::size_t> nesting = isBinary ? nestingOfBinary(data) : nestingOfXML(data);
    if (!nesting || *nesting > deepest) return {};
    const PointAsDecimalSeparator guard;
    const Node root = isBinary ? nodeFromBinary(data) : nodeFromXML(data);
    return root ? decoded(root.get()) : Value();
}

} // namespace

std::optional<NSData> PlistCoder::createXMLData(const Value& root) {
    const PointAsDecimalSeparator guard;
    const Node node = encoded(root, 0);
    if (!node) return std::nullopt;
    auto data = xmlOf<NSData>(node.get());
    return data.empty() ? std::nullopt : std::optional(std::move(data));
}

Value PlistCoder::createFromXMLData(std::span<const std::uint8_t> data) {
    if (data.size() > kLargestMessage || isBinaryPropertyList(data)) return {};
    return rootFrom(withoutByteOrderMark(data), kDeepestMessage);
}

Value PlistCoder::createFromFileData(std::span<const std::uint8_t> data) {
    return rootFrom(withoutByteOrderMark(data), kDeepestFile);
}

} // namespace kelvo
