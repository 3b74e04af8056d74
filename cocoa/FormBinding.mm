#include "cocoa/FormBinding.h"

#include "cocoa/Text.h"
#include "platform/Guarded.h"

@implementation KelvoUserActs

- (void)setActed:(kelvo::Call<void()>)acted {
    acted_ = std::move(acted);
}

- (void)setEdited:(kelvo::Call<void(NSString*)>)edited endEditing:(kelvo::Call<bool(NSString*)>)endEditing {
    edited_ = std::move(edited);
    endEditing_ = std::move(endEditing);
}

- (void)untie {
    acted_ = nullptr;
    edited_ = nullptr;
    endEditing_ = nullptr;
}

- (void)act:(id)sender {
    // What the user does may take the control's form away while the control is still handling it.
    [[self retain] autorelease];
    [[sender retain] autorelease];
    if (acted_) platform::guarded(acted_);
}

- (void)tabView:(NSTabView*)tabView didSelectTabViewItem:(NSTabViewItem*)item {
    (void)item;
    [self act:tabView];
}

- (void)controlTextDidChange:(NSNotification*)notification {
    NSText* const editor = [[notification userInfo] objectForKey:@"NSFieldEditor"];
    const auto edited = edited_;
    if (edited) platform::guarded([&] { edited([editor string]); });
}

- (BOOL)control:(NSControl*)control textShouldEndEditing:(NSText*)editor {
    [[self retain] autorelease];
    [[control retain] autorelease];
    bool mayEnd = true;
    const auto endEditing = endEditing_;
    if (endEditing) platform::guarded([&] { mayEnd = endEditing([editor string]); });
    return mayEnd;
}

@end

namespace kelvo {

FormBinding::~FormBinding() {
    for (const auto& untie : untying_) untie();
    for (const auto& acts : userActs_) [acts.get() untie];
}

std::function<void()> FormBinding::mirror(platform::NSView& model, std::function<void()> show) {
    // What the user does may end the binding, and the models with it.
    const std::weak_ptr<char> tied = tied_;
    std::function<void()> showNow = [tied, show = std::move(show)] {
        if (!tied.expired()) show();
    };
    subscriptions_.push_back(model.observeChanges(showNow));
    showNow();
    return showNow;
}

KelvoUserActs* FormBinding::watchUser() {
    userActs_.emplace_back([[KelvoUserActs alloc] init]);
    return userActs_.back().get();
}

} // namespace kelvo
