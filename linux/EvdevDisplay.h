#pragma once

#include "linux/Descriptor.h"
#include "platform/RunLoop.h"
#include "touch/Panel.h"
#include "touch/SlotTable.h"

#include <libevdev/libevdev.h>

#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

struct input_event;

namespace kelvo {

/// What the phys of each virtual device of ours begins with.
inline constexpr std::string_view kOwnPhys = "kelvo-touch/";

struct EvdevCloser {
    void operator()(libevdev* device) const { libevdev_free(device); }
};
using Evdev = std::unique_ptr<libevdev, EvdevCloser>;

/// What the kernel says of the device behind an event node; null where that is no event node.
[[nodiscard]] Evdev evdevOf(int eventNode);
/// Whether that is a touch display: fingers touch what they mean, in slots with places. Our own virtual one is none.
[[nodiscard]] bool isTouchDisplay(const libevdev* device);
[[nodiscard]] touch::PanelDescription panelDescriptionOf(const libevdev* device);

/// A touch display behind an event node of the kernel.
class EvdevDisplay final : public touch::Panel {
    struct Passkey {};

public:
    /// `eventNode` is one that may be read and waits for nothing. `knownSize` is the glass's in millimetres, for
    /// displays that do not say. Null where this is no touch display, or none any more. The loop and the listener
    /// outlive the display.
    [[nodiscard]] static std::unique_ptr<EvdevDisplay> open(platform::CFRunLoop& loop, Descriptor eventNode,
                                                            Listener& listener,
                                                            std::optional<touch::Size> knownSize = std::nullopt);
    EvdevDisplay(Passkey, platform::CFRunLoop& loop, Descriptor eventNode, Evdev device, Listener& listener,
                 std::optional<touch::Size> knownSize);
    ~EvdevDisplay() override;

    [[nodiscard]] const touch::PanelDescription& description() const override { return description_; }
    [[nodiscard]] touch::Size size() const override { return glass_.size(); }
    void setHeld(bool isHeld) override;
    void setPen(std::function<void(const touch::KernelEvent& event)> pen) override { pen_ = std::move(pen); }
    [[nodiscard]] bool isHeldByAnother() const override { return isHeldByAnother_; }

private:
    void read();
    void readRestLater();
    [[nodiscard]] bool readNext(unsigned& flag);
    void take(const input_event& event);
    void watchAsNeeded();
    void holdAsWanted();
    [[nodiscard]] bool switchGrab();
    [[nodiscard]] bool isTouched() const;
    void retryLater();
    void lose();

    platform::CFRunLoop& loop_;
    Descriptor eventNode_;
    Evdev device_;
    Listener& listener_;
    touch::PanelDescription description_;
    touch::Glass glass_;
    touch::SlotTable slots_;
    std::function<void(const touch::KernelEvent& event)> pen_;
    bool isWanted_ = false;
    bool isHeld_ = false;
    bool isHeldByAnother_ = false;
    /// What was stamped before belongs to everybody.
    touch::Time heldSince_{0};
    std::unique_ptr<platform::CFFileDescriptor> watch_;
    std::shared_ptr<platform::NSTimer> retry_;
    std::shared_ptr<platform::NSTimer> rest_;
};

} // namespace kelvo
