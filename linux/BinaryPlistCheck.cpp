#include "linux/BinaryPlistCheck.h"

#include "linux/PlistTexts.h"

#include <algorithm>
#include <bit>
#include <string_view>
#include <vector>

namespace kelvo {

namespace {

constexpr std::string_view kBinaryMagic = "bplist00";

std::string_view asText(std::span<const std::uint8_t> data) {
    return {reinterpret_cast<const char*>(data.data()), data.size()};
}

/// Whether XML can represent it.
bool isCharacterOfXML(std::uint64_t unit) {
    const bool isControl = unit < 0x20 && unit != '\t' && unit != '\n' && unit != '\r';
    return !isControl && (unit | 1U) != 0xFFFF;
}

/// The objects of a binary property list, with checked access.
///
/// The format: magic, objects, a table of their offsets, and a trailer of 32 bytes that contains all these positions.
/// An object begins with a byte for its type and size; size 15 means that the size follows as an integer object.
class BinaryObjects {
public:
    /// The contents of an object: this many bytes of its own, and references to other objects starting at `references`.
    struct Contents {
        bool isContainer = false;
        bool isText = false;
        std::uint64_t byteCount = 0;
        std::uint64_t references = 0;
        std::uint64_t referenceCount = 0;
        /// How many of the references, from the first, point to keys.
        std::uint64_t keyCount = 0;
    };

    static std::optional<BinaryObjects> fromTrailer(std::span<const std::uint8_t> data) {
        constexpr std::size_t kTrailerSize = 32;
        if (data.size() < kBinaryMagic.size() + kTrailerSize) return std::nullopt;
        const std::uint64_t trailer = data.size() - kTrailerSize;
        BinaryObjects objects(data);
        objects.offsetSize_ = data[trailer + 6];
        objects.referenceSize_ = data[trailer + 7];
        objects.count_ = objects.integerAt(trailer + 8, 8);
        objects.root_ = objects.integerAt(trailer + 16, 8);
        objects.end_ = objects.integerAt(trailer + 24, 8);
        if (!isIntegerSize(objects.offsetSize_) || !isIntegerSize(objects.referenceSize_)) return std::nullopt;
        if (objects.end_ < kBinaryMagic.size() || objects.end_ > trailer) return std::nullopt;
        if (objects.count_ > (trailer - objects.end_) / objects.offsetSize_) return std::nullopt;
        if (objects.root_ >= objects.count_) return std::nullopt;
        return objects;
    }

    [[nodiscard]] std::uint64_t count() const { return count_; }
    [[nodiscard]] std::uint64_t root() const { return root_; }

    /// The contents of the object with that index; none if it is unknown or exceeds the objects section.
    [[nodiscard]] std::optional<Contents> contentsOf(std::uint64_t index) const {
        std::uint64_t position = integerAt(end_ + index * offsetSize_, offsetSize_);
        if (position < kBinaryMagic.size() || position >= end_) return std::nullopt;
        const std::uint8_t marker = data_[position++];
        const unsigned type = marker >> 4U;
        std::optional<std::uint64_t> size = marker & 0x0FU;
        const bool isSized = type == 0x4 || type == 0x5 || type == 0x6 || type >= 0xA;
        if (isSized && size == 15) size = sizeAt(position);
        if (!size) return std::nullopt;
        switch (type) {
        case 0x0: // false and true; a null belongs into no property list
            return *size == 8 || *size == 9 ? Contents() : std::optional<Contents>();
        case 0x1: // integer of 1, 2, 4, 8 or 16 bytes, those of 8 being signed
            return *size <= 4 ? integerWithin(position, std::uint64_t{1} << *size) : std::nullopt;
        case 0x2: // real of 4 or 8 bytes
            return *size == 2 || *size == 3 ? within(position, std::uint64_t{1} << *size) : std::nullopt;
        case 0x3: // date
            return *size == 3 ? dateWithin(position) : std::nullopt;
        case 0x4: // data
            return within(position, *size);
        case 0x5: // ASCII text
            return textWithin(position, *size, 1);
        case 0x6: // UTF-16 text, which an empty one is not: it needs none
            return *size > 0 ? textWithin(position, *size, 2) : std::nullopt;
        case 0xA: // array
            return container(position, *size, 0);
        case 0xD: // dictionary: all keys, then all values
            return *size <= end_ ? container(position, 2 * *size, *size) : std::nullopt;
        default:
            return std::nullopt;
        }
    }

