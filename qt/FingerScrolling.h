#pragma once

#include <QAbstractScrollArea>
#include <QMouseEvent>
#include <QObject>
#include <QPointer>
#include <QScroller>
#include <QWidget>
#include <QWindow>

#include <functional>

namespace kelvo {

/// Lets a finger push and flick what scrolls. The toolkit turns a touch that no widget wants into a press of the left
/// button; where that press is in something that scrolls, it waits here until it is clear what the finger does: a tap,
/// or a move along what cannot be scrolled, goes on to the widget; any other move scrolls and the widget never hears of
/// the finger. A mouse presses as ever.
class FingerScrolling : public QObject {
public:
    /// Only for widgets of which `isOurs` holds; a window may have others.
    explicit FingerScrolling(std::function<bool(const QWidget&)> isOurs);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    enum class Finger { IsUp, Waits, Scrolls, IsTheWidgets, IsCancelled };

    // Each says whether the window is not to hear of it.
    bool pressed(QWindow& window, const QMouseEvent& event);
    bool moved(const QMouseEvent& event);
    bool released(const QMouseEvent& event);

    void letGo(const QMouseEvent& event);
    [[nodiscard]] bool scrolls(QPoint way) const;
    void tell(QScroller::Input input, const QMouseEvent& event) const;
    bool giveToWidget();

    std::function<bool(const QWidget&)> isOurs_;
    Finger finger_ = Finger::IsUp;
    QPointer<QAbstractScrollArea> area_;
    /// Whose press waits, and what it was.
    QPointer<QWidget> widget_;
    QPointer<QWindow> window_;
    QEvent::Type press_ = QEvent::MouseButtonPress;
    QPoint start_;
};

} // namespace kelvo
