#pragma once

#include "cocoa/FormViews.h"
#include "cocoa/Retained.h"
#include "platform/Controls.h"

#include <functional>
#include <memory>
#include <vector>

namespace kelvo {

/// Finds what shows a model; nil when nothing does.
using ShownView = std::function<NSView*(const platform::NSView&)>;

/// Shows the views inside a model's view, each where its frame says, in a container that scrolls.
class ShownSubviews {
public:
    ShownSubviews(KelvoContainer* container, platform::NSView& model, ShownView shownView);

private:
    struct Subview {
        const platform::NSView* view = nullptr;
        /// Nil where nothing shows the view.
        Retained<NSView> shown;
        platform::Subscription changes;
    };

    void show();
    void putIn(platform::NSView& model);
    void place(NSView* view, const platform::NSView& model) const;

    Retained<KelvoContainer> container_;
    platform::NSView& model_;
    ShownView shownView_;
    std::vector<Subview> shown_;
    platform::Subscription changes_;
};

} // namespace kelvo
