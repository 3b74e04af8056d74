#pragma once

#include "platform/Nib.h"

#include <algorithm>
#include <string_view>
#include <variant>

namespace support {

/// The control that stands among `outlets` under the name of its field. Throws when there is none of that name and
/// type.
template <typename Control>
Control& outlet(const std::vector<platform::NSOutlet>& outlets, std::string_view name) {
    for (const platform::NSOutlet& candidate : outlets) {
        if (candidate.name == name) return dynamic_cast<Control&>(*std::get<platform::NSView*>(candidate.target));
    }
    throw std::out_of_range(std::string(name));
}

/// The same among those that `owner` publishes, as a form finds it.
template <typename Control>
Control& outlet(platform::NSNibOwner& owner, std::string_view name) {
    return outlet<Control>(owner.outlets(), name);
}

/// Lets a control fire an operation of its owner, as a form does. Throws when there is no such operation.
inline void connect(platform::NSNibOwner& owner, std::string_view outletName, std::string_view selector) {
    const auto actions = owner.actions();
    const auto action = std::find_if(actions.begin(), actions.end(),
                                     [&](const auto& candidate) { return candidate.selector == selector; });
    if (action == actions.end()) throw std::out_of_range(std::string(selector));
    outlet<platform::NSControl>(owner, outletName).setAction(action->perform);
}

} // namespace support
