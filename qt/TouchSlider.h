#pragma once

#include <QSlider>

namespace kelvo {

/// A slider whose handle comes to where the groove is tapped, and can be dragged on from there. Most styles would move
/// it by a page, which a finger has to repeat.
class TouchSlider : public QSlider {
    Q_OBJECT

public:
    using QSlider::QSlider;

protected:
    void mousePressEvent(QMouseEvent* event) override;

private:
    [[nodiscard]] int valueAt(QPoint place) const;
};

} // namespace kelvo
