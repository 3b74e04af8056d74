#pragma once

#include "touch/Glass.h"
#include "touch/Panel.h"
#include "touch/SlotTable.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace touch {

/// What a panel says of itself, and the events it sent.
struct Recording : PanelDescription {
    /// Their times count from the first.
    std::vector<KernelEvent> events;

    /// Hands each report's frame to `see`, in its order.
    void play(const Glass& glass, const std::function<void(const Frame&)>& see) const;
};

/// Whether a text of this form has the description of its panel, or needs another one's.
[[nodiscard]] bool hasDescription(std::string_view text);

/// Reads a recording in evemu's text form. `description` has the panel's lines where `events` has none. Throws
/// std::runtime_error, which names the line, for what cannot be read, and for panels that are no touch screens with
/// slots.
[[nodiscard]] Recording readRecording(std::string_view events, std::string_view description = {});

/// A panel's description, and an event, as lines of that form.
[[nodiscard]] std::string textOf(const PanelDescription& panel);
[[nodiscard]] std::string textOf(const KernelEvent& event);

} // namespace touch
