#include "touch/Recording.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <stdexcept>
#include <system_error>

namespace touch {

namespace {

constexpr std::string_view kBlanks = " \t\r";
constexpr unsigned kDirectProperty = 1U << 1U;
constexpr std::int32_t kSlotAxis = 0x2f;
constexpr std::int32_t kPositionXAxis = 0x35;
constexpr std::int32_t kPositionYAxis = 0x36;
constexpr std::int32_t kMicrosecondsInSecond = 1'000'000;

/// Reads the words of a line one by one.
class Line {
public:
    Line(std::string_view text, std::size_t number) : rest_(text.substr(0, text.find('#'))), number_(number) {}

    [[noreturn]] void refuse(std::string_view what) const {
        throw std::runtime_error("line " + std::to_string(number_) + ": " + std::string(what));
    }

    [[nodiscard]] bool isAtEnd() { return rest_.find_first_not_of(kBlanks) == std::string_view::npos; }

    std::string_view word(std::string_view what) {
        const std::size_t begin = rest_.find_first_not_of(kBlanks);
        if (begin == std::string_view::npos) refuse(std::string(what) + " is missing");
        rest_.remove_prefix(begin);
        const std::string_view found = rest_.substr(0, rest_.find_first_of(kBlanks));
        rest_.remove_prefix(found.size());
        return found;
    }

    template <typename Number>
    Number number(std::string_view what, int base = 10) {
        const std::string_view text = word(what);
        Number value{};
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
        if (error != std::errc{} || end != text.data() + text.size()) refuse(std::string(what) + " is not a number");
        return value;
    }

private:
    std::string_view rest_;
    std::size_t number_;
};

/// "SECONDS.MICROSECONDS", where the second part has six digits.
Time timeOf(Line& line) {
    const std::string_view text = line.word("the time");
    const std::size_t point = text.find('.');
    if (point == std::string_view::npos || text.size() - point != 7) line.refuse("the time is invalid");
    std::int64_t seconds = 0;
    std::int32_t microseconds = 0;
    const auto isRead = [&](std::string_view digits, auto& value) {
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
        return error == std::errc{} && end == digits.data() + digits.size() && value >= 0;
    };
    constexpr std::int64_t kMostSeconds = 1'000'000'000'000;
    if (!isRead(text.substr(0, point), seconds) || !isRead(text.substr(point + 1), microseconds) ||
        seconds > kMostSeconds) {
        line.refuse("the time is invalid");
    }
    return Time(seconds * kMicrosecondsInSecond + microseconds);
}

KernelEvent eventOf(Line& line) {
    KernelEvent event;
    event.time = timeOf(line);
    event.type = line.number<std::uint16_t>("the type", 16);
    event.code = line.number<std::uint16_t>("the code", 16);
    event.value = line.number<std::int32_t>("the value");
    return event;
}

/// Reads a text line by line into a recording.
class Reader {
public:
    explicit Reader(Recording& recording) : recording_(recording) {}

    void read(std::string_view text) {
        for (std::size_t number = 1; !text.empty(); ++number) {
            const std::size_t end = text.find('\n');
            readLine(text.substr(0, end), number);
            text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        }
    }

    void expectTouchScreen() const {
        if (!isDirect_ || !hasSlots_ || !hasX_ || !hasY_) {
            throw std::runtime_error("this is not a recording of a touchscreen: its description has no slots with "
                                     "positions, or lacks the property of direct input");
        }
    }

private:
    void readLine(std::string_view text, std::size_t number) {
        if (text.size() < 2 || text[1] != ':') return;
        Line line(text.substr(2), number);
        switch (text[0]) {
        case 'N':
            readName(text.substr(2));
            return;
        case 'I':
            recording_.bus = line.number<std::uint16_t>("the bus", 16);
            recording_.vendor = line.number<std::uint16_t>("the vendor", 16);
            recording_.product = line.number<std::uint16_t>("the product", 16);
            return;
        case 'P':
            // More lines of properties can follow; the relevant one is in the first.
            if (!hasProperties_) isDirect_ = (line.number<unsigned>("a property", 16) & kDirectProperty) != 0;
            hasProperties_ = true;
            return;
        case 'A':
            readAxis(line);
            return;
        case 'E':
            recording_.events.push_back(eventOf(line));
            return;
        default:
            return;
        }
    }

