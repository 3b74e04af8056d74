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
        return QTabBar::tabSizeHint(index).expandedTo({0, touchHeightFor(*this)});
    }
};

} // namespace

TouchTabWidget::TouchTabWidget(QWidget* parent) : QTabWidget(parent) {
    setTabBar(std::make_unique<TouchTabBar>().release());
    // The bar alone takes the Tab key. As its proxy the tab widget would be a stop of its own, which stays behind when
    // the form is put into its place in the window's order.
    setFocusProxy(nullptr);
    setFocusPolicy(Qt::NoFocus);
    tabBar()->setFocusPolicy(Qt::TabFocus);
}

bool TouchTabWidget::hasHeightForWidth() const {
    return !property("pagesScroll").toBool() && QTabWidget::hasHeightForWidth();
}

} // namespace kelvo
