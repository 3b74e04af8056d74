#pragma once

#include <QPainter>
#include <QPoint>
#include <QWidget>

namespace kelvo {

/// A rectangle that someone else draws and that tells of presses: of the left button, of a finger, and of the space
/// bar, which presses its middle.
class CanvasView : public QWidget {
    Q_OBJECT

public:
    explicit CanvasView(QWidget* parent = nullptr);

    /// One click in the middle, for those without a pointer.
    void click();

signals:
    void resized();
    /// To be drawn now; the painter's origin is at the bottom left.
    void drawn(QPainter& painter);
    void pressed(QPoint place);
    void released(QPoint place);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;

private:
    void drawOutline(QPainter& painter) const;
};

} // namespace kelvo
