#include "cocoa/ShownSubviews.h"

#include "cocoa/Frames.h"
#include "platform/Subviews.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace kelvo {

ShownSubviews::ShownSubviews(KelvoContainer* container, platform::NSView& model, ShownView shownView)
    : container_(Retained<KelvoContainer>::sharing(container)), model_(model), shownView_(std::move(shownView)) {
    changes_ = model_.observeChanges([this] { show(); });
    show();
}

void ShownSubviews::show() {
    const auto& models = model_.subviews();
    const auto [first, last] = platform::goneSubviews(shown_, models);
    const auto begin = shown_.begin() + static_cast<std::ptrdiff_t>(first);
    const auto end = shown_.begin() + static_cast<std::ptrdiff_t>(last);
    std::for_each(begin, end, [](const Subview& gone) { [gone.shown.get() removeFromSuperview]; });
    shown_.erase(begin, end);
    while (shown_.size() < models.size()) putIn(*models[shown_.size()]);
    [container_.get() growToHoldAllSoon];
    [container_.get() setNeedsDisplay:YES];
}

void ShownSubviews::putIn(platform::NSView& model) {
    NSView* const view = shownView_(model);
    if (!view) {
        shown_.push_back({&model, {}, {}});
        return;
    }
    [container_.get() addSubview:view];
    place(view, model);
    const auto held = Retained<NSView>::sharing(view);
    auto changes = model.observeChanges([this, &model, held] {
        place(held.get(), model);
        [container_.get() growToHoldAllSoon];
    });
    shown_.push_back({&model, held, std::move(changes)});
}

void ShownSubviews::place(NSView* view, const platform::NSView& model) const {
    [view setFrame:rectOf(model.frame())];
    [container_.get() setNeedsDisplay:YES];
}

} // namespace kelvo
