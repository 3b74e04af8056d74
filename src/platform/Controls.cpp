#include "platform/Controls.h"

#include "platform/PropertyList.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace platform {

NSObject::~NSObject() = default;

NSView::~NSView() {
    for (const auto& subview : subviews_) subview->superview_ = nullptr;
}

void NSView::addSubview(std::shared_ptr<NSView> view) {
    view->removeFromSuperview();
    view->superview_ = this;
    subviews_.push_back(std::move(view));
    notifyChanged();
}

void NSView::removeFromSuperview() {
    NSView* const superview = std::exchange(superview_, nullptr);
    if (!superview) return;
    const auto isThis = [this](const auto& subview) { return subview.get() == this; };
    const auto place = std::find_if(superview->subviews_.begin(), superview->subviews_.end(), isThis);
    // This view stays alive until the superview has shown that it is gone.
    const std::shared_ptr<NSView> self = std::move(*place);
    superview->subviews_.erase(place);
    superview->notifyChanged();
}

NSPoint NSView::convertPointFromContentView(NSPoint point) const {
    return {point.x - originInContentView_.x, point.y - originInContentView_.y};
}

void NSView::setNeedsDisplay(bool needsDisplay) {
    if (needsDisplay) notifyChanged();
}

Subscription NSView::observeChanges(std::function<void()> observer) {
    auto registered = std::make_shared<const std::function<void()>>(std::move(observer));
    std::erase_if(observers_, [](const auto& entry) { return entry.expired(); });
    observers_.push_back(registered);
    return Subscription(std::move(registered));
}

void NSView::notifyChanged() {
    // An observer may end its own subscription or begin another one, so the list is walked in a copy.
    const auto observers = observers_;
    for (const auto& entry : observers) {
        if (const auto observer = entry.lock()) (*observer)();
    }
}

NSControl::~NSControl() = default;

void NSControl::sendAction() {
    // The copy keeps the action alive while it runs, even if it gives the control another one.
    if (const Action action = action_) action(*this);
}

NSButton::~NSButton() = default;

void NSButton::performClick() {
    if (!isEnabled()) return;
    if (type_ == Type::Switch) setState(state_ == 0 ? 1 : 0);
    sendAction();
}

void NSPopUpButtonCell::setBordered(bool bordered) { popUp_.set(bordered_, bordered); }

void NSPopUpButtonCell::setArrow(bool arrow) { popUp_.set(arrow_, arrow); }

double NSPopUpButtonCell::attributedTitleWidth() const { return measure_ ? measure_(popUp_.title()) : 0.0; }

NSPopUpButton::~NSPopUpButton() = default;

std::optional<std::string> NSPopUpButton::titleOfSelectedItem() const {
    return hasItem(selected_) ? std::optional(titles_[static_cast<std::size_t>(selected_)]) : std::nullopt;
}

int NSPopUpButton::indexOfItemWithTitle(std::string_view title) const {
    const auto item = std::find(titles_.begin(), titles_.end(), title);
    return item == titles_.end() ? -1 : static_cast<int>(item - titles_.begin());
}

void NSPopUpButton::removeAllItems() {
    if (titles_.empty()) return;
    titles_.clear();
    ++timesEmptied_;
    selected_ = -1;
    notifyChanged();
}

void NSPopUpButton::addItemWithTitle(std::string title) {
    std::vector<std::string> titles;
    titles.push_back(std::move(title));
    addItemsWithTitles(std::move(titles));
}

void NSPopUpButton::addItemsWithTitles(std::vector<std::string> titles) {
    if (titles.empty()) return;
    titles_.insert(titles_.end(), std::make_move_iterator(titles.begin()), std::make_move_iterator(titles.end()));
    if (selected_ < 0) selected_ = 0;
    notifyChanged();
}

void NSPopUpButton::selectItemAtIndex(int index) {
    if (hasItem(index)) set(selected_, index);
}

void NSPopUpButton::performSelectItemAtIndex(int index) {
    if (!opensMenu() || !hasItem(index) || (pullsDown_ && index == 0)) return;
    selectItemAtIndex(index);
    sendAction();
}

bool NSPopUpButton::hasItem(int index) const { return index >= 0 && index < static_cast<int>(titles_.size()); }

NSSlider::~NSSlider() = default;

void NSSlider::setDoubleValue(double value) { set(value_, bounded(value)); }

void NSSlider::setBounds(double minimum, double maximum) {
    minimum_ = minimum;
    maximum_ = maximum;
    setDoubleValue(value_);
}

void NSSlider::performSetDoubleValue(double value) {
    if (!isEnabled()) return;
    setDoubleValue(value);
    sendAction();
}

double NSSlider::bounded(double value) const {
    if (std::isnan(value)) return minimum_.value_or(0.0);
    if (minimum_ && value < *minimum_) return *minimum_;
    if (maximum_ && value > *maximum_) return *maximum_;
    return value;
}

bool NSNumberFormatter::accepts(const std::string& text) const {
    if (text.empty()) return true;
    const double number = leadingNumber(text);
    return isWhollyNumber(text) && number >= minimum && number <= maximum;
}

NSTextField::~NSTextField() = default;

bool NSTextField::performEndEditing(const std::string& text) {
    if (!isEnabled()) return true;
    setStringValue(text);
    if (!delegate_) return true;
    if (formatter_ && !formatter_->accepts(text)) {
        return delegate_->controlDidFailToFormatStringErrorDescription(*this, text, "not a number within the bounds");
    }
    return delegate_->controlTextShouldEndEditing(*this, text);
}

NSMatrix::~NSMatrix() = default;

void NSMatrix::setNumberOfRows(int rows) {
    rows_ = rows;
    selected_ = rows > 0 ? std::clamp(selected_, 0, rows - 1) : -1;
    notifyChanged();
}

void NSMatrix::selectCellAtRowColumn(int row, int column) {
    if (row >= 0 && row < rows_ && column == 0) set(selected_, row);
}

void NSMatrix::performSelectRow(int row) {
    if (!isEnabled() || row < 0 || row >= rows_) return;
    selectCellAtRowColumn(row, 0);
    sendAction();
}

NSTabView::~NSTabView() = default;

int NSTabView::indexOfTabViewItem(const NSTabViewItem& item) const {
    int index = 0;
    for (const NSTabViewItem& candidate : items_) {
        if (&candidate == &item) return index;
        ++index;
    }
    return -1;
}

void NSTabView::addTabViewItem(std::string label) {
    items_.emplace_back(std::move(label));
    if (selected_ < 0) selected_ = 0;
    notifyChanged();
}

void NSTabView::selectTabViewItemAtIndex(int index) {
    if (index < 0 || index >= numberOfTabViewItems() || index == selected_) return;
    if (delegate_) delegate_->tabViewWillSelectTabViewItem(*this, *std::next(items_.begin(), index));
    set(selected_, index);
}

} // namespace platform
