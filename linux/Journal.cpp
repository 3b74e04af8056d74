#include "linux/Journal.h"

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

} // namespace

std::string withVisibleControlCharacters(std::string_view text) {
    std::string visible;
    visible.reserve(text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\n') {
            visible += "\\n";
        } else if (byte < 0x20 || byte == 0x7F) {
            constexpr char kDigits[] = "0123456789abcdef";
            visible += "\\x";
            visible += kDigits[byte >> 4U];
            visible += kDigits[byte & 0x0FU];
        } else {
            visible += c;
        }
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
    // One call, so that the lines of several processes do not mix. There is nobody to tell that it failed.
    visible += '\n';
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, visible.data(), visible.size());
}

} // namespace kelvo
