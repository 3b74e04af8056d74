#pragma once

#include "platform/Geometry.h"
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

/// A press or a release of the pointer, at a place in the window's content view.
struct NSEvent {
    NSPoint locationInWindow;
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
    /// The view's own rectangle, in its own coordinates.
    [[nodiscard]] NSRect bounds() const { return {0.0, 0.0, frame_.width, frame_.height}; }

    /// The views inside, back to front. A view keeps those inside alive.
    [[nodiscard]] const std::vector<std::shared_ptr<NSView>>& subviews() const { return subviews_; }
    /// Puts `view` in front of the others, out of the view it was in.
    void addSubview(std::shared_ptr<NSView> view);
    /// Takes this view out of the one it is in, which may have been the last to keep it.
    void removeFromSuperview();

    /// Where the view lies in the window's content view, which the toolkit says before it passes an event.
    void setOriginInContentView(NSPoint origin) { originInContentView_ = origin; }
    /// `point` of the content view in this view's coordinates.
    [[nodiscard]] NSPoint convertPointFromContentView(NSPoint point) const;

    /// Asks for the view to be drawn anew.
    void setNeedsDisplay(bool needsDisplay);
    /// Draws the view into the current graphics context.
    virtual void drawRect(NSRect /*dirtyRect*/) {}
    /// What the view shows, for those who do not see it; none while there is nothing to tell. The form has the words.
    [[nodiscard]] virtual std::optional<double> accessibilityValue() const { return std::nullopt; }
    virtual void mouseDown(const NSEvent& /*event*/) {}
    virtual void mouseUp(const NSEvent& /*event*/) {}

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
    NSPoint originInContentView_;
    NSView* superview_ = nullptr;
    std::vector<std::shared_ptr<NSView>> subviews_;
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

class NSPopUpButton;

/// What a pop-up's button looks like, and how wide its title is.
class NSPopUpButtonCell {
public:
    explicit NSPopUpButtonCell(NSPopUpButton& popUp) : popUp_(popUp) {}
    NSPopUpButtonCell(const NSPopUpButtonCell&) = delete;
    NSPopUpButtonCell& operator=(const NSPopUpButtonCell&) = delete;

    /// The pop-up that this is the cell of.
    [[nodiscard]] const NSPopUpButton& popUp() const { return popUp_; }
    [[nodiscard]] bool isBordered() const { return bordered_; }
    void setBordered(bool bordered);
    [[nodiscard]] bool hasArrow() const { return arrow_; }
    void setArrow(bool arrow);
    /// The width of the pop-up's title as it is drawn, in points; 0 where nobody draws it.
    [[nodiscard]] double attributedTitleWidth() const;
    /// Whoever shows the pop-up measures its texts.
    void setMeasure(std::function<double(const std::string& text)> measure) { measure_ = std::move(measure); }

private:
    NSPopUpButton& popUp_;
    bool bordered_ = true;
    bool arrow_ = true;
    std::function<double(const std::string& text)> measure_;
};

/// A menu of titles, one of which is selected. A pull-down's first item carries the title and is not offered to the
/// user.
class NSPopUpButton : public NSControl {
public:
    explicit NSPopUpButton(bool pullsDown = false) : pullsDown_(pullsDown) {}
    ~NSPopUpButton() override;

    [[nodiscard]] bool pullsDown() const { return pullsDown_; }
    [[nodiscard]] const std::vector<std::string>& itemTitles() const { return titles_; }
    /// -1 when there is no item.
    [[nodiscard]] int indexOfSelectedItem() const { return selected_; }
    [[nodiscard]] std::optional<std::string> titleOfSelectedItem() const;
    /// The first item of that title; -1 when there is none.
    [[nodiscard]] int indexOfItemWithTitle(std::string_view title) const;

    void removeAllItems();
    /// The first item added to an empty menu becomes the selected one.
    void addItemWithTitle(std::string title);
    /// All of them, which is one change.
    void addItemsWithTitles(std::vector<std::string> titles);
    /// How often the menu has lost its items. While this stays, items only come behind those that there are.
    [[nodiscard]] std::size_t timesEmptied() const { return timesEmptied_; }
    /// An index without an item changes nothing.
    void selectItemAtIndex(int index);

    /// What a pull-down shows on its button.
    [[nodiscard]] const std::string& title() const { return title_; }
    void setTitle(std::string title) { set(title_, std::move(title)); }

