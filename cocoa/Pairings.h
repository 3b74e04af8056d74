#pragma once

#include "cocoa/FormBinding.h"
#include "platform/Controls.h"

#import <AppKit/AppKit.h>

#include <memory>

namespace kelvo {

/// How one kind of view shows one kind of control and passes on what the user does to it. What every view has in
/// common, that it can be hidden, moved or disabled, is none of its concern.
struct Pairing {
    bool (*isView)(NSView* view);
    bool (*isModel)(const platform::NSView& model);
    /// Ties two that are of these kinds.
    void (*pair)(NSView* view, platform::NSView& model, FormBinding& binding);
    /// A control for a view that only fires an action; null for views that the user cannot act on.
    std::unique_ptr<platform::NSControl> (*makeModel)();
};

/// The pairing for `view`: that of its own kind, or of a plain view.
[[nodiscard]] const Pairing& pairingFor(NSView* view);

/// Whether `view` is nothing more than a rectangle that holds others.
[[nodiscard]] bool isPlainView(NSView* view);

} // namespace kelvo
