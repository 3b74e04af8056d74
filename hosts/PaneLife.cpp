#include "hosts/PaneLife.h"

#include "platform/Guarded.h"
#include "platform/Log.h"

#include <utility>

namespace kelvo {

PaneLife::PaneLife(platform::NSPreferencePane& pane, std::string host) : pane_(pane), host_(std::move(host)) {}

PaneLife::~PaneLife() { unselect(); }

platform::NSView& PaneLife::load() {
    platform::NSView& view = pane_.loadMainView();
    log("mainViewDidLoad");
    pane_.mainViewDidLoad();
    return view;
}

void PaneLife::select() noexcept {
    if (isSelected_) return;
    isSelected_ = true;
    log("willSelect");
    platform::guarded([this] { pane_.willSelect(); });
}

void PaneLife::unselect() noexcept {
    if (!isSelected_) return;
    isSelected_ = false;
    log("willUnselect");
    platform::guarded([this] { pane_.willUnselect(); });
}

void PaneLife::log(const std::string& step) const { platform::NSLog("%@: %@", host_, step); }

} // namespace kelvo