    [[nodiscard]] NSPopUpButtonCell& cell() { return cell_; }
    [[nodiscard]] const NSPopUpButtonCell& cell() const { return cell_; }

    /// Whether the user may open the menu, by pointer or key.
    [[nodiscard]] virtual bool opensMenu() const { return isEnabled(); }
    /// The user's choice, which fires the action also when the item was selected already. A menu that does not open, or
    /// an index without an item to offer, takes none.
    void performSelectItemAtIndex(int index);

private:
    friend class NSPopUpButtonCell;
    [[nodiscard]] bool hasItem(int index) const;

    bool pullsDown_;
    std::vector<std::string> titles_;
    std::size_t timesEmptied_ = 0;
    int selected_ = -1;
    std::string title_;
    NSPopUpButtonCell cell_{*this};
};

/// A value between two bounds. Without a form there are no bounds.
class NSSlider : public NSControl {
public:
    ~NSSlider() override;

    [[nodiscard]] double doubleValue() const { return value_; }
    /// The value is held to the bounds; NaN becomes the lower one, or 0 without bounds.
    void setDoubleValue(double value);
    [[nodiscard]] std::optional<double> minValue() const { return minimum_; }
    [[nodiscard]] std::optional<double> maxValue() const { return maximum_; }
    /// From the form; the value comes to lie between them.
    void setBounds(double minimum, double maximum);

    /// The user moved it. A disabled slider does not move.
    void performSetDoubleValue(double value);

private:
    [[nodiscard]] double bounded(double value) const;

    double value_ = 0.0;
    std::optional<double> minimum_;
    std::optional<double> maximum_;
};

class NSTextField;

/// Hears of the end of editing in a text field.
class NSTextFieldDelegate {
public:
    /// The user ends editing with `editor` in the field. False keeps the user in it.
    virtual bool controlTextShouldEndEditing(NSTextField& control, const std::string& editor) = 0;
    /// The field's formatter refused `text`. True ends editing all the same.
    virtual bool controlDidFailToFormatStringErrorDescription(NSTextField& control, const std::string& text,
                                                              const std::string& error) = 0;

protected:
    ~NSTextFieldDelegate() = default;
};

/// The numbers that a field takes.
struct NSNumberFormatter {
    double minimum = 0.0;
    double maximum = 0.0;

    /// Whether `text` is wholly one number between the bounds, or empty.
    [[nodiscard]] bool accepts(const std::string& text) const;
};

/// A text that the program sets and, where the form makes it editable, the user changes.
class NSTextField : public NSControl {
public:
    ~NSTextField() override;

    [[nodiscard]] const std::string& stringValue() const { return text_; }
    void setStringValue(std::string text) { set(text_, std::move(text)); }
    /// The text; no text clears the field.
    void setTitleWithMnemonic(const std::optional<std::string>& text) { setStringValue(text.value_or("")); }

    /// The delegate must outlive the field or be taken back with null.
    void setDelegate(NSTextFieldDelegate* delegate) { delegate_ = delegate; }
    /// From the form; without one every text is taken.
    void setFormatter(std::optional<NSNumberFormatter> formatter) { formatter_ = formatter; }

    /// The user types. What stands in the field is its text from then on, but nobody is told before editing ends.
    void performEdit(const std::string& text) {
        if (isEnabled()) setStringValue(text);
    }
    /// The user leaves the field with `text` in it. The text stands in the field, then the delegate hears of it, of a
    /// failure instead when the formatter refuses it. False when the user has to stay.
    bool performEndEditing(const std::string& text);

private:
    std::string text_;
    NSTextFieldDelegate* delegate_ = nullptr;
    std::optional<NSNumberFormatter> formatter_;
};

/// A column of radio buttons, of which one is selected.
class NSMatrix : public NSControl {
public:
    ~NSMatrix() override;

    [[nodiscard]] int numberOfRows() const { return rows_; }
    /// From the form; the first row becomes the selected one.
    void setNumberOfRows(int rows);
    /// -1 when there is no row.
    [[nodiscard]] int selectedRow() const { return selected_; }
    /// A place without a cell changes nothing.
    void selectCellAtRowColumn(int row, int column);

    /// The user's choice, which fires the action also when the row was selected already.
    void performSelectRow(int row);

private:
    int rows_ = 0;
    int selected_ = -1;
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
