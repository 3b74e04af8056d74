#include "platform/Nib.h"

#include "platform/NSPreferencePane.h"

namespace platform {

namespace {

/// Loads the form at the first call. A controller without a form has an empty view.
void loadOnce(std::unique_ptr<NSNib>& nib, const std::string& name, NSNibOwner& owner, NSView& view) {
    if (nib || name.empty()) return;
    nib = NSNibs::current().instantiate(name, owner, view);
    owner.awakeFromNib();
}

} // namespace

NSNib::~NSNib() = default;

NSNibs::~NSNibs() = default;

NSNibOwner::~NSNibOwner() = default;

NSViewController::~NSViewController() = default;

NSView& NSViewController::view() {
    loadOnce(nib_, nibName_, *this, view_);
    return view_;
}

NSPreferencePane::~NSPreferencePane() = default;

NSView& NSPreferencePane::loadMainView() {
    loadOnce(nib_, mainNibName_, *this, mainView_);
    return mainView_;
}

} // namespace platform
