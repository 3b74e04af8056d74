#include "qt/TouchSize.h"

#include <QStyledItemDelegate>

#include <memory>

namespace kelvo {

namespace {

/// Beside a choice's text, for what styles put there.
constexpr int kChoiceMargin = 40;

/// The delegate that styles bring along for menus gives all choices the height it likes.
class TouchDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const QSize text = QStyledItemDelegate::sizeHint(option, index);
        return {text.width() + kChoiceMargin, qMax(text.height(), kTouchHeight)};
    }
};

} // namespace

void offerChoicesToFingers(QComboBox& comboBox) {
    comboBox.setItemDelegate(std::make_unique<TouchDelegate>(&comboBox).release());
}

} // namespace kelvo
