#pragma once

#include "cocoa/Call.h"
#include "cocoa/Retained.h"
#include "platform/Controls.h"

#import <AppKit/AppKit.h>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

/// Tells of what the user does to a control: the control's target, and the delegate of those that have one.
@interface KelvoUserActs : NSObject {
    kelvo::Call<void()> acted_;
    kelvo::Call<void(NSString*)> edited_;
    kelvo::Call<bool(NSString*)> endEditing_;
}
- (void)setActed:(kelvo::Call<void()>)acted;
- (void)setEdited:(kelvo::Call<void(NSString*)>)edited endEditing:(kelvo::Call<bool(NSString*)>)endEditing;
/// From then on it tells nobody.
- (void)untie;
- (void)act:(id)sender;
@end

namespace kelvo {

/// What ties the views of one form to the models of its owner. Destroying it unties them and touches no model, since
/// those may be gone by then.
class FormBinding {
public:
    FormBinding() = default;
    FormBinding(FormBinding&&) = default;
    FormBinding& operator=(FormBinding&&) = default;
    ~FormBinding();

    /// Calls `show` now and after each change of `model`, for as long as the form is tied. The result calls it once
    /// more.
    std::function<void()> mirror(platform::NSView& model, std::function<void()> show);

    /// Has the user's acts on a control told to what the result is given.
    KelvoUserActs* watchUser();

    /// Keeps what is needed for as long as the form is tied.
    template <typename T>
    T& keep(std::unique_ptr<T> kept) {
        T& result = *kept;
        kept_.push_back(std::move(kept));
        return result;
    }

    /// Undoes what would reach a model from a view that lives on.
    void atEnd(std::function<void()> untie) { untying_.push_back(std::move(untie)); }

private:
    std::shared_ptr<char> tied_ = std::make_shared<char>();
    std::vector<std::shared_ptr<void>> kept_;
    std::vector<platform::Subscription> subscriptions_;
    std::vector<Retained<KelvoUserActs>> userActs_;
    std::vector<std::function<void()>> untying_;
};

} // namespace kelvo
