#include "platform/Controls.h"

#include <algorithm>

namespace platform {

NSObject::~NSObject() = default;

NSView::~NSView() = default;

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
    selected_ = -1;
    notifyChanged();
}

void NSPopUpButton::addItemWithTitle(std::string title) {
    titles_.push_back(std::move(title));
    if (selected_ < 0) selected_ = 0;
    notifyChanged();
}

void NSPopUpButton::selectItemAtIndex(int index) {
    if (hasItem(index)) set(selected_, index);
}

void NSPopUpButton::performSelectItemAtIndex(int index) {
    if (!isEnabled() || !hasItem(index)) return;
    selectItemAtIndex(index);
    sendAction();
}

bool NSPopUpButton::hasItem(int index) const { return index >= 0 && index < static_cast<int>(titles_.size()); }

NSTextField::~NSTextField() = default;

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
