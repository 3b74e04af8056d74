#include "cocoa/CocoaNibs.h"

#include "cocoa/FormBinder.h"
#include "cocoa/FormTexts.h"
#include "cocoa/NibOwner.h"
#include "cocoa/Text.h"

#include <optional>
#include <stdexcept>
#include <utility>

namespace kelvo {

class CocoaNibs::Nib final : public platform::NSNib {
public:
    Nib(CocoaNibs& nibs, const platform::NSView& view, FormBinding binding, Retained<NSView> form)
        : nibs_(nibs), view_(&view), binding_(std::move(binding)), form_(std::move(form)) {}

    ~Nib() override {
        // Untied first, so that nothing the views do while they go reaches a model.
        binding_.reset();
        [form_.get() removeFromSuperview];
        nibs_.views_.erase(view_);
    }

private:
    CocoaNibs& nibs_;
    const platform::NSView* view_;
    std::optional<FormBinding> binding_;
    Retained<NSView> form_;
};

std::unique_ptr<platform::NSNib> CocoaNibs::instantiate(const std::string& name, platform::NSNibOwner& owner,
                                                        platform::NSView& view) {
    NSString* const path = [bundle_.get() pathForResource:platformText(name) ofType:@"xib"];
    if (!path) throw std::runtime_error("there is no form " + name);

    std::vector<std::string> outlets;
    for (const platform::NSOutlet& outlet : owner.outlets()) outlets.emplace_back(outlet.name);
    const Retained<KelvoNibOwner> form([[KelvoNibOwner alloc] initWithNames:std::move(outlets)]);
    const Retained<::NSNib> nib([[::NSNib alloc] initWithContentsOfURL:[NSURL fileURLWithPath:path]]);
    NSArray* topLevelObjects = nil;
    const bool isLoaded = [nib.get() instantiateNibWithOwner:form.get() topLevelObjects:&topLevelObjects];
    if (!isLoaded || ![form.get() view]) throw std::runtime_error("the form " + name + " cannot be read");

    auto outermost = Retained<NSView>::sharing([form.get() view]);
    localizeTexts(outermost.get(), platform::NSBundle::bundleWithIdentifier(textOf([bundle_.get() bundleIdentifier])));
    const FormBinder binder(name, form.get(), owner, [this](const platform::NSView& each) { return viewFor(each); });
    FormBinding binding = binder.bind(view);

    views_[&view] = outermost.get();
    return std::make_unique<Nib>(*this, view, std::move(binding), std::move(outermost));
}

NSView* CocoaNibs::viewFor(const platform::NSView& view) const {
    const auto shown = views_.find(&view);
    return shown == views_.end() ? nil : shown->second;
}

} // namespace kelvo
