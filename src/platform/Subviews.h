#pragma once

#include "platform/Controls.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <vector>

namespace platform {

/// The views from `first` up to `last` of those that are shown.
struct GoneSubviews {
    std::size_t first = 0;
    std::size_t last = 0;
};

/// Which of the views in `shown`, by their member `view`, are no longer among `views`. Views go from anywhere, one at a
/// time, but come only to the front; so where the last one stands as it stood, all do, and one more view costs the same
/// however many there are.
template <typename Subview>
[[nodiscard]] GoneSubviews goneSubviews(const std::vector<Subview>& shown,
                                        const std::vector<std::shared_ptr<NSView>>& views) {
    const auto isSame = [](const Subview& each, const std::shared_ptr<NSView>& view) {
        return each.view == view.get();
    };
    const std::size_t count = shown.size();
    if (count == 0 || (count <= views.size() && isSame(shown.back(), views[count - 1]))) return {count, count};
    const auto first = std::mismatch(shown.begin(), shown.end(), views.begin(), views.end(), isSame).first;
    const auto last =
        std::mismatch(shown.rbegin(), std::make_reverse_iterator(first), views.rbegin(), views.rend(), isSame).first;
    return {static_cast<std::size_t>(first - shown.begin()), static_cast<std::size_t>(last.base() - shown.begin())};
}

} // namespace platform
