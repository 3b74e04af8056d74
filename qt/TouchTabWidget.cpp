#include "qt/TouchTabWidget.h"

#include "qt/TouchSize.h"

#include <QTabBar>
#include <QVariant>

#include <memory>

namespace kelvo {

namespace {

class TouchTabBar : public QTabBar {
protected:
    [[nodiscard]] QSize tabSizeHint(int index) const override {
        return QTabBar::tabSizeHint(index).expandedTo({0, kTouchHeight});
    }
};

} // namespace

TouchTabWidget::TouchTabWidget(QWidget* parent) : QTabWidget(parent) {
    setTabBar(std::make_unique<TouchTabBar>().release());
}

bool TouchTabWidget::hasHeightForWidth() const {
    return !property("pagesScroll").toBool() && QTabWidget::hasHeightForWidth();
}

} // namespace kelvo
