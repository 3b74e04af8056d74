#include "linux/PlistDepth.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace kelvo {

namespace {

constexpr std::string_view kBinaryMagic = "bplist00";

std::string_view asText(std::span<const std::uint8_t> data) {
    return {reinterpret_cast<const char*>(data.data()), data.size()};
}

/// The first place in `text` where `matches` holds for the rest of it, double-quoted parts left out.
template <typename Matches>
std::size_t findIfOutsideQuotes(std::string_view text, Matches matches) {
    for (std::size_t position = 0; position < text.size(); ++position) {
        if (text[position] == '"') {
            position = text.find('"', position + 1);
            if (position == std::string_view::npos) break;
        } else if (matches(text.substr(position))) {
            return position;
        }
    }
    return std::string_view::npos;
}

std::size_t findOutsideQuotes(std::string_view text, std::string_view wanted) {
    return findIfOutsideQuotes(text, [wanted](std::string_view rest) { return rest.starts_with(wanted); });
}

std::size_t findEitherOutsideQuotes(std::string_view text, char one, char other) {
    return findIfOutsideQuotes(
        text, [one, other](std::string_view rest) { return rest.front() == one || rest.front() == other; });
}

constexpr std::uint64_t bitOf(char c) { return std::uint64_t{1} << static_cast<unsigned char>(c); }

/// Whether a tag's name ends before `c`. Asked of nearly every byte, so it looks at one set instead of six characters.
bool endsName(char c) {
    constexpr std::uint64_t kEnds = bitOf(' ') | bitOf('\r') | bitOf('\n') | bitOf('\t') | bitOf('<') | bitOf('>');
    const auto code = static_cast<unsigned char>(c);
    return code < 64 && ((kEnds >> code) & 1U) != 0;
}

/// Walks the tags of an XML text and counts the open containers. Where a text could be taken in two ways it goes the
/// library's way: a quote counts behind a tag's name, an apostrophe never.
class NestingOfTags {
public:
    explicit NestingOfTags(std::string_view text) : rest_(text) {}

    [[nodiscard]] std::optional<std::size_t> measure() {
        for (std::size_t start = rest_.find('<'); start != std::string_view::npos; start = rest_.find('<')) {
            rest_.remove_prefix(start + 1);
            if (!takeMarkup()) return std::nullopt;
        }
        return deepest_;
    }

private:
    /// Each of these leaves `rest_` behind the markup it begins in; false when the markup does not end or has no place.
    bool takeMarkup() {
        if (rest_.starts_with('?')) return skip(findOutsideQuotes(rest_, "?>"), 2);
        if (rest_.starts_with("!--")) return skip(rest_.find("-->", 3), 3);
        if (rest_.starts_with("![CDATA[")) return skip(rest_.find("]]>", 8), 3);
        if (rest_.starts_with('!')) return takeDocumentType();
        return takeTag();
    }

    bool takeDocumentType() {
        const std::size_t end = findEitherOutsideQuotes(rest_, '[', '>');
        if (!skip(end, 0)) return false;
        return rest_.starts_with('>') ? skip(0, 1) : skip(findOutsideQuotes(rest_, "]>"), 2);
    }

    bool takeTag() {
        const auto endOfName = std::find_if(rest_.begin(), rest_.end(), endsName);
        std::string_view name(rest_.begin(), endOfName);
        if (!skip(findEitherOutsideQuotes(rest_.substr(name.size()), '<', '>'), name.size())) return false;
        if (rest_.front() != '>') return false;
        // What stands before the ">", for a tag that is nothing but its name too.
        const bool isEmpty = *(rest_.data() - 1) == '/';
        if (isEmpty && name.ends_with('/')) name.remove_suffix(1);
        if (name == "dict" || name == "array") {
            // The library would put a second root into the first.
            if (open_ == 0 && deepest_ > 0) return false;
            deepest_ = std::max(deepest_, open_ + 1);
            if (!isEmpty) ++open_;
        } else if (name == "/dict" || name == "/array") {
            // Another's "</dict/>" is no end for sure, and only what is an end for sure may count as one.
            if (!isEmpty && open_ > 0) --open_;
        }
        return skip(0, 1);
    }

    bool skip(std::size_t position, std::size_t more) {
        if (position == std::string_view::npos) return false;
        rest_.remove_prefix(position + more);
        return true;
    }

