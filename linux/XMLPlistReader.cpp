#include "linux/XMLPlistReader.h"

#include "linux/PlistTexts.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <expat.h>

namespace kelvo {

using platform::NSMutableArray;
using platform::NSMutableDictionary;
using platform::Value;

namespace {

enum class Element : std::uint8_t { Key, String, True, False, Integer, Array, Dictionary, Real, Data, Date, List };

/// By how often they occur.
constexpr std::array<std::pair<std::string_view, Element>, 11> kElements{{{"key", Element::Key},
                                                                          {"string", Element::String},
                                                                          {"true", Element::True},
                                                                          {"false", Element::False},
                                                                          {"integer", Element::Integer},
                                                                          {"array", Element::Array},
                                                                          {"dict", Element::Dictionary},
                                                                          {"real", Element::Real},
                                                                          {"data", Element::Data},
                                                                          {"date", Element::Date},
                                                                          {"plist", Element::List}}};

std::optional<Element> elementOf(std::string_view name) {
    const auto* const found =
        std::find_if(kElements.begin(), kElements.end(), [name](const auto& element) { return element.first == name; });
    return found == kElements.end() ? std::nullopt : std::optional(found->second);
}

/// The version of the list is the only permitted attribute.
bool mayHave(Element element, const XML_Char* const* attributes) {
    if (!attributes[0]) return true;
    return element == Element::List && std::string_view(attributes[0]) == "version" && !attributes[2];
}

/// The initial capacity of arrays and dictionaries, enough for most.
constexpr std::size_t kUsualCount = 6;

/// Builds the value while expat reads, without an intermediate tree; only the text of one element is stored.
class Reader {
public:
    explicit Reader(std::size_t deepest) : deepest_(deepest) {
        if (!parser_) throw std::bad_alloc();
        XML_SetUserData(parser_.get(), this);
        XML_SetElementHandler(
            parser_.get(),
            [](void* reader, const XML_Char* name, const XML_Char** attributes) {
                handle(reader, [&](Reader& self) { return self.begin(name, attributes); });
            },
            [](void* reader, const XML_Char*) { handle(reader, [](Reader& self) { return self.end(); }); });
        XML_SetCharacterDataHandler(parser_.get(), [](void* reader, const XML_Char* characters, int length) {
            handle(reader, [&](Reader& self) { return self.take({characters, static_cast<std::size_t>(length)}); });
        });
        // Declared entities, and entities of an external document type, which expat skips.
        XML_SetEntityDeclHandler(parser_.get(), [](void* reader, const XML_Char*, int, const XML_Char*, int,
                                                   const XML_Char*, const XML_Char*, const XML_Char*,
                                                   const XML_Char*) { handle(reader, [](Reader&) { return false; }); });
        XML_SetSkippedEntityHandler(
            parser_.get(), [](void* reader, const XML_Char*, int) { handle(reader, [](Reader&) { return false; }); });
    }

    [[nodiscard]] Value read(std::span<const std::uint8_t> text) {
        if (!std::in_range<int>(text.size())) return {};
        const XML_Status status = XML_Parse(parser_.get(), reinterpret_cast<const char*>(text.data()),
                                            static_cast<int>(text.size()), XML_TRUE);
        return status == XML_STATUS_OK && !isRefused_ ? std::move(root_) : Value();
    }

private:
    struct ParserDeleter {
        void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
    };

    /// Either an array or a dictionary; the other is nil.
    struct Container {
        NSMutableArray array;
        NSMutableDictionary dictionary;
    };

    /// Stops reading if `step` finds something invalid or runs out of memory: exceptions must not pass through expat,
    /// and a few more calls can follow.
    template <typename Step>
    static void handle(void* reader, Step step) noexcept {
        auto& self = *static_cast<Reader*>(reader);
        if (self.isRefused_) return;
        try {
            self.isRefused_ = !step(self);
        } catch (...) {
            self.isRefused_ = true;
        }
        if (self.isRefused_) (void)XML_StopParser(self.parser_.get(), XML_FALSE);
    }

