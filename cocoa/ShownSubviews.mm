#include "cocoa/ShownSubviews.h"

#include "cocoa/Frames.h"

#include <algorithm>
#include <utility>

namespace kelvo {

ShownSubviews::ShownSubviews(KelvoContainer* container, platform::NSView& model, ShownView shownView)
    : container_(Retained<KelvoContainer>::sharing(container)), model_(model), shownView_(std::move(shownView)) {
    changes_ = model_.observeChanges([this] { show(); });
    show();
}

void ShownSubviews::show() {
    const auto& models = model_.subviews();
    std::erase_if(shown_, [&](const Subview& each) {
        const bool isGone =
            std::none_of(models.begin(), models.end(), [&](const auto& model) { return model.get() == each.model; });
        if (isGone) [each.view.get() removeFromSuperview];
        return isGone;
    });
    for (const auto& model : models) {
        const bool isShown =
            std::any_of(shown_.begin(), shown_.end(), [&](const Subview& each) { return each.model == model.get(); });
        if (!isShown) putIn(*model);
    }
    [container_.get() growToHoldAll];
    [container_.get() setNeedsDisplay:YES];
}

void ShownSubviews::putIn(platform::NSView& model) {
    NSView* const view = shownView_(model);
    if (!view) return;
    [container_.get() addSubview:view];
    place(view, model);
    const auto held = Retained<NSView>::sharing(view);
    auto changes = model.observeChanges([this, &model, held] {
        place(held.get(), model);
        [container_.get() growToHoldAll];
    });
    shown_.push_back({&model, held, std::move(changes)});
}

void ShownSubviews::place(NSView* view, const platform::NSView& model) const {
    [view setFrame:rectOf(model.frame())];
    [container_.get() setNeedsDisplay:YES];
}

} // namespace kelvo
