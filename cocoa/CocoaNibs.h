#pragma once

#include "cocoa/Retained.h"
#include "platform/Nib.h"

#import <AppKit/AppKit.h>

#include <map>
#include <memory>
#include <string>

namespace kelvo {

/// Makes views of the forms that lie in a bundle and binds them to their owners.
class CocoaNibs final : public platform::NSNibs {
public:
    explicit CocoaNibs(NSBundle* bundle) : bundle_(Retained<NSBundle>::sharing(bundle)) {}

    [[nodiscard]] std::unique_ptr<platform::NSNib> instantiate(const std::string& name, platform::NSNibOwner& owner,
                                                               platform::NSView& view) override;

    /// What shows `view`, for a host or an outer form to put in its place; nil when the view has no form.
    [[nodiscard]] NSView* viewFor(const platform::NSView& view) const;

private:
    class Nib;

    Retained<NSBundle> bundle_;
    std::map<const platform::NSView*, NSView*> views_;
};

} // namespace kelvo
