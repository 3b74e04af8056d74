#pragma once

#include <QRadioButton>

namespace kelvo {

/// A choice of a rotation, with a small picture of a display turned clockwise by the form's dynamic property "angle",
/// in degrees. The whole button takes taps, not only its text.
class RotationButton : public QRadioButton {
public:
    using QRadioButton::QRadioButton;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    [[nodiscard]] bool hitButton(const QPoint& position) const override { return rect().contains(position); }
    void paintEvent(QPaintEvent* event) override;
};

} // namespace kelvo
