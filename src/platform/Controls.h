#pragma once

#include "platform/NSObject.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// Points; the origin is at the bottom left and y grows upward.
struct NSRect {
    double x = 0.0;
    double y = 0.0;
    double width = 0.0;
    double height = 0.0;
    bool operator==(const NSRect&) const = default;
};

/// An observer's registration, which ends when this handle is destroyed.
class Subscription {
public:
    Subscription() = default;
    explicit Subscription(std::shared_ptr<const std::function<void()>> observer) : observer_(std::move(observer)) {}

private:
    std::shared_ptr<const std::function<void()>> observer_;
};

/// A rectangle of the interface. Like every control here it is a model: the program sets properties, whoever shows it
/// observes it, and what the user does comes in through one entry that changes the property and fires the action.
/// Setting a property to what it already is notifies nobody.
class NSView : public NSObject {
public:
    ~NSView() override;

    [[nodiscard]] bool isHidden() const { return hidden_; }
    void setHidden(bool hidden) { set(hidden_, hidden); }
    [[nodiscard]] NSRect frame() const { return frame_; }
    void setFrame(NSRect frame) { set(frame_, frame); }

    /// Calls `observer` after each change of a property, until the subscription ends.
    [[nodiscard]] Subscription observeChanges(std::function<void()> observer);

protected:
    template <typename T>
    void set(T& property, T value) {
        if (property == value) return;
        property = std::move(value);
        notifyChanged();
    }
    void notifyChanged();

private:
    bool hidden_ = false;
    NSRect frame_;
    std::vector<std::weak_ptr<const std::function<void()>>> observers_;
};

/// A view that the user can act on.
class NSControl : public NSView {
public:
    ~NSControl() override;

    /// Receives the control whose action fired.
    using Action = std::function<void(NSControl& sender)>;

    [[nodiscard]] bool isEnabled() const { return enabled_; }
    void setEnabled(bool enabled) { set(enabled_, enabled); }
    void setAction(Action action) { action_ = std::move(action); }

protected:
    void sendAction();

private:
    bool enabled_ = true;
    Action action_;
};

/// A push button, or with `Type::Switch` a check box.
class NSButton : public NSControl {
public:
    enum class Type { MomentaryPush, Switch };

    explicit NSButton(Type type = Type::MomentaryPush) : type_(type) {}
    ~NSButton() override;

    /// 1 on, 0 off, -1 mixed.
    [[nodiscard]] int state() const { return state_; }
    void setState(int state) { set(state_, state); }

    /// The user's click: a check box changes sides, then the action fires. A disabled button takes none.
    void performClick();

private:
    Type type_;
    int state_ = 0;
};

/// A menu of titles, one of which is selected.
class NSPopUpButton : public NSControl {
public:
    ~NSPopUpButton() override;

    [[nodiscard]] const std::vector<std::string>& itemTitles() const { return titles_; }
    /// -1 when there is no item.
    [[nodiscard]] int indexOfSelectedItem() const { return selected_; }
    [[nodiscard]] std::optional<std::string> titleOfSelectedItem() const;
    /// The first item of that title; -1 when there is none.
    [[nodiscard]] int indexOfItemWithTitle(std::string_view title) const;

    void removeAllItems();
    /// The first item added to an empty menu becomes the selected one.
    void addItemWithTitle(std::string title);
    /// An index without an item changes nothing.
    void selectItemAtIndex(int index);

    /// The user's choice, which fires the action also when the item was selected already. A disabled pop-up, or an
    /// index without an item, takes none.
    void performSelectItemAtIndex(int index);

private:
    [[nodiscard]] bool hasItem(int index) const;

    std::vector<std::string> titles_;
    int selected_ = -1;
};

/// A text that the program sets; editing comes with the fields that offer it.
class NSTextField : public NSControl {
public:
    ~NSTextField() override;

    [[nodiscard]] const std::string& stringValue() const { return text_; }
    void setStringValue(std::string text) { set(text_, std::move(text)); }

private:
    std::string text_;
};

class NSTabView;

/// One tab of a tab view.
class NSTabViewItem {
public:
    explicit NSTabViewItem(std::string label) : label_(std::move(label)) {}
    [[nodiscard]] const std::string& label() const { return label_; }

private:
    std::string label_;
};

/// Hears of a change of tab before it happens.
class NSTabViewDelegate {
public:
    virtual void tabViewWillSelectTabViewItem(NSTabView& tabView, const NSTabViewItem& item) = 0;

protected:
    ~NSTabViewDelegate() = default;
};

/// Pages of which one is shown.
class NSTabView : public NSView {
public:
    ~NSTabView() override;

    [[nodiscard]] int numberOfTabViewItems() const { return static_cast<int>(items_.size()); }
    /// -1 when there is no tab.
    [[nodiscard]] int indexOfSelectedTabViewItem() const { return selected_; }
    /// The place of `item` among the tabs; -1 when it is none of them.
    [[nodiscard]] int indexOfTabViewItem(const NSTabViewItem& item) const;

    /// Adds a tab at the end; the first becomes the selected one, which no delegate hears of.
    void addTabViewItem(std::string label);
    /// The delegate must outlive the tab view or be taken back with null.
    void setDelegate(NSTabViewDelegate* delegate) { delegate_ = delegate; }
    /// Asks the delegate, then shows the tab, for the program and for the user alike. The tab that is selected already,
    /// or an index without a tab, changes nothing and the delegate hears nothing.
    void selectTabViewItemAtIndex(int index);

private:
    std::list<NSTabViewItem> items_;
    int selected_ = -1;
    NSTabViewDelegate* delegate_ = nullptr;
};

} // namespace platform
