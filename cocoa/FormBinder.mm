#include "cocoa/FormBinder.h"

#include "cocoa/Elements.h"
#include "cocoa/FormViews.h"
#include "cocoa/Frames.h"
#include "cocoa/Pairings.h"
#include "cocoa/Text.h"
#include "platform/NibMatching.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace kelvo {

using platform::NSNibAction;
using platform::NSOutlet;

/// A view with what it stands for: an outlet, an action, or both.
struct FormBinder::Match {
    NSView* view;
    const NSOutlet* outlet;
    const NSNibAction* action;
};

namespace {

/// All views of a form, those on the tabs that are not shown included.
void collect(NSView* view, std::vector<NSView*>& views) {
    views.push_back(view);
    if ([view isKindOfClass:[NSTabView class]]) {
        for (NSTabViewItem* item : elementsOf<NSTabViewItem>([static_cast<NSTabView*>(view) tabViewItems]))
            collect([item view], views);
        return;
    }
    for (NSView* inner : elementsOf<NSView>([view subviews])) collect(inner, views);
}

/// The selector that a control sends; empty when it sends none.
std::string selectorOf(NSView* view) {
    if (![view isKindOfClass:[NSControl class]]) return {};
    const SEL action = [static_cast<NSControl*>(view) action];
    return action ? textOf(NSStringFromSelector(action)) : std::string();
}

bool fitsOutlet(NSView* view, const NSOutlet& outlet) {
    if (std::holds_alternative<platform::NSViewController*>(outlet.target)) return isPlainView(view);
    const auto* model = std::get_if<platform::NSView*>(&outlet.target);
    return model && *model && pairingFor(view).isModel(**model);
}

} // namespace

FormBinder::FormBinder(std::string formName, KelvoNibOwner* form, platform::NSNibOwner& owner, ShownView shownView)
    : formName_(std::move(formName)), form_(form), owner_(owner), shownView_(std::move(shownView)) {
    collect([form_ view], views_);
}

FormBinding FormBinder::bind(platform::NSView& view) const {
    const std::vector<NSOutlet> outlets = owner_.outlets();
    const std::vector<NSNibAction> actions = owner_.actions();

    FormBinding binding;
    for (const Match& match : findMatches(outlets, actions)) tie(match, binding);
    NSView* const outermost = [form_ view];
    view.setFrame(frameOf([outermost frame]));
    binding.mirror(view, [outermost, &view] { [outermost setHidden:view.isHidden()]; });
    return binding;
}

std::vector<FormBinder::Match> FormBinder::findMatches(const std::vector<NSOutlet>& outlets,
                                                       const std::vector<NSNibAction>& actions) const {
    std::vector<std::pair<std::string, NSView*>> views;
    for (const auto& [name, view] : [form_ views]) views.emplace_back(name, view);
    for (NSView* view : views_) {
        const bool isConnected =
            std::any_of(views.begin(), views.end(), [&](const auto& each) { return each.second == view; });
        if (!isConnected && !selectorOf(view).empty()) views.emplace_back("without a name", view);
    }
    platform::NSNibPieces form{
        .kind = "view",
        .pieces = {},
        .canShow = [&](std::size_t index, const NSOutlet& outlet) { return fitsOutlet(views[index].second, outlet); },
        .canFire = [&](std::size_t index) { return pairingFor(views[index].second).makeModel != nullptr; }};
    for (const auto& [name, view] : views) form.pieces.push_back({name, selectorOf(view)});

    std::vector<Match> matches;
    for (const auto& [index, outlet, action] : platform::matchNib(formName_, form, outlets, actions)) {
        matches.push_back({views[index].second, outlet, action});
    }
    return matches;
}

void FormBinder::tie(const Match& match, FormBinding& binding) const {
    NSView* const view = match.view;
    if (match.outlet && std::holds_alternative<platform::NSViewController*>(match.outlet->target)) {
        embed(*std::get<platform::NSViewController*>(match.outlet->target), view);
        return;
    }
    const Pairing& pairing = pairingFor(view);
    platform::NSView& model =
        match.outlet ? *std::get<platform::NSView*>(match.outlet->target) : binding.keep(pairing.makeModel());
    if (match.action) dynamic_cast<platform::NSControl&>(model).setAction(match.action->perform);
    mirrorView(view, model, binding);
    if ([view isKindOfClass:[KelvoContainer class]]) {
        model.setFrame(frameOf([view frame]));
        binding.keep(std::make_unique<ShownSubviews>(static_cast<KelvoContainer*>(view), model, shownView_));
        return;
    }
    model.setFrame(frameOf([view frame]));
    binding.mirror(model, [view, &model] {
        if (!NSEqualRects([view frame], rectOf(model.frame()))) {
            [[view superview] setNeedsDisplay:YES];
            [view setFrame:rectOf(model.frame())];
        }
    });
    pairing.pair(view, model, binding);
    if (auto* slider = dynamic_cast<platform::NSSlider*>(&model)) readOut(view, *slider, binding);
}

void FormBinder::embed(platform::NSViewController& controller, NSView* page) const {
    // A controller without a form leaves its page empty.
    NSView* const content = shownView_(controller.view());
    if (!content) return;
    [page addSubview:content];
}

void FormBinder::mirrorView(NSView* view, platform::NSView& model, FormBinding& binding) const {
    binding.mirror(model, [view, &model] { [view setHidden:model.isHidden()]; });
    // The words beside a control have nothing to say without it.
    for (NSView* each : views_) {
        if (![each isKindOfClass:[KelvoCaption class]]) continue;
        auto* const caption = static_cast<KelvoCaption*>(each);
        if ([caption captioned] != view) continue;
        binding.mirror(model, [caption, &model] { [caption setHidden:model.isHidden()]; });
    }
    if (auto* control = dynamic_cast<platform::NSControl*>(&model)) {
        binding.mirror(model, [view, control] { [static_cast<NSControl*>(view) setEnabled:control->isEnabled()]; });
    }
}

void FormBinder::readOut(NSView* slider, platform::NSSlider& model, FormBinding& binding) const {
    for (NSView* each : views_) {
        if (![each isKindOfClass:[KelvoReadout class]]) continue;
        auto* const readout = static_cast<KelvoReadout*>(each);
        if ([readout tag] != [static_cast<NSControl*>(slider) tag]) continue;
        const auto pattern = Retained<NSString>::sharing([readout stringValue]);
        binding.mirror(model, [readout, pattern, &model] {
            NSString* const number =
                [NSString stringWithFormat:@"%.*f", [readout decimals], [readout shownValueOf:model.doubleValue()]];
            [readout setStringValue:[pattern.get() stringByReplacingOccurrencesOfString:@"%1" withString:number]];
        });
    }
}

} // namespace kelvo
