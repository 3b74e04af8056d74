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

namespace {

/// Of the usual font, for a title that has too little room: it is still read, and what does not fit then ends in "…".
constexpr double kSmallestFont = 0.5;

} // namespace

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

int PullDown::leastWidthFor(const QString& title) const {
    return widthFor(title) - static_cast<int>(textWidthOf(title) * (1.0 - kSmallestFont));
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
    const QRect place = titleRect();
    const QFont font = fontFor(place.width());
    QStyleOptionComboBox option;
    initStyleOption(&option);
    option.fontMetrics = QFontMetrics(font);
    option.currentText = option.fontMetrics.elidedText(title_, Qt::ElideRight, place.width());
    option.currentIcon = {};
    if (!hasArrow_) option.subControls &= ~QStyle::SC_ComboBoxArrow;
    QStylePainter painter(this);
    painter.setFont(font);
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

/// Where its title stands. Without a border it is in line with those that have one, and may go on where their arrow is.
QRect PullDown::titleRect() const {
    QRect place = textRectIn(rect());
    if (isBordered_) return place;
    if (isRightToLeft()) {
        place.setLeft(rect().left());
    } else {
        place.setRight(rect().right());
    }
    return place;
}

/// The usual font, or the largest smaller one in which the title fits into `room`.
QFont PullDown::fontFor(int room) const {
    QFont fitting = font();
    const int needed = textWidthOf(title_);
    if (needed <= room) return fitting;
    const double factor = std::max(static_cast<double>(room) / needed, kSmallestFont);
    fitting.setPixelSize(std::max(static_cast<int>(fontInfo().pixelSize() * factor), 1));
    return fitting;
}

void PullDown::drawBareTitle() {
    const QRect place = titleRect();
    QStylePainter painter(this);
    painter.setFont(fontFor(place.width()));
    const QString shown = painter.fontMetrics().elidedText(title_, Qt::ElideRight, place.width());
    const Qt::Alignment side = QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft);
    // Higher up it is nearer to what it belongs to than to what comes next.
    painter.drawItemText(place, static_cast<int>(Qt::AlignTop | side) | Qt::TextSingleLine, palette(), isEnabled(),
                         shown, QPalette::WindowText);
}

} // namespace kelvo