    bool begin(const XML_Char* name, const XML_Char* const* attributes) {
        const std::optional<Element> element = elementOf(name);
        if (!element || !mayHave(*element, attributes) || leaf_) return false;
        switch (*element) {
        case Element::List:
            // Only as the outermost element.
            return !std::exchange(hasBegun_, true);
        case Element::Array:
            return open({NSMutableArray::arrayWithCapacity(kUsualCount), {}});
        case Element::Dictionary:
            return open({{}, NSMutableDictionary::dictionaryWithCapacity(kUsualCount)});
        default:
            hasBegun_ = true;
            leaf_ = element;
            text_.clear();
            return true;
        }
    }

    bool end() {
        if (leaf_) return endLeaf(*std::exchange(leaf_, std::nullopt));
        // The end of the list itself, which must have had a root.
        if (open_.empty()) return static_cast<bool>(root_);
        open_.pop_back();
        return !hasKey_;
    }

    bool take(std::string_view characters) {
        if (!leaf_) return plisttexts::isBlank(characters);
        text_ += characters;
        return true;
    }

    bool open(Container container) {
        hasBegun_ = true;
        if (open_.size() == deepest_ || !add(container.array ? Value(container.array) : Value(container.dictionary))) {
            return false;
        }
        open_.push_back(std::move(container));
        return true;
    }

    bool endLeaf(Element element) {
        switch (element) {
        case Element::Key:
            return endKey();
        case Element::String:
            return add(std::string(text_));
        case Element::True:
        case Element::False:
            return plisttexts::isBlank(text_) && add(element == Element::True);
        case Element::Integer:
            return addParsed(plisttexts::integer(text_));
        case Element::Real:
            return addParsed(plisttexts::real(text_));
        case Element::Date:
            return addParsed(plisttexts::date(text_));
        case Element::Data:
            return addParsed(plisttexts::data(text_));
        default:
            return false;
        }
    }

    bool endKey() {
        if (open_.empty() || !open_.back().dictionary || hasKey_) return false;
        key_ = text_;
        hasKey_ = true;
        return true;
    }

    template <typename Parsed>
    bool addParsed(std::optional<Parsed> parsed) {
        return parsed && add(Value(*std::move(parsed)));
    }

    bool add(Value&& value) {
        if (open_.empty()) {
            if (root_) return false;
            root_ = std::move(value);
        } else if (open_.back().array) {
            open_.back().array.addObject(std::move(value));
        } else {
            if (!std::exchange(hasKey_, false)) return false;
            open_.back().dictionary.setObjectForKey(std::move(value), key_);
        }
        return true;
    }

    std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserDeleter> parser_{XML_ParserCreate(nullptr)};
    std::size_t deepest_;
    bool isRefused_ = false;
    bool hasBegun_ = false;
    Value root_;
    std::vector<Container> open_;
    /// The key without a value yet in the innermost dictionary.
    std::string key_;
    bool hasKey_ = false;
    /// The element that contains text, and the text so far.
    std::optional<Element> leaf_;
    std::string text_;
};

/// Whether all surrogates of a UTF-16 text are paired: expat converts an unpaired one to another character.
bool hasPairedSurrogates(std::span<const std::uint8_t> text) {
    // No other supported encoding begins with these or has a zero byte.
    const bool isMarkedLittle = text.size() >= 2 && text[0] == 0xFF && text[1] == 0xFE;
    const bool isMarkedBig = text.size() >= 2 && text[0] == 0xFE && text[1] == 0xFF;
    const bool isLittle = isMarkedLittle || (text.size() >= 2 && text[1] == 0);
    const bool isBig = isMarkedBig || (text.size() >= 2 && text[0] == 0);
    if (!isLittle && !isBig) return true;
    bool isLeadOpen = false;
    for (std::size_t i = isLittle ? 1 : 0; i < text.size(); i += 2) {
        const unsigned kind = text[i] & 0xFCU;
        if (isLeadOpen != (kind == 0xDCU)) return false;
        isLeadOpen = kind == 0xD8U;
    }
    return !isLeadOpen;
}

} // namespace

Value valueOfXML(std::span<const std::uint8_t> text, std::size_t deepest) {
    return hasPairedSurrogates(text) ? Reader(deepest).read(text) : Value();
}

} // namespace kelvo
