#pragma once

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace platform {

class Value;

/// Raw bytes.
using NSData = std::vector<std::uint8_t>;

/// A moment, in seconds since the start of 2001 (UTC).
struct NSDate {
    double timeIntervalSinceReferenceDate = 0.0;
    auto operator<=>(const NSDate&) const = default;
};

/// Reference to an ordered array of values; copies of the reference share the array. A default-constructed reference
/// is nil: it reads as empty and takes no changes.
class NSMutableArray {
public:
    NSMutableArray() = default;
    /// A new array holding `values`.
    static NSMutableArray arrayWithObjects(std::initializer_list<Value> values = {});
    /// A new, empty array with room for so many values.
    static NSMutableArray arrayWithCapacity(std::size_t capacity);

    explicit operator bool() const { return storage_ != nullptr; }
    [[nodiscard]] std::size_t count() const;
    /// The element at `index`; none beyond the end.
    [[nodiscard]] Value objectAtIndex(std::size_t index) const;
    /// All elements where they stand, until the array changes.
    [[nodiscard]] std::span<const Value> objects() const;
    void addObject(Value value);
    /// Whether both references name one array, whatever it holds.
    [[nodiscard]] bool isIdenticalTo(const NSMutableArray& other) const { return storage_ == other.storage_; }
    /// Equality by contents; nil equals only nil.
    [[nodiscard]] bool isEqual(const NSMutableArray& other) const;

private:
    std::shared_ptr<std::vector<Value>> storage_;
};

/// Reference to a dictionary that keeps the order in which its keys came; copies of the reference share the
/// dictionary. A default-constructed reference is nil: it reads as empty, takes no changes and cannot be written.
class NSMutableDictionary {
public:
    struct ObjectAndKey;
    using Entry = std::pair<std::string, Value>;

    NSMutableDictionary() = default;
    /// A new, empty dictionary.
    static NSMutableDictionary dictionary();
    /// A new, empty dictionary with room for so many keys.
    static NSMutableDictionary dictionaryWithCapacity(std::size_t capacity);
    /// A new dictionary of the pairs up to the first whose object is missing, as the platform's nil-ended list.
    static NSMutableDictionary dictionaryWithObjectsAndKeys(std::initializer_list<ObjectAndKey> pairs);
    /// The dictionary that a property-list file holds; nil when the file is missing, damaged or of another root.
    static NSMutableDictionary dictionaryWithContentsOfFile(const std::string& path);

    explicit operator bool() const { return storage_ != nullptr; }
    [[nodiscard]] std::size_t count() const;
    /// The keys in the order in which they came.
    [[nodiscard]] std::vector<std::string> allKeys() const;
    /// The keys with their values in that order, where they stand, until the dictionary changes.
    [[nodiscard]] std::span<const Entry> entries() const;
    /// The value of `key`; none when there is no such key.
    [[nodiscard]] Value objectForKey(std::string_view key) const;
    /// Replaces the value of `key` where it stands, or adds the key at the end. A missing value changes nothing.
    void setObjectForKey(Value value, std::string_view key);
    /// Writes the dictionary as an XML property list, whole or not at all; false when nothing was written.
    [[nodiscard]] bool writeToFileAtomically(const std::string& path) const;
    /// The same where nothing is; what is there by then, whoever made it, stays.
    [[nodiscard]] bool writeToNewFileAtomically(const std::string& path) const;
    /// Whether both references name one dictionary, whatever it holds.
    [[nodiscard]] bool isIdenticalTo(const NSMutableDictionary& other) const { return storage_ == other.storage_; }
    /// Equality by contents, in any order of keys; nil equals only nil.
    [[nodiscard]] bool isEqual(const NSMutableDictionary& other) const;

private:
    struct Storage;
    std::shared_ptr<Storage> storage_;
};

/// One property-list value, or none. Boolean, integer and real stay distinct; reading converts as the platform does,
/// and whatever cannot be converted reads as a missing value: false, zero or no text.
class Value {
public:
    enum class Kind { None, Boolean, Integer, UnsignedInteger, Real, String, Data, Date, Array, Dictionary };

    Value() = default;
    template <std::same_as<bool> T>
    Value(T value) : content_(value) {}
    template <std::signed_integral T>
    Value(T value) : content_(static_cast<std::int64_t>(value)) {}
    /// An unsigned number that a signed one can hold becomes that signed one, so that equal numbers are of one kind.
    template <std::unsigned_integral T>
        requires(!std::same_as<T, bool>)
    Value(T value) : Value(fromUnsigned(value)) {}
    template <std::floating_point T>
    Value(T value) : content_(static_cast<double>(value)) {}
    Value(const char* value) : content_(std::string(value)) {}
    Value(std::string_view value) : content_(std::string(value)) {}
    Value(std::string value) : content_(std::move(value)) {}
    /// No text is no value.
    Value(const std::optional<std::string>& value);
    Value(NSData value) : content_(std::move(value)) {}
    Value(NSDate value) : content_(value) {}
    /// A nil reference is no value.
    Value(NSMutableArray value);
    Value(NSMutableDictionary value);

    [[nodiscard]] Kind kind() const { return static_cast<Kind>(content_.index()); }
    /// Whether there is a value at all.
    explicit operator bool() const { return kind() != Kind::None; }

    /// Whether there is a number to read: any number or boolean, or a text that begins with a number. What has none
    /// reads as a missing value.
    [[nodiscard]] bool hasNumber() const;
    /// Numbers are true unless zero; a text is true when it begins with Y, y, T, t or a digit other than 0, after
    /// blanks, a sign and zeros.
    [[nodiscard]] bool boolValue() const;
    /// Toward zero, saturating at the bounds; NaN reads as 0.
    [[nodiscard]] std::int32_t intValue() const;
    [[nodiscard]] std::int64_t longLongValue() const;
    /// The integer part as 64 bits of two's complement, for readers that take the low bits of a number.
    [[nodiscard]] std::uint64_t lowBits() const;
    [[nodiscard]] double doubleValue() const;
    [[nodiscard]] float floatValue() const;
    /// The text, of a string alone.
    [[nodiscard]] std::optional<std::string> string() const;
    /// The same where it stands; null for any other kind.
    [[nodiscard]] const std::string* text() const { return std::get_if<std::string>(&content_); }
    /// The text of a string, or the text form of a number: the shortest that reads back, without ".0".
    [[nodiscard]] std::optional<std::string> stringValue() const;
    /// The array or dictionary itself, not a copy; nil for any other kind.
    [[nodiscard]] NSMutableArray array() const;
    [[nodiscard]] NSMutableDictionary dictionary() const;
    /// The bytes or the moment; null for any other kind.
    [[nodiscard]] const NSData* data() const { return std::get_if<NSData>(&content_); }
    [[nodiscard]] const NSDate* date() const { return std::get_if<NSDate>(&content_); }

    /// Numbers and booleans are equal by value, whatever their kind; everything else by kind and contents.
    [[nodiscard]] bool isEqual(const Value& other) const;
    /// The platform's description on one line: `{ Name = Rotate; IsEnable = 1; }`, `( a, b )`, "(null)" for none.
    [[nodiscard]] std::string description() const;

private:
    static Value fromUnsigned(std::uint64_t value);
    [[nodiscard]] bool isNumber() const;

    std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, std::string, NSData, NSDate, NSMutableArray,
                 NSMutableDictionary>
        content_;
};

struct NSMutableDictionary::ObjectAndKey {
    Value object;
    std::string_view key;
};

/// The number at the start of `text`: leading blanks, a sign, decimal digits with point and exponent, in no locale.
/// 0 when there is none; "inf", "nan" and the x of "0x10" are no digits.
[[nodiscard]] double leadingNumber(std::string_view text);
/// Whether nothing stands around the number that `text` begins with but blanks.
[[nodiscard]] bool isWhollyNumber(std::string_view text);
/// Toward zero, saturating at the bounds of 32 bits; NaN gives 0.
[[nodiscard]] std::int32_t truncatedToInt32(double number);

/// Reads and writes the property-list formats.
class PropertyLists {
public:
    PropertyLists() = default;
    PropertyLists(const PropertyLists&) = delete;
    PropertyLists& operator=(const PropertyLists&) = delete;
    virtual ~PropertyLists();

    static PropertyLists& current();

    /// The XML property list of `root`; none when it cannot be encoded.
    [[nodiscard]] virtual std::optional<NSData> createXMLData(const Value& root) = 0;
    /// The root of an XML property list that came in a message. Anything undecodable, larger than 1 MiB or nested
    /// deeper than 64 is no value.
    [[nodiscard]] virtual Value createFromXMLData(std::span<const std::uint8_t> data) = 0;
    /// The root of a property-list file, XML or binary; no value when it cannot be decoded.
    [[nodiscard]] virtual Value createFromFileData(std::span<const std::uint8_t> data) = 0;
};

} // namespace platform
