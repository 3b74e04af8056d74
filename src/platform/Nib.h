#pragma once

#include "platform/Controls.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace platform {

class NSViewController;

/// One field of a controller that a form shows: the field's name with the control, with the controller of an embedded
/// form, or with the cell of a pop-up, which the form shows by its pop-up.
struct NSOutlet {
    /// A literal, as are selectors.
    std::string_view name;
    std::variant<NSView*, NSViewController*, NSPopUpButtonCell*> target;
};

/// One operation of a controller that a control of a form may fire, by its selector.
struct NSNibAction {
    std::string_view selector;
    NSControl::Action perform;
};

/// What a form is bound to: the fields it shows and the operations its controls fire, by the names that stand in the
/// form.
class NSNibOwner : public NSObject {
public:
    ~NSNibOwner() override;

    [[nodiscard]] virtual std::vector<NSOutlet> outlets() { return {}; }
    [[nodiscard]] virtual std::vector<NSNibAction> actions() { return {}; }
    /// Called once, when the form has been bound and its controls mirror the models.
    virtual void awakeFromNib() {}
};

/// A form that was loaded and bound. It shows its owner's controls for as long as it lives; destroying it takes it off
/// the screen and touches no control any more, since the owner's may be gone already.
class NSNib {
public:
    NSNib() = default;
    NSNib(const NSNib&) = delete;
    NSNib& operator=(const NSNib&) = delete;
    virtual ~NSNib();
};

/// Loads forms; belongs to the toolkit of the host.
class NSNibs {
public:
    NSNibs() = default;
    NSNibs(const NSNibs&) = delete;
    NSNibs& operator=(const NSNibs&) = delete;
    virtual ~NSNibs();

    static NSNibs& current();

    /// Loads the form `name`, binds it to `owner` and `view` to its outermost widget, and fires nothing meanwhile. A
    /// form and an owner that do not fit each other, or a missing form, are a std::runtime_error that names what.
    [[nodiscard]] virtual std::unique_ptr<NSNib> instantiate(const std::string& name, NSNibOwner& owner,
                                                             NSView& view) = 0;
};

/// A controller with a view of its own, which comes from a form. Only the form's name is kept until the view is first
/// asked for.
class NSViewController : public NSNibOwner {
public:
    explicit NSViewController(std::string nibName) : nibName_(std::move(nibName)) {}
    ~NSViewController() override;

    [[nodiscard]] const std::string& nibName() const { return nibName_; }
    /// The controller's view, its form loaded.
    NSView& view();

private:
    std::string nibName_;
    NSView view_;
    std::unique_ptr<NSNib> nib_;
};

} // namespace platform
