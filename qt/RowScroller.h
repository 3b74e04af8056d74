#pragma once

#include <QScrollArea>

namespace kelvo {

/// Scrolls a list of rows that are all of the same height, and shows whole ones: as many as there is room for, and at
/// rest none that is cut off at the top.
class RowScroller : public QScrollArea {
    Q_OBJECT

public:
    explicit RowScroller(QWidget* parent = nullptr);

    /// 0 as long as there are no rows.
    void setRowHeight(int height);
    [[nodiscard]] int rowHeight() const { return rowHeight_; }

protected:
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void leaveOutWhatIsNoRow();
    void scrollToRow(int rowsFurther);

    int rowHeight_ = 0;
};

} // namespace kelvo
