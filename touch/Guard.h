#pragma once

#include "touch/FixedList.h"
#include "touch/Frame.h"
#include "touch/FrameWriter.h"
#include "touch/Output.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace touch {

/// Owns everything that is down and can lift it all. It stands in front of the devices and trusts nobody: what goes
/// down twice, or up without having been down, does not get past it.
class Guard final : public Outputs {
public:
    explicit Guard(Outputs& next) : frames_(next) {}

    void give(const Output& output, Time now) override;
    /// Touches are taken back where that can be, so that lifting them is not a tap.
    void liftAll(bool takesTouchesBack, Time now);
    [[nodiscard]] bool isAnythingDown() const;

    static constexpr std::size_t kPadFingers = 10;
    static constexpr std::size_t kMostKeys = 8;

private:
    [[nodiscard]] bool passes(const Output& output);
    [[nodiscard]] bool changesKey(std::int32_t code, bool isDown);

    /// A frame is put together anew, since its last step may be one that does not pass.
    FrameWriter frames_;
    std::array<bool, kMostContacts> touches_{};
    std::array<bool, 2> buttons_{};
    std::array<bool, kPadFingers> padFingers_{};
    /// The codes of keys that are down; 0 where there is none.
    std::array<std::int32_t, kMostKeys> keys_{};
    /// The beginning of the gesture that is on.
    std::optional<Output> gesture_;
};

} // namespace touch
