#include "qt/ShownSubviews.h"

#include "platform/Subviews.h"
#include "qt/Frames.h"
#include "qt/RowScroller.h"
#include "qt/TabOrder.h"

#include <QApplication>
#include <QScrollArea>
#include <QStyle>

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
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

/// A widget with where its view's frame puts it, read from the left.
struct Framed {
    QWidget* widget;
    const NSView* view;
    QRect geometry;
};

/// How far down each column is moved for all to stand one below the other, by its left edge; empty when they fit beside
/// each other.
std::map<int, int> offsetsOfColumns(const std::vector<Framed>& views, int width) {
    std::map<int, int> bottoms;
    int right = 0;
    for (const Framed& each : views) {
        int& bottom = bottoms[each.geometry.x()];
        bottom = std::max(bottom, each.geometry.bottom() + 1);
        right = std::max(right, each.geometry.right() + 1);
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

QRect movedWithItsColumn(QRect geometry, const std::map<int, int>& offsets) {
    const auto column = offsets.find(geometry.x());
    if (column == offsets.end()) return geometry;
    geometry.moveTo(offsets.begin()->first, geometry.y() + column->second);
    return geometry;
}

/// A column of its own that is still too wide gets what there is, down to what its widget can do with.
QRect narrowedTo(int room, const QWidget& widget, QRect geometry) {
    geometry.setWidth(std::min(geometry.width(), std::max(room - geometry.x(), widget.minimumWidth())));
    return geometry;
}

/// Of `views`, whose last one is in front, shows at each place the first one from there that is not hidden itself.
void showWhatIsInFront(const std::vector<Framed>& views) {
    std::set<std::pair<int, int>> taken;
    std::for_each(views.rbegin(), views.rend(), [&](const Framed& each) {
        const bool isSeen = !each.view->isHidden() && taken.emplace(each.geometry.x(), each.geometry.y()).second;
        each.widget->setVisible(isSeen);
    });
}

} // namespace

ShownSubviews::ShownSubviews(QWidget& container, NSView& view, WidgetOfView widgetOfView)
    : container_(&container),
      view_(view),
      widgetOfView_(std::move(widgetOfView)),
      connections_(std::make_unique<QObject>()) {
    view_.setFrame({0.0, 0.0, static_cast<double>(container.width()), static_cast<double>(container.height())});
    changes_ = view_.observeChanges([this] { show(); });
    show();
    if (const QScrollArea* area = scrollAreaOf(container)) {
        viewportWatch_ = std::make_unique<ResizeWatch>(*area->viewport(), [this] { arrange(); });
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
    arrangeSoon();
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
    }
}

void ShownSubviews::putIn(NSView& view) {
    QWidget* const widget = widgetOfView_(view);
    if (!widget) {
        shown_.push_back({&view, nullptr, nullptr, {}});
        return;
    }
    widget->setParent(container_);
    QWidget* const lastBefore = lastTabStop();
    QWidget* const last =
        lastBefore ? putBehindInTabOrder(*lastBefore, *widget) : putInsideInTabOrder(*container_, *widget);
    shown_.push_back({&view, widget, last, view.observeChanges([this] { arrangeSoon(); })});
}

QWidget* ShownSubviews::lastTabStop() const {
    const auto last =
        std::find_if(shown_.rbegin(), shown_.rend(), [](const Subview& each) { return !each.lastTabStop.isNull(); });
    return last == shown_.rend() ? nullptr : last->lastTabStop.data();
}

void ShownSubviews::arrangeSoon() {
    if (std::exchange(isArrangementDue_, true)) return;
    QMetaObject::invokeMethod(
        connections_.get(), [this] { arrangeIfDue(); }, Qt::QueuedConnection);
}

void ShownSubviews::arrangeIfDue() {
    if (isArrangementDue_) arrange();
}

void ShownSubviews::arrange() {
    isArrangementDue_ = false;
    if (!container_) return;
    const platform::NSRect own = view_.frame();
    std::vector<Framed> views;
    for (const Subview& each : shown_) {
        if (each.widget) views.push_back({each.widget, each.view, geometryFromFrame(each.view->frame(), own.height)});
    }

    QRect held = geometryFromFrame({0.0, 0.0, own.width, own.height}, own.height);
    if (QScrollArea* const area = scrollAreaOf(*container_)) {
        auto* const rows = qobject_cast<RowScroller*>(area);
        if (rows) rows->setRowHeight(views.empty() ? 0 : views.front().geometry.height());
        const int room = area->viewport()->width();
        const auto offsets = offsetsOfColumns(views, room);
        if (!offsets.empty()) held.setWidth(std::min(held.width(), room));
        for (Framed& each : views) {
            each.geometry = narrowedTo(room, *each.widget, movedWithItsColumn(each.geometry, offsets));
        }
    }
    for (const Framed& each : views) held |= each.geometry;
    const QRect whole(QPoint(0, 0), held.bottomRight());
    for (const Framed& each : views) {
        each.widget->setGeometry(QStyle::visualRect(container_->layoutDirection(), whole, each.geometry));
    }
    showWhatIsInFront(views);
    // This comes last, since a scroll bar that comes or goes with it makes another arrangement.
    container_->resize(whole.size());
}

void ShownSubviews::scrollTo(QWidget& focused) {
    // What was pressed is on the screen, and must not move away before it is let go.
    QScrollArea* const area = scrollAreaOf(*container_);
    if (!area || QGuiApplication::mouseButtons() != Qt::NoButton) return;
    arrangeIfDue();
    QWidget* subview = &focused;
    while (subview->parentWidget() != container_) subview = subview->parentWidget();
    area->ensureWidgetVisible(subview, 0, 0);
}

} // namespace kelvo
