#pragma once

#include "platform/Nib.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace platform {

/// One widget or view of a form, as far as it may stand for something of the form's owner; either text may be empty.
struct NSNibPiece {
    std::string name;
    std::string selector;
};

/// The pieces of a form, in the form's order, with what the toolkit knows of the piece at an index.
struct NSNibPieces {
    /// What the toolkit calls one, for the words of an error.
    std::string kind;
    std::vector<NSNibPiece> pieces;
    std::function<bool(std::size_t index, const NSOutlet& outlet)> canShow;
    std::function<bool(std::size_t index)> canFire;
};

/// The piece at an index with what it stands for: an outlet, an action, or both.
struct NSNibMatch {
    std::size_t index;
    const NSOutlet* outlet;
    const NSNibAction* action;
};

/// The outlet of that name; null when there is none.
[[nodiscard]] const NSOutlet* outletNamed(const std::string& name, const std::vector<NSOutlet>& outlets);

/// Pairs a form with its owner by names and selectors, the same way in every toolkit. A piece must pair when its name
/// ends in "_" or it has a selector, and every outlet needs a piece that shows it; all that do not fit are one
/// std::runtime_error that names both sides. The matches point into `outlets` and `actions`.
[[nodiscard]] std::vector<NSNibMatch> matchNib(const std::string& formName, const NSNibPieces& form,
                                               const std::vector<NSOutlet>& outlets,
                                               const std::vector<NSNibAction>& actions);

} // namespace platform
