#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace kelvo::touchctl {

using Words = std::vector<std::string>;

/// What the program ends with. The numbers are part of its interface; statusTexts() says what they mean.
enum class Status { Success = 0, Failure = 1, Usage = 2, NoDriver = 3, NoDevice = 4, Findings = 5 };

/// Ends the command; the text says what is wrong and what would be right.
class Failure : public std::runtime_error {
public:
    Failure(Status status, const std::string& text) : std::runtime_error(text), status_(status) {}
    [[nodiscard]] Status status() const { return status_; }

private:
    Status status_;
};

} // namespace kelvo::touchctl
