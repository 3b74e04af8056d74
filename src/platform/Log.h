#pragma once

#include "platform/PropertyList.h"

#include <initializer_list>
#include <string>
#include <string_view>

namespace platform {

/// Where log lines go.
class SystemLog {
public:
    SystemLog() = default;
    SystemLog(const SystemLog&) = delete;
    SystemLog& operator=(const SystemLog&) = delete;
    virtual ~SystemLog();

    static SystemLog& current();

    /// One line, without its newline.
    virtual void write(std::string_view line) = 0;
    /// Whether anybody reads the log. Where nobody does, lines are not even made.
    [[nodiscard]] virtual bool isRead() const { return true; }
};

/// `format` with each of its placeholders replaced by the next argument: %@ the description (a string as it is), %d an
/// integer, %f a number with six decimals. A placeholder without an argument reads as "(null)" or 0, and %% is one %.
[[nodiscard]] std::string stringWithFormat(std::string_view format, std::initializer_list<Value> arguments);

/// Writes one line to the system log.
template <typename... Arguments>
void NSLog(std::string_view format, const Arguments&... arguments) {
    SystemLog& log = SystemLog::current();
    if (log.isRead()) log.write(stringWithFormat(format, {Value(arguments)...}));
}

} // namespace platform
