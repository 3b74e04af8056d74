#pragma once

#include "touch/Output.h"

#include <functional>
#include <string>
#include <utility>

namespace kelvo {

/// Prints each step of what is given out as one line of JSON, in the terms of the virtual devices: where a touch or the
/// pointer is as a share of the screen, where a finger of the touchpad is in millimetres.
class OutputPrinter final : public touch::Outputs {
public:
    /// Each line names the display, if it has a name.
    explicit OutputPrinter(std::function<void(const std::string&)> printLine, std::string display = {})
        : printLine_(std::move(printLine)), display_(std::move(display)) {}
    void give(const touch::Output& output, touch::Time now) override;

private:
    std::function<void(const std::string&)> printLine_;
    std::string display_;
};

} // namespace kelvo
