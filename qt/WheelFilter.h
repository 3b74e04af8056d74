#pragma once

#include <QObject>

namespace kelvo {

/// Keeps the wheel from changing a value that the user only scrolls past: without the focus, the wheel is for whatever
/// the widget stands in.
class WheelFilter : public QObject {
public:
    /// `widget` no longer takes the focus by the wheel either.
    void guard(QWidget& widget);

    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace kelvo
