#pragma once

#include <cstdlib>
#include <optional>
#include <string>

/// Sets a variable of the environment, or takes it away, and puts back what was there at the end.
class EnvironmentVariable {
public:
    EnvironmentVariable(std::string name, const std::optional<std::string>& value) : name_(std::move(name)) {
        if (const char* previous = std::getenv(name_.c_str())) previous_ = previous;
        set(value);
    }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;
    ~EnvironmentVariable() { set(previous_); }

private:
    void set(const std::optional<std::string>& value) const {
        if (value) {
            ::setenv(name_.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(name_.c_str());
        }
    }

    std::string name_;
    std::optional<std::string> previous_;
};