    void readName(std::string_view name) {
        const std::size_t begin = name.find_first_not_of(kBlanks);
        const std::size_t end = name.find_last_not_of(kBlanks);
        recording_.name = begin == std::string_view::npos ? "" : name.substr(begin, end - begin + 1);
    }

    void readAxis(Line& line) {
        const auto code = line.number<std::int32_t>("the axis", 16);
        Axis axis;
        axis.minimum = line.number<std::int32_t>("the minimum");
        axis.maximum = line.number<std::int32_t>("the maximum");
        static_cast<void>(line.word("the fuzz"));
        static_cast<void>(line.word("the flat"));
        // Older recordings end here.
        if (!line.isAtEnd()) axis.resolution = line.number<std::int32_t>("the resolution");
        if (code == kSlotAxis) {
            hasSlots_ = true;
            recording_.slots = axis.maximum < 0 ? 0 : static_cast<std::size_t>(axis.maximum) + 1;
        } else if (code == kPositionXAxis) {
            hasX_ = true;
            recording_.x = axis;
        } else if (code == kPositionYAxis) {
            hasY_ = true;
            recording_.y = axis;
        }
    }

    Recording& recording_;
    bool hasProperties_ = false;
    bool isDirect_ = false;
    bool hasSlots_ = false;
    bool hasX_ = false;
    bool hasY_ = false;
};

} // namespace

bool hasDescription(std::string_view text) { return text.starts_with("N:") || text.find("\nN:") != text.npos; }

Recording readRecording(std::string_view events, std::string_view description) {
    Recording recording;
    Reader reader(recording);
    if (!hasDescription(events)) reader.read(description);
    reader.read(events);
    reader.expectTouchScreen();
    const Time start = recording.events.empty() ? Time(0) : recording.events.front().time;
    for (KernelEvent& event : recording.events) event.time -= start;
    return recording;
}

void Recording::play(const Glass& glass, const std::function<void(const Frame&)>& see) const {
    SlotTable table(glass, slots);
    for (const KernelEvent& event : events) {
        if (table.take(event)) see(table.frame());
    }
}

namespace {

std::string hexadecimal(std::uint32_t number, std::size_t digits) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text(digits, '0');
    for (std::size_t i = digits; i > 0; --i, number /= 16) text[i - 1] = kDigits[number % 16];
    return text;
}

std::string axisLine(std::int32_t code, const Axis& axis) {
    return std::string("A: ")
        .append(hexadecimal(static_cast<std::uint32_t>(code), 2))
        .append(" ")
        .append(std::to_string(axis.minimum))
        .append(" ")
        .append(std::to_string(axis.maximum))
        .append(" 0 0 ")
        .append(std::to_string(axis.resolution))
        .append("\n");
}

/// A name must not start a new line.
std::string onOneLine(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return text;
}

} // namespace

std::string textOf(const PanelDescription& panel) {
    std::string text = std::string("# EVEMU 1.3\nN: ").append(onOneLine(panel.name)).append("\nI:");
    for (const std::uint16_t id : {panel.bus, panel.vendor, panel.product, panel.version}) {
        text.append(" ").append(hexadecimal(id, 4));
    }
    text.append("\nP: ").append(hexadecimal(kDirectProperty, 2)).append("\n");
    text += axisLine(kSlotAxis, {.minimum = 0, .maximum = static_cast<std::int32_t>(panel.slots) - 1});
    return text + axisLine(kPositionXAxis, panel.x) + axisLine(kPositionYAxis, panel.y);
}

std::string textOf(const KernelEvent& event) {
    const auto seconds = event.time.count() / kMicrosecondsInSecond;
    std::string microseconds = std::to_string(event.time.count() % kMicrosecondsInSecond);
    microseconds.insert(0, 6 - microseconds.size(), '0');
    std::string text("E: ");
    text.append(std::to_string(seconds)).append(".").append(microseconds);
    for (const std::uint16_t number : {event.type, event.code}) text.append(" ").append(hexadecimal(number, 4));
    return text.append(" ").append(std::to_string(event.value)).append("\n");
}

} // namespace touch
