#pragma once

#include "platform/Nib.h"

#include <string>
#include <vector>

namespace support {

/// Forms without a toolkit: gives each view the size of its form, measures texts at ten points a byte, and lets each
/// control that has an action of a gesture row fire it.
class FakeNibs : public platform::NSNibs {
public:
    /// The size of a gesture row, and the frame of its pop-up.
    platform::NSRect rowFrame{0.0, 0.0, 200.0, 30.0};
    platform::NSRect popUpFrame{60.0, 2.0, 80.0, 26.0};
    /// The forms loaded, in order, with their owners and views, which may be gone.
    std::vector<std::string> loaded;
    std::vector<platform::NSNibOwner*> owners;
    std::vector<const platform::NSView*> views;

    [[nodiscard]] std::unique_ptr<platform::NSNib> instantiate(const std::string& name, platform::NSNibOwner& owner,
                                                               platform::NSView& view) override;
};

} // namespace support
