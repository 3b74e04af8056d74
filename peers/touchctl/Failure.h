#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace kelvo::touchctl {

using Words = std::vector<std::string>;

/// What the program ends with. The numbers are part of its interface; statusTexts() says what they mean.
enum class Status { Success = 0, Failure = 1, Usage = 2, NoDriver = 3, NoDevice = 4, Findings = 5 };

// What keeps several commands from the driver.
inline constexpr char kNoBus[] = "there is no session bus, or it does not answer; run this in the session of the "
                                 "display's user, or set DBUS_SESSION_BUS_ADDRESS to the bus of that session";
inline constexpr char kStartTheDriver[] = "no driver is running; start the driver and try again";
inline constexpr char kDriverDoesNotAnswer[] = "the driver does not answer; restart it and try again";

/// Ends the command; the text says what is wrong and what would be right.
class Failure : public std::runtime_error {
public:
    Failure(Status status, const std::string& text) : std::runtime_error(text), status_(status) {}
    [[nodiscard]] Status status() const { return status_; }

private:
    Status status_;
};

} // namespace kelvo::touchctl
