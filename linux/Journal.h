#pragma once

#include "platform/Log.h"

#include <string>
#include <string_view>

namespace kelvo {

/// `text` with its control characters written as \n and \x1b are, so that it stays on one line and moves no cursor.
[[nodiscard]] std::string withVisibleControlCharacters(std::string_view text);

/// The system's journal, by way of syslog. There is one for a process, as syslog has it.
class Journal final : public platform::SystemLog {
public:
    /// Opens the log under the name `ident`. Lines go to standard error too when that is a terminal, or when the
    /// environment variable KELVO_LOG_STDERR is set and not empty.
    explicit Journal(std::string ident);
    ~Journal() override;

    /// The line is written with its control characters made visible.
    void write(std::string_view line) override;

private:
    /// syslog keeps a pointer to it.
    std::string ident_;
    bool writesToStandardError_;
};

} // namespace kelvo
