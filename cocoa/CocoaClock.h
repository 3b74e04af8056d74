#pragma once

#include "platform/Clock.h"

namespace kelvo {

/// Foundation's clocks.
class CocoaClock final : public platform::Clock {
public:
    [[nodiscard]] platform::NSDate date() override;
    /// Counts from the start of the machine, whoever sets its date.
    [[nodiscard]] std::uint32_t tickCount() override;
    void sleep(unsigned seconds) override;
};

} // namespace kelvo