    /// The object that the given reference of a container points to; none if there is no such object.
    [[nodiscard]] std::optional<std::uint64_t> reference(const Contents& contents, std::uint64_t number) const {
        const std::uint64_t index = integerAt(contents.references + number * referenceSize_, referenceSize_);
        return index < count_ ? std::optional(index) : std::nullopt;
    }

private:
    explicit BinaryObjects(std::span<const std::uint8_t> data) : data_(data) {}

    /// The sizes that writers of the format use.
    static bool isIntegerSize(std::uint64_t size) { return (size >= 1 && size <= 4) || size == 8; }

    [[nodiscard]] std::uint64_t integerAt(std::uint64_t position, std::uint64_t size) const {
        std::uint64_t integer = 0;
        for (const std::uint8_t byte : data_.subspan(position, size)) integer = (integer << 8U) | byte;
        return integer;
    }

    /// Reads the integer object at `position` and advances the position.
    [[nodiscard]] std::optional<std::uint64_t> sizeAt(std::uint64_t& position) const {
        if (position >= end_) return std::nullopt;
        const std::uint8_t marker = data_[position++];
        if (marker < 0x10 || marker > 0x13) return std::nullopt;
        const std::uint64_t byteCount = std::uint64_t{1} << (marker & 0x0FU);
        if (byteCount > end_ - position) return std::nullopt;
        const std::uint64_t size = integerAt(position, byteCount);
        position += byteCount;
        return size;
    }

    [[nodiscard]] std::optional<Contents> within(std::uint64_t position, std::uint64_t byteCount) const {
        if (byteCount > end_ - position) return std::nullopt;
        return Contents{.byteCount = byteCount};
    }

    [[nodiscard]] std::optional<Contents> integerWithin(std::uint64_t position, std::uint64_t byteCount) const {
        std::optional<Contents> contents = within(position, byteCount);
        const bool fitsInEight = byteCount <= 8 || (contents && integerAt(position, 8) == 0);
        return fitsInEight ? contents : std::nullopt;
    }

    [[nodiscard]] std::optional<Contents> dateWithin(std::uint64_t position) const {
        std::optional<Contents> contents = within(position, 8);
        const bool hasText = contents && plisttexts::hasText({std::bit_cast<double>(integerAt(position, 8))});
        return hasText ? contents : std::nullopt;
    }

    /// ASCII in units of one byte, UTF-16 in units of two.
    [[nodiscard]] std::optional<Contents> textWithin(std::uint64_t position, std::uint64_t count,
                                                     std::uint64_t unitSize) const {
        if (count > (end_ - position) / unitSize) return std::nullopt;
        bool isLeadOpen = false;
        for (std::uint64_t i = 0; i < count; ++i) {
            const std::uint64_t unit = integerAt(position + i * unitSize, unitSize);
            const bool isTrail = unit >> 10U == 0xDC00U >> 10U;
            if (!isCharacterOfXML(unit) || (unitSize == 1 && unit > 0x7F) || isTrail != isLeadOpen) return std::nullopt;
            isLeadOpen = unit >> 10U == 0xD800U >> 10U;
        }
        if (isLeadOpen) return std::nullopt;
        return Contents{.isText = true, .byteCount = count * unitSize};
    }

