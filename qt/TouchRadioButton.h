#pragma once

#include <QRadioButton>

namespace kelvo {

/// A radio button all of which takes taps, not only the button itself and its text.
class TouchRadioButton : public QRadioButton {
public:
    using QRadioButton::QRadioButton;

protected:
    [[nodiscard]] bool hitButton(const QPoint& position) const override { return rect().contains(position); }
};

} // namespace kelvo
