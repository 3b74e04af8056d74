#include "linux/Journal.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <utility>

#include <syslog.h>
#include <unistd.h>

namespace kelvo {

namespace {

bool isStandardErrorWanted() {
    const char* wanted = std::getenv("KELVO_LOG_STDERR");
    return (wanted && *wanted) || ::isatty(STDERR_FILENO) == 1;
}

/// The length in bytes of the control character at the start of the text; 0 if there is none.
std::size_t lengthOfControlCharacter(std::string_view text) {
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    if (byteAt(0) < 0x20 || byteAt(0) == 0x7F) return 1;
    // U+0080 to U+009F, some of which terminals interpret like escape sequences.
    const bool isOfTheSecondSet = byteAt(0) == 0xC2 && text.size() > 1 && byteAt(1) >= 0x80 && byteAt(1) < 0xA0;
    return isOfTheSecondSet ? 2 : 0;
}

void appendInHexadecimal(std::string& visible, std::string_view bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        visible += "\\x";
        visible += kDigits[byte >> 4U];
        visible += kDigits[byte & 0x0FU];
    }
}

} // namespace

std::string withVisibleControlCharacters(std::string_view text) {
    std::string visible;
    visible.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = lengthOfControlCharacter(text);
        if (text.front() == '\n') {
            visible += "\\n";
        } else if (length > 0) {
            appendInHexadecimal(visible, text.substr(0, length));
        } else {
            visible += text.front();
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return visible;
}

Journal::Journal(std::string ident) : ident_(std::move(ident)), writesToStandardError_(isStandardErrorWanted()) {
    ::openlog(ident_.c_str(), LOG_PID, LOG_USER);
}

Journal::~Journal() { ::closelog(); }

void Journal::write(std::string_view line) {
    std::string visible = withVisibleControlCharacters(line);
    ::syslog(LOG_USER | LOG_NOTICE, "%s", visible.c_str());
    if (!writesToStandardError_) return;
    // A single call, so that lines of several processes do not mix. A failure cannot be reported anywhere.
    visible += '\n';
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, visible.data(), visible.size());
}

} // namespace kelvo
