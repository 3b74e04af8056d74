#pragma once

#include "platform/Controls.h"

#include <QObject>
#include <QPoint>
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
/// meant to stand in a scroll area. The Tab key goes through the views in their order.
///
/// Of views at the same place only the one in front can be seen, so only that one can be reached.
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
        /// Where it was put, read from the left.
        QPoint position;
        platform::Subscription changes;
    };

    void show();
    void takeOut(std::size_t first, std::size_t last);
    void putIn(platform::NSView& view);
    [[nodiscard]] QWidget* lastTabStop() const;
    void place(Subview& subview) const;
    void placeAll();
    void showWhatIsInFrontAt(QPoint position) const;
    void growToHoldAll();
    void scrollTo(QWidget& focused) const;

    QPointer<QWidget> container_;
    platform::NSView& view_;
    WidgetOfView widgetOfView_;
    double height_;
    std::vector<Subview> shown_;
    platform::Subscription changes_;
    std::unique_ptr<QObject> connections_;
};

} // namespace kelvo