    [[nodiscard]] std::optional<Contents> container(std::uint64_t position, std::uint64_t referenceCount,
                                                    std::uint64_t keyCount) const {
        if (referenceCount > (end_ - position) / referenceSize_) return std::nullopt;
        return Contents{
            .isContainer = true, .references = position, .referenceCount = referenceCount, .keyCount = keyCount};
    }

    std::span<const std::uint8_t> data_;
    std::uint64_t offsetSize_ = 0;
    std::uint64_t referenceSize_ = 0;
    std::uint64_t count_ = 0;
    std::uint64_t root_ = 0;
    /// The end of the objects and the start of the offset table.
    std::uint64_t end_ = 0;
};

/// Measures each object once, its children first, using an explicit stack.
class NestingOfObjects {
public:
    explicit NestingOfObjects(const BinaryObjects& objects) : objects_(objects), extents_(objects.count()) {}

    [[nodiscard]] std::optional<std::size_t> measure() {
        if (!enter(objects_.root())) return std::nullopt;
        while (!path_.empty()) {
            Visit& visit = path_.back();
            if (visit.next == visit.contents.referenceCount) {
                if (!leave()) return std::nullopt;
                continue;
            }
            const bool isKey = visit.next < visit.contents.keyCount;
            const std::optional<std::uint64_t> child = objects_.reference(visit.contents, visit.next++);
            if (!child || ++referencesSeen_ * kBytesOfValue > kLargestSize) return std::nullopt;
            const Extent& extent = extents_[*child];
            if (extent.state == Extent::State::Open) return std::nullopt;
            if (extent.state == Extent::State::Measured ? !addToParent(extent) : !enter(*child)) return std::nullopt;
            if (isKey && !extent.isText) return std::nullopt;
        }
        return extents_[objects_.root()].nesting;
    }

private:
    static constexpr std::uint64_t kLargestSize = std::uint64_t{64} << 20U;
    /// The approximate overhead of a value.
    static constexpr std::uint64_t kBytesOfValue = 64;

    struct Extent {
        enum class State : std::uint8_t { Unseen, Open, Measured };
        State state = State::Unseen;
        bool isText = false;
        std::size_t nesting = 0;
        std::uint64_t size = kBytesOfValue;
    };

    struct Visit {
        std::uint64_t object = 0;
        BinaryObjects::Contents contents;
        std::uint64_t next = 0;
    };

    bool enter(std::uint64_t object) {
        const std::optional<BinaryObjects::Contents> contents = objects_.contentsOf(object);
        if (!contents) return false;
        Extent& extent = extents_[object];
        extent.state = Extent::State::Open;
        extent.isText = contents->isText;
        extent.nesting = contents->isContainer ? 1 : 0;
        extent.size += contents->byteCount;
        path_.push_back({.object = object, .contents = *contents});
        return extent.size <= kLargestSize;
    }

    bool leave() {
        Extent& extent = extents_[path_.back().object];
        extent.state = Extent::State::Measured;
        path_.pop_back();
        return path_.empty() || addToParent(extent);
    }

    bool addToParent(const Extent& child) {
        Extent& parent = extents_[path_.back().object];
        parent.nesting = std::max(parent.nesting, child.nesting + 1);
        parent.size += child.size;
        return parent.size <= kLargestSize;
    }

    const BinaryObjects& objects_;
    std::vector<Extent> extents_;
    std::vector<Visit> path_;
    std::uint64_t referencesSeen_ = 0;
};

} // namespace

bool isBinaryPropertyList(std::span<const std::uint8_t> data) { return asText(data).starts_with(kBinaryMagic); }

std::optional<std::size_t> nestingOfBinary(std::span<const std::uint8_t> data) {
    if (!isBinaryPropertyList(data)) return std::nullopt;
    const std::optional<BinaryObjects> objects = BinaryObjects::fromTrailer(data);
    return objects ? NestingOfObjects(*objects).measure() : std::nullopt;
}

} // namespace kelvo
