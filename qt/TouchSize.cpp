#include "qt/TouchSize.h"

#include <QAbstractItemView>
#include <QScreen>
#include <QStyledItemDelegate>

#include <algorithm>
#include <cmath>
#include <memory>

namespace kelvo {

namespace {

/// Beside a choice's text, for what styles put there.
constexpr int kChoiceMargin = 40;

constexpr double kMillimetres = 9.0;
constexpr double kMillimetresInAnInch = 25.4;
/// Screens that claim to be finer have the wrong size on record, or none.
constexpr double kFinest = 220.0;

/// The delegate that styles bring along for menus gives all choices the height it likes.
class TouchDelegate : public QStyledItemDelegate {
public:
    explicit TouchDelegate(QComboBox& comboBox) : QStyledItemDelegate(&comboBox), least_(touchHeightFor(comboBox)) {}

    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const QSize text = QStyledItemDelegate::sizeHint(option, index);
        return {text.width() + kChoiceMargin, qMax(text.height(), least_)};
    }

private:
    int least_;
};

} // namespace

int touchHeightAt(double dotsPerInch) {
    if (!(dotsPerInch > 0.0) || dotsPerInch > kFinest) return kTouchHeight;
    return std::max(kTouchHeight, static_cast<int>(std::ceil(kMillimetres * dotsPerInch / kMillimetresInAnInch)));
}

int touchHeightFor(const QWidget& widget) { return touchHeightAt(widget.screen()->physicalDotsPerInchY()); }

void offerChoicesToFingers(QComboBox& comboBox) {
    comboBox.setItemDelegate(std::make_unique<TouchDelegate>(comboBox).release());
    // A long menu follows the finger that pushes it.
    comboBox.view()->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
}

} // namespace kelvo
