#pragma once

#include "touch/Panel.h"

#include <functional>
#include <utility>

namespace support {

/// A panel of 200 by 100 mm that does what a test says. It is held as soon as it is wanted, unless the test holds it
/// back.
class FakePanel final : public touch::Panel {
public:
    explicit FakePanel(Listener& listener) : listener_(listener) {}

    [[nodiscard]] const touch::PanelDescription& description() const override { return description_; }
    [[nodiscard]] touch::Size size() const override { return {200.0, 100.0}; }
    void setHeld(bool held) override {
        isWanted = held;
        if (!isHeldBack) becomeAsWanted();
    }
    [[nodiscard]] bool isHeldByAnother() const override { return isAnothers; }

    /// The last finger has been lifted, as it were.
    void becomeAsWanted() {
        if (isHeld == isWanted) return;
        isHeld = isWanted;
        if (isHeld) listener_.panelIsHeld(touch::Time(0));
        if (!isHeld) listener_.panelIsFree(touch::Time(0));
    }
    void setPen(std::function<void(const touch::KernelEvent& event)> pen_) override { pen = std::move(pen_); }
    void report(const touch::Frame& frame) { listener_.panelReported(frame); }
    void vanish() { listener_.panelIsGone(); }

    std::function<void(const touch::KernelEvent& event)> pen;
    bool isWanted = false;
    bool isHeld = false;
    bool isHeldBack = false;
    bool isAnothers = false;

private:
    Listener& listener_;
    touch::PanelDescription description_{.name = "Panel", .x = {0, 2000, 10}, .y = {0, 1000, 10}, .slots = 10};
};

} // namespace support
