#pragma once

#include "platform/Controls.h"
#include "qt/FormBinding.h"

#include <QWidget>

#include <memory>

namespace kelvo {

/// How one kind of widget shows one kind of control and passes on what the user does to it. What every view has in
/// common, that it can be hidden or disabled, is none of its concern.
struct Pairing {
    bool (*isWidget)(const QWidget& widget);
    bool (*isModel)(const platform::NSView& model);
    /// Ties two that are of these kinds.
    void (*pair)(QWidget& widget, platform::NSView& model, FormBinding& binding);
    /// A control for a widget that only fires an action; null for widgets that the user cannot act on.
    std::unique_ptr<platform::NSControl> (*makeModel)();
};

/// The pairing for `widget`: that of its own kind, or of a plain view.
[[nodiscard]] const Pairing& pairingFor(const QWidget& widget);

/// Whether `widget` is nothing more than a rectangle that holds others.
[[nodiscard]] bool isPlainView(const QWidget& widget);

} // namespace kelvo
