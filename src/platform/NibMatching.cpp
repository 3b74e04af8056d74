#include "platform/NibMatching.h"

#include <algorithm>
#include <initializer_list>
#include <stdexcept>
#include <string_view>

namespace platform {

namespace {

const NSNibAction* actionOf(const std::string& selector, const std::vector<NSNibAction>& actions) {
    const auto found =
        std::find_if(actions.begin(), actions.end(), [&](const auto& each) { return each.selector == selector; });
    return found == actions.end() ? nullptr : &*found;
}

/// Whether what a piece stands for shows `outlet`, too: the outlet's own piece does, and that of a cell's pop-up.
bool showsOutlet(const NSOutlet* shown, const NSOutlet& outlet) {
    if (shown == &outlet) return true;
    const auto* cell = std::get_if<NSPopUpButtonCell*>(&outlet.target);
    const auto* view = shown ? std::get_if<NSView*>(&shown->target) : nullptr;
    return cell && *cell && view && *view == &(*cell)->popUp();
}

} // namespace

const NSOutlet* outletNamed(const std::string& name, const std::vector<NSOutlet>& outlets) {
    const auto found =
        std::find_if(outlets.begin(), outlets.end(), [&](const auto& each) { return each.name == name; });
    return found == outlets.end() ? nullptr : &*found;
}

std::vector<NSNibMatch> matchNib(const std::string& formName, const NSNibPieces& form,
                                 const std::vector<NSOutlet>& outlets, const std::vector<NSNibAction>& actions) {
    std::vector<NSNibMatch> matches;
    std::string misfits;
    const auto misfit = [&](std::initializer_list<std::string_view> words) {
        if (!misfits.empty()) misfits += "; ";
        for (const std::string_view word : words) misfits += word;
    };

    for (std::size_t i = 0; i < form.pieces.size(); ++i) {
        const auto& [name, selector] = form.pieces[i];
        const NSOutlet* outlet = outletNamed(name, outlets);
        const NSNibAction* action = actionOf(selector, actions);

        if (!outlet && name.ends_with('_')) misfit({form.kind, " ", name, " has no outlet"});
        if (outlet && !form.canShow(i, *outlet)) misfit({form.kind, " ", name, " cannot show its outlet"});
        if (!selector.empty() && !action) misfit({form.kind, " ", name, " fires ", selector, ", which is no action"});
        if (action && !form.canFire(i)) misfit({form.kind, " ", name, " cannot fire ", selector});
        if (outlet || action) matches.push_back({i, outlet, action});
    }
    for (const NSOutlet& outlet : outlets) {
        const bool isShown = std::any_of(matches.begin(), matches.end(),
                                         [&](const auto& each) { return showsOutlet(each.outlet, outlet); });
        if (!isShown) misfit({"outlet ", outlet.name, " has no ", form.kind});
    }

    if (!misfits.empty()) throw std::runtime_error("form " + formName + " does not fit its owner: " + misfits);
    return matches;
}

} // namespace platform
