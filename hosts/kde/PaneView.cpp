#include "hosts/kde/PaneView.h"

#include <QHideEvent>
#include <QShowEvent>
#include <QVBoxLayout>

#include <utility>

namespace kelvo {

namespace {

/// The view whose pane is selected. The port of a pane and the current device are there once in a process, and a view
/// may come before the one that it replaces is gone.
PaneView* selectedView = nullptr;

} // namespace

PaneView::PaneView(std::shared_ptr<platform::NSPreferencePane> pane, const QtNibs& nibs, QtRunLoop& runLoop,
                   QWidget* parent)
    : QWidget(parent),
      pane_(std::move(pane)),
      life_(*pane_, "kcm_kelvo_touch_display"),
      runLoop_(runLoop),
      form_(nibs.widgetFor(life_.load())) {
    auto layout = std::make_unique<QVBoxLayout>(this);
    layout->setContentsMargins({});
    if (form_) layout->addWidget(form_);
    static_cast<void>(layout.release()); // The view owns it.
}

PaneView::~PaneView() {
    unselect();
    // The pane, or a widget of its form, may be waiting below on the stack.
    if (form_) {
        form_->hide();
        form_->setParent(nullptr);
    }
    runLoop_.whenNothingWaits([kept = std::move(pane_)] {});
}

// A spontaneous event is the window system's: minimising, or another virtual desktop. The pane is not left by that.

void PaneView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!event->spontaneous()) settleSoon();
}

void PaneView::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    if (!event->spontaneous()) settleSoon();
}

/// What the owner of the window says in one turn of the event loop counts only in the end.
void PaneView::settleSoon() {
    if (std::exchange(isAboutToSettle_, true)) return;
    QMetaObject::invokeMethod(
        this, [this] { settle(); }, Qt::QueuedConnection);
}

void PaneView::settle() {
    isAboutToSettle_ = false;
    if (isVisible()) {
        select();
    } else {
        unselect();
    }
}

void PaneView::select() {
    if (selectedView && selectedView != this) selectedView->unselect();
    selectedView = this;
    life_.select();
}

void PaneView::unselect() {
    if (selectedView == this) selectedView = nullptr;
    life_.unselect();
}

} // namespace kelvo
