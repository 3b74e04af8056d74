#include "qt/ShownSubviews.h"

#include "platform/Subviews.h"
#include "qt/Frames.h"
#include "qt/TabOrder.h"

#include <QApplication>
#include <QScrollArea>

#include <algorithm>
#include <iterator>
#include <utility>

namespace kelvo {

using platform::NSView;

namespace {

/// The scroll area that `content` is scrolled in; null when it is in none.
QScrollArea* scrollAreaOf(const QWidget& content) {
    QWidget* const viewport = content.parentWidget();
    auto* area = viewport ? qobject_cast<QScrollArea*>(viewport->parentWidget()) : nullptr;
    return area && area->widget() == &content ? area : nullptr;
}

} // namespace

ShownSubviews::ShownSubviews(QWidget& container, NSView& view, WidgetOfView widgetOfView)
    : container_(&container),
      view_(view),
      widgetOfView_(std::move(widgetOfView)),
      height_(container.height()),
      connections_(std::make_unique<QObject>()) {
    view_.setFrame({0.0, 0.0, static_cast<double>(container.width()), static_cast<double>(container.height())});
    changes_ = view_.observeChanges([this] { show(); });
    show();
    if (const QScrollArea* area = scrollAreaOf(container)) {
        viewportWatch_ = std::make_unique<ResizeWatch>(*area->viewport(), [this] {
            if (container_) growToHoldAll();
        });
    }
    QObject::connect(qApp, &QApplication::focusChanged, connections_.get(), [this](QWidget*, QWidget* focused) {
        if (focused && container_ && container_->isAncestorOf(focused)) scrollTo(*focused);
    });
}

ShownSubviews::~ShownSubviews() = default;

void ShownSubviews::show() {
    if (!container_) return;
    const auto& views = view_.subviews();

    const auto [first, last] = platform::goneSubviews(shown_, views);
    takeOut(first, last);
    while (shown_.size() < views.size()) putIn(*views[shown_.size()]);

    if (height_ != view_.frame().height) {
        height_ = view_.frame().height;
        placeAll();
    }
    growToHoldAll();
}

void ShownSubviews::takeOut(std::size_t first, std::size_t last) {
    const auto begin = shown_.begin() + static_cast<std::ptrdiff_t>(first);
    const auto end = shown_.begin() + static_cast<std::ptrdiff_t>(last);
    const std::vector<Subview> gone(std::make_move_iterator(begin), std::make_move_iterator(end));
    shown_.erase(begin, end);
    for (const Subview& each : gone) {
        if (!each.widget || each.widget->parentWidget() != container_) continue;
        each.widget->hide();
        each.widget->setParent(nullptr);
        showWhatIsInFrontAt(each.position);
    }
}

void ShownSubviews::putIn(NSView& view) {
    QWidget* const widget = widgetOfView_(view);
    if (!widget) {
        shown_.push_back({&view, nullptr, nullptr, {}, {}});
        return;
    }
    widget->setParent(container_);
    QWidget* const lastBefore = lastTabStop();
    QWidget* const last =
        lastBefore ? putBehindInTabOrder(*lastBefore, *widget) : putInsideInTabOrder(*container_, *widget);
    auto changes = view.observeChanges([this, &view] {
        const auto moved =
            std::find_if(shown_.begin(), shown_.end(), [&](const Subview& each) { return each.view == &view; });
        if (moved == shown_.end() || !moved->widget) return;
        place(*moved);
        growToHoldAll();
    });
    shown_.push_back({&view, widget, last, widget->pos(), std::move(changes)});
    place(shown_.back());
}

QWidget* ShownSubviews::lastTabStop() const {
    const auto last =
        std::find_if(shown_.rbegin(), shown_.rend(), [](const Subview& each) { return !each.lastTabStop.isNull(); });
    return last == shown_.rend() ? nullptr : last->lastTabStop.data();
}

void ShownSubviews::place(Subview& subview) const {
    const QRect framed = framedGeometryOf(subview);
    const QPoint before = std::exchange(subview.position, framed.topLeft());
    subview.widget->setGeometry(mirroredIn(*container_, arranged(framed)));
    if (subview.position != before) showWhatIsInFrontAt(before);
    showWhatIsInFrontAt(subview.position);
}

void ShownSubviews::placeAll() {
    for (Subview& each : shown_) {
        if (each.widget) place(each);
    }
}

void ShownSubviews::showWhatIsInFrontAt(QPoint position) const {
    bool isInFront = true;
    std::for_each(shown_.rbegin(), shown_.rend(), [&](const Subview& each) {
        if (!each.widget || each.position != position) return;
        const bool isHidden = each.view->isHidden();
        each.widget->setVisible(isInFront && !isHidden);
        isInFront = isInFront && isHidden;
    });
}

void ShownSubviews::growToHoldAll() {
    const platform::NSRect frame = view_.frame();
    QRect held = geometryFromFrame({0.0, 0.0, frame.width, frame.height}, frame.height);
    const QRect own = held;
    for (const Subview& each : shown_) {
        if (each.widget) held |= framedGeometryOf(each);
    }
    const QScrollArea* const area = scrollAreaOf(*container_);
    const int room = area ? area->viewport()->width() : held.right() + 1;
    const auto offsetsBefore = std::exchange(offsets_, offsetsOfColumnsIn(room));
    if (!offsets_.empty()) {
        held = own & QRect(0, 0, room, own.height());
        for (const Subview& each : shown_) {
            if (each.widget) held |= arranged(framedGeometryOf(each));
        }
    }
    if (offsets_ != offsetsBefore) placeAll();

    const int widthBefore = container_->width();
    container_->resize(held.right() + 1, held.bottom() + 1);
    // What is placed from the right moves with the right edge.
    if (container_->layoutDirection() == Qt::RightToLeft && container_->width() != widthBefore) placeAll();
}

QRect ShownSubviews::framedGeometryOf(const Subview& subview) const {
    return geometryFromFrame(subview.view->frame(), height_);
}

/// Empty when the columns fit beside each other.
std::map<int, int> ShownSubviews::offsetsOfColumnsIn(int width) const {
    std::map<int, int> bottoms;
    int right = 0;
    for (const Subview& each : shown_) {
        if (!each.widget) continue;
        const QRect framed = framedGeometryOf(each);
        int& bottom = bottoms[framed.x()];
        bottom = std::max(bottom, framed.bottom() + 1);
        right = std::max(right, framed.right() + 1);
    }
    std::map<int, int> offsets;
    if (right <= width) return offsets;
    int above = 0;
    for (const auto& [left, bottom] : bottoms) {
        offsets[left] = above;
        above += bottom;
    }
    return offsets;
}

QRect ShownSubviews::arranged(QRect framed) const {
    const auto column = offsets_.find(framed.x());
    if (column == offsets_.end()) return framed;
    framed.moveTo(offsets_.begin()->first, framed.y() + column->second);
    return framed;
}

void ShownSubviews::scrollTo(QWidget& focused) const {
    // What was pressed is on the screen, and must not move away before it is let go.
    QScrollArea* const area = scrollAreaOf(*container_);
    if (!area || QGuiApplication::mouseButtons() != Qt::NoButton) return;
    QWidget* subview = &focused;
    while (subview->parentWidget() != container_) subview = subview->parentWidget();
    area->ensureWidgetVisible(subview, 0, 0);
}

} // namespace kelvo
