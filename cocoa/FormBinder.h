#pragma once

#include "cocoa/FormBinding.h"
#include "cocoa/NibOwner.h"
#include "cocoa/ShownSubviews.h"
#include "platform/Nib.h"

#include <string>
#include <vector>

namespace kelvo {

/// Ties the views of a form to its owner: by the outlets that the form connects to its owner, and by the actions that
/// its controls send there. A control that only fires needs no outlet. Every outlet needs a view, but for the cell of a
/// pop-up, which its pop-up shows.
class FormBinder {
public:
    FormBinder(std::string formName, KelvoNibOwner* form, platform::NSNibOwner& owner, ShownView shownView);

    /// Ties everything, `view` to the form's outermost view, and fires nothing. A form and an owner that do not fit
    /// each other are a std::runtime_error that names both sides of every misfit, and nothing has been tied then.
    [[nodiscard]] FormBinding bind(platform::NSView& view) const;

private:
    struct Match;

    [[nodiscard]] std::vector<Match> findMatches(const std::vector<platform::NSOutlet>& outlets,
                                                 const std::vector<platform::NSNibAction>& actions) const;
    void tie(const Match& match, FormBinding& binding) const;
    void embed(platform::NSViewController& controller, NSView* page) const;
    void mirrorView(NSView* view, platform::NSView& model, FormBinding& binding) const;
    void readOut(NSView* slider, platform::NSSlider& model, FormBinding& binding) const;

    std::string formName_;
    KelvoNibOwner* form_;
    platform::NSNibOwner& owner_;
    ShownView shownView_;
    std::vector<NSView*> views_;
};

} // namespace kelvo
