#include "qt/Columns.h"

#include <QBoxLayout>
#include <QEvent>
#include <QScrollArea>
#include <QStringList>
#include <QVariant>

#include <memory>

namespace kelvo {

namespace {

/// Sees to the columns of one layout.
class Columns : public QObject {
public:
    Columns(QScrollArea& area, QBoxLayout& columns) : QObject(&area), area_(area), columns_(columns) {
        area.viewport()->installEventFilter(this);
        area.widget()->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        // The latter comes when a column's own needs have changed, by another font for one.
        if (event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest) arrange();
        return QObject::eventFilter(watched, event);
    }

private:
    void arrange() {
        const bool fits = widthSideBySide() + widthAround() <= area_.viewport()->width();
        columns_.setDirection(fits ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    }

    [[nodiscard]] int widthSideBySide() const {
        int width = -columns_.spacing();
        for (int i = 0; i < columns_.count(); ++i) {
            width += columns_.itemAt(i)->minimumSize().width() + columns_.spacing();
        }
        return width;
    }

    /// What the margins of the widgets around the columns take, those of the area's content included.
    [[nodiscard]] int widthAround() const {
        int width = 0;
        for (const QWidget* around = columns_.parentWidget();; around = around->parentWidget()) {
            const QMargins frame = around->contentsMargins() + around->layout()->contentsMargins();
            width += frame.left() + frame.right();
            if (around == area_.widget()) return width;
        }
    }

    QScrollArea& area_;
    QBoxLayout& columns_;
};

} // namespace

void stackColumnsWhereNarrow(QWidget& form) {
    for (QScrollArea* area : form.findChildren<QScrollArea*>()) {
        for (const QString& name : area->property("columns").toStringList()) {
            auto* columns = area->findChild<QBoxLayout*>(name);
            // The area owns it.
            if (columns) static_cast<void>(std::make_unique<Columns>(*area, *columns).release());
        }
    }
}

} // namespace kelvo
