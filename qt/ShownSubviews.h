#pragma once

#include "platform/Controls.h"
#include "qt/ResizeWatch.h"

#include <QObject>
#include <QPointer>
#include <QWidget>

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace kelvo {

/// Finds the widget that shows a view; null when the view has none.
using WidgetOfView = std::function<QWidget*(const platform::NSView&)>;

/// Shows the views inside a view: the widget of each stands in the widget of the outer view, where its frame says. The
/// outer frame comes from the form; the widget grows beyond it when views lie below its bottom or right of it, and is
/// meant to stand in a scroll area. Where that is too narrow for columns side by side, they stand one below the other.
/// The Tab key goes through the views in their order.
///
/// Of views at the same place only the one in front can be seen, so only that one can be reached.
///
/// Views come and go one at a time, and change likewise; once the program has done with that, all are put where they
/// belong in one go, before anything is painted.
class ShownSubviews {
public:
    ShownSubviews(QWidget& container, platform::NSView& view, WidgetOfView widgetOfView);
    ShownSubviews(const ShownSubviews&) = delete;
    ShownSubviews& operator=(const ShownSubviews&) = delete;
    ~ShownSubviews();

private:
    struct Subview {
        const platform::NSView* view = nullptr;
        QPointer<QWidget> widget;
        QPointer<QWidget> lastTabStop;
        platform::Subscription changes;
    };

    void show();
    void takeOut(std::size_t first, std::size_t last);
    void putIn(platform::NSView& view);
    [[nodiscard]] QWidget* lastTabStop() const;
    void arrangeSoon();
    void arrangeIfDue();
    void arrange();
    void scrollTo(QWidget& focused);

    QPointer<QWidget> container_;
    platform::NSView& view_;
    WidgetOfView widgetOfView_;
    std::vector<Subview> shown_;
    bool isArrangementDue_ = false;
    platform::Subscription changes_;
    std::unique_ptr<QObject> connections_;
    std::unique_ptr<ResizeWatch> viewportWatch_;
};

} // namespace kelvo
