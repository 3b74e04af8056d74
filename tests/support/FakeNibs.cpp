#include "support/FakeNibs.h"

#include "support/FormStandIn.h"

namespace support {

std::unique_ptr<platform::NSNib> FakeNibs::instantiate(const std::string& name, platform::NSNibOwner& owner,
                                                       platform::NSView& view) {
    loaded.push_back(name);
    owners.push_back(&owner);
    views.push_back(&view);
    if (name == "TDGesturesCellView") {
        view.setFrame(rowFrame);
        auto& popUp = outlet<platform::NSPopUpButton>(owner, "m_gestures");
        popUp.setFrame(popUpFrame);
        popUp.cell().setMeasure([](const std::string& text) { return 10.0 * static_cast<double>(text.size()); });
        connect(owner, "clickBtn", "changeAction:");
        connect(owner, "m_gestures", "changeAction:");
    }
    return std::make_unique<platform::NSNib>();
}

} // namespace support
