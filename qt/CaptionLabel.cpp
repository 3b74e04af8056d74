#include "qt/CaptionLabel.h"

#include <QAbstractButton>
#include <QMouseEvent>

namespace kelvo {

void CaptionLabel::mousePressEvent(QMouseEvent* event) {
    // Whoever takes the press is told of the release.
    event->setAccepted(event->button() == Qt::LeftButton);
}

void CaptionLabel::mouseReleaseEvent(QMouseEvent* event) {
    auto* button = qobject_cast<QAbstractButton*>(buddy());
    if (!button || event->button() != Qt::LeftButton || !rect().contains(event->pos())) return;
    if (button->isEnabled()) button->setFocus(Qt::MouseFocusReason);
    button->click();
}

} // namespace kelvo
