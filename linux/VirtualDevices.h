#pragma once

#include "linux/Descriptor.h"
#include "linux/VirtualDescriptions.h"
#include "touch/FixedList.h"
#include "touch/Frame.h"
#include "touch/Output.h"

#include <linux/input.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace kelvo {

/// The event nodes of a display's virtual devices, as touch::Road counts them.
using VirtualNodes = std::array<Descriptor, kVirtualDevices>;

/// Gives out by writing to the event nodes of a display's virtual devices; each frame is one write. Steps for the
/// listener are for somebody else.
class VirtualDevices final : public touch::Outputs {
public:
    /// The devices were made by the descriptions of this panel.
    VirtualDevices(VirtualNodes nodes, const touch::PanelDescription& panel);

    void give(const touch::Output& output, touch::Time now) override;
    /// The devices are there no more, or may not be written to any longer; what is given goes nowhere.
    [[nodiscard]] bool isLost() const { return isLost_; }

private:
    using Descriptions = std::array<VirtualDescription, kVirtualDevices>;
    struct Finger {
        bool isDown = false;
        std::int32_t x = 0;
        std::int32_t y = 0;
    };
    using Fingers = std::array<Finger, touch::kMostContacts>;
    /// All fingers land in one frame, with all that is said of each.
    static constexpr std::size_t kMostEvents = 8 * touch::kMostContacts;

    VirtualDevices(VirtualNodes nodes, const Descriptions& devices);
    void giveFinger(const touch::Output& output);
    void givePointer(const touch::Output& output);
    void endFrame(touch::Road road);
    void tellOfFirstFinger(const Fingers& fingers);
    void tellOfCount(touch::Road road, const Fingers& fingers);
    void add(std::uint16_t type, std::uint16_t code, std::int32_t value);
    void write(const Descriptor& node);

    VirtualNodes nodes_;
    input_absinfo touchX_;
    input_absinfo touchY_;
    input_absinfo pointerX_;
    input_absinfo pointerY_;
    std::int32_t pointedX_;
    std::int32_t pointedY_;
    input_absinfo padX_;
    input_absinfo padY_;
    Fingers touches_{};
    Fingers padFingers_{};
    std::array<std::size_t, 2> toldCount_{};
    std::int32_t nextTrackingId_ = 0;
    touch::FixedList<input_event, kMostEvents> frame_;
    bool isLost_ = false;
};

} // namespace kelvo
