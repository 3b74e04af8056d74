#pragma once

#include <QCheckBox>

namespace kelvo {

/// A check box all of which takes taps, not only the box itself and its text.
class TouchCheckBox : public QCheckBox {
public:
    using QCheckBox::QCheckBox;

protected:
    [[nodiscard]] bool hitButton(const QPoint& position) const override { return rect().contains(position); }
};

} // namespace kelvo