    std::string_view rest_;
    std::size_t open_ = 0;
    std::size_t deepest_ = 0;
};

/// The objects of a binary property list, every access to which is checked.
///
/// The format: the magic, the objects, a table of their offsets, and a trailer of 32 bytes that says where all that is.
/// An object begins with a byte of its type and its size, or 15 with the size following as an integer object.
class BinaryObjects {
public:
    /// What one object holds: so many bytes of its own, and references to other objects from `references` on.
    struct Contents {
        bool isContainer = false;
        std::uint64_t byteCount = 0;
        std::uint64_t references = 0;
        std::uint64_t referenceCount = 0;
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

    /// What the object of that index holds; none when it is unknown or reaches out of the objects' part.
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
        case 0x1: // integer of 1, 2, 4, 8 or 16 bytes
            return *size <= 4 ? within(position, std::uint64_t{1} << *size) : std::nullopt;
        case 0x2: // real of 4 or 8 bytes
            return *size == 2 || *size == 3 ? within(position, std::uint64_t{1} << *size) : std::nullopt;
        case 0x3: // date
            return *size == 3 ? within(position, 8) : std::nullopt;
        case 0x4: // data
            return within(position, *size);
        case 0x5: // ASCII text
            return textWithin(position, *size, 1);
        case 0x6: // UTF-16 text
            return textWithin(position, *size, 2);
        case 0x8: // unique identifier of size + 1 bytes
            return *size < 8 ? within(position, *size + 1) : std::nullopt;
        case 0xA: // array
        case 0xC: // set
            return container(position, *size);
        case 0xD: // dictionary: all keys, then all values
            return *size <= end_ ? container(position, 2 * *size) : std::nullopt;
        default:
            return std::nullopt;
        }
    }

    /// The object that a container's reference of that number names; none when there is no such object.
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

    /// The integer object at `position`, which moves behind it.
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

    /// The library gives the process up over a NUL in a text.
    [[nodiscard]] std::optional<Contents> textWithin(std::uint64_t position, std::uint64_t count,
                                                     std::uint64_t unitSize) const {
        if (count > (end_ - position) / unitSize) return std::nullopt;
        for (std::uint64_t i = 0; i < count; ++i) {
            if (integerAt(position + i * unitSize, unitSize) == 0) return std::nullopt;
        }
        return within(position, count * unitSize);
    }

    [[nodiscard]] std::optional<Contents> container(std::uint64_t position, std::uint64_t referenceCount) const {
        if (referenceCount > (end_ - position) / referenceSize_) return std::nullopt;
        return Contents{.isContainer = true, .references = position, .referenceCount = referenceCount};
    }

    std::span<const std::uint8_t> data_;
    std::uint64_t offsetSize_ = 0;
    std::uint64_t referenceSize_ = 0;
    std::uint64_t count_ = 0;
    std::uint64_t root_ = 0;
    /// Where the objects end and the table of their offsets begins.
    std::uint64_t end_ = 0;
};

/// Measures each object once, its children first, on a stack of its own.
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
            const std::optional<std::uint64_t> child = objects_.reference(visit.contents, visit.next++);
            if (!child || ++referencesSeen_ * kBytesOfValue > kLargestSize) return std::nullopt;
            const Extent& extent = extents_[*child];
            if (extent.state == Extent::State::Open) return std::nullopt;
            if (extent.state == Extent::State::Measured ? !addToParent(extent) : !enter(*child)) return std::nullopt;
        }
        return extents_[objects_.root()].nesting;
    }

private:
    static constexpr std::uint64_t kLargestSize = std::uint64_t{64} << 20U;
    /// What a value costs beside its bytes, about.
    static constexpr std::uint64_t kBytesOfValue = 64;

    struct Extent {
        enum class State : std::uint8_t { Unseen, Open, Measured };
        State state = State::Unseen;
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

std::optional<std::size_t> nestingOfXML(std::span<const std::uint8_t> text) {
    // The library takes a NUL for the end of a tag's name, and then loses count of where the tag ends.
    if (asText(text).find('\0') != std::string_view::npos) return std::nullopt;
    return NestingOfTags(asText(text)).measure();
}

std::optional<std::size_t> nestingOfBinary(std::span<const std::uint8_t> data) {
    if (!isBinaryPropertyList(data)) return std::nullopt;
    const std::optional<BinaryObjects> objects = BinaryObjects::fromTrailer(data);
    return objects ? NestingOfObjects(*objects).measure() : std::nullopt;
}

} // namespace kelvo
