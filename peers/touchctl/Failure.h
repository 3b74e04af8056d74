#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace kelvo::touchctl {

using Words = std::vector<std::string>;

/// What the program ends with. The numbers are part of its interface.
enum class Status {
    Success = 0,
    /// A file that cannot be read or written, or anything else that no other status says.
    Failure = 1,
    /// A command, key or value that does not exist.
    Usage = 2,
    /// No driver runs, it does not answer, it is switched off, or there is no session bus.
    NoDriver = 3,
    /// A display that is not known, or not connected.
    NoDevice = 4,
    /// The report of "doctor" names something to mend.
    Findings = 5,
};

/// Ends the command; the text says what is wrong and what would be right.
class Failure : public std::runtime_error {
public:
    Failure(Status status, const std::string& text) : std::runtime_error(text), status_(status) {}
    [[nodiscard]] Status status() const { return status_; }

private:
    Status status_;
};

} // namespace kelvo::touchctl
