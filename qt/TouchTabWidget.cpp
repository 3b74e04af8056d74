#include "qt/TouchTabWidget.h"

#include <QTabBar>

#include <memory>

namespace kelvo {

namespace {

constexpr int kTabHeight = 40;

class TouchTabBar : public QTabBar {
protected:
    [[nodiscard]] QSize tabSizeHint(int index) const override {
        return QTabBar::tabSizeHint(index).expandedTo({0, kTabHeight});
    }
};

} // namespace

TouchTabWidget::TouchTabWidget(QWidget* parent) : QTabWidget(parent) {
    setTabBar(std::make_unique<TouchTabBar>().release());
}

} // namespace kelvo
