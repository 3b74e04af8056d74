#include "qt/NumberEdit.h"

#include <QStyle>
#include <QStyleOptionFrame>
#include <QVariant>

namespace kelvo {

QSize NumberEdit::sizeHint() const {
    ensurePolished();
    const QFontMetrics metrics = fontMetrics();
    // Room for the cursor and for a digit that is one too many.
    const int digits = metrics.horizontalAdvance(property("maximum").toString() + QLatin1String("00"));
    QStyleOptionFrame option;
    initStyleOption(&option);
    const QSize framed = style()->sizeFromContents(QStyle::CT_LineEdit, &option, {digits, metrics.height()}, this);
    return {framed.width(), QLineEdit::sizeHint().height()};
}

} // namespace kelvo
