#include "qt/PullDown.h"

#include "qt/TouchSize.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyleOptionComboBox>
#include <QStylePainter>
#include <QWheelEvent>

#include <algorithm>

namespace kelvo {

PullDown::PullDown(QWidget* parent) : QComboBox(parent) { setFocusPolicy(Qt::StrongFocus); }

void PullDown::setTitle(const QString& title) {
    if (title == title_) return;
    title_ = title;
    update();
    QAccessibleEvent event(this, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&event);
}

void PullDown::setLook(bool isBordered, bool hasArrow) {
    isBordered_ = isBordered;
    hasArrow_ = hasArrow;
    setFocusPolicy(looksLikeText() ? Qt::NoFocus : Qt::StrongFocus);
    update();
}

int PullDown::frameWidthFor(const QString& title) const {
    return std::max(textWidthOf(title) + kMargin, widthFor(title));
}

int PullDown::widthFor(const QString& title) const {
    const QRect probe(0, 0, 1000, height());
    return probe.width() - textRectIn(probe).width() + textWidthOf(title);
}

// One pixel more, since advances are rounded.
int PullDown::textWidthOf(const QString& title) const { return fontMetrics().horizontalAdvance(title) + 1; }

void PullDown::showPopup() {
    if (!opensMenu_()) return;
    prepareMenu();
    // The button is as wide as its title, the menu as its widest choice.
    view()->setMinimumWidth(view()->sizeHintForColumn(0));
    QComboBox::showPopup();
}

/// Only now, since asking for the menu's view makes a window for it, and most menus are never opened.
void PullDown::prepareMenu() {
    if (isMenuPrepared_) return;
    isMenuPrepared_ = true;
    offerChoicesToFingers(*this);
}

void PullDown::paintEvent(QPaintEvent*) {
    if (!isBordered_) {
        drawBareTitle();
        return;
    }
    QStyleOptionComboBox option;
    initStyleOption(&option);
    option.currentText = title_;
    option.currentIcon = {};
    if (!hasArrow_) option.subControls &= ~QStyle::SC_ComboBoxArrow;
    QStylePainter painter(this);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

void PullDown::mousePressEvent(QMouseEvent* event) {
    if (opensMenu_()) {
        QComboBox::mousePressEvent(event);
    } else {
        event->ignore();
    }
}

void PullDown::keyPressEvent(QKeyEvent* event) {
    if (opensMenu_()) {
        QComboBox::keyPressEvent(event);
    } else {
        event->ignore();
    }
}

void PullDown::wheelEvent(QWheelEvent* event) {
    if (opensMenu_()) {
        QComboBox::wheelEvent(event);
    } else {
        event->ignore();
    }
}

QRect PullDown::textRectIn(const QRect& rect) const {
    QStyleOptionComboBox option;
    initStyleOption(&option);
    option.rect = rect;
    // Styles leave a pixel on either side of the text.
    return style()
        ->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this)
        .adjusted(1, 0, -1, 0);
}

void PullDown::drawBareTitle() {
    QStylePainter painter(this);
    // It stands in line with the titles of those that have a border, and may go on where their arrow is.
    QRect place = textRectIn(rect());
    if (isRightToLeft()) {
        place.setLeft(rect().left());
    } else {
        place.setRight(rect().right());
    }
    const Qt::Alignment side = QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft);
    // Higher up it is nearer to what it belongs to than to what comes next.
    painter.drawItemText(place, static_cast<int>(Qt::AlignTop | side) | Qt::TextSingleLine, palette(), isEnabled(),
                         title_, QPalette::WindowText);
}

} // namespace kelvo
