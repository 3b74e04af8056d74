#include "qt/AlertPage.h"

#include <QPainter>

#include <algorithm>
#include <utility>

namespace kelvo {

namespace {

constexpr int kMargin = 24;
constexpr int kSpacing = 16;
/// Longer lines are hard to read.
constexpr int kWidestText = 560;
/// The first paragraph beside the rest.
constexpr double kTitleSize = 1.3;
constexpr int kHowTextStands = Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap;

QFont titleFontOf(QFont font) {
    font.setBold(true);
    if (font.pointSizeF() > 0) {
        font.setPointSizeF(font.pointSizeF() * kTitleSize);
    } else {
        font.setPixelSize(static_cast<int>(font.pixelSize() * kTitleSize));
    }
    return font;
}

/// The paragraphs: what is wrong, and what else there is to say.
std::pair<QString, QString> paragraphsOf(const QString& text) {
    const QString gap = QStringLiteral("\n\n");
    const auto end = text.indexOf(gap);
    return end < 0 ? std::pair(text, QString()) : std::pair(text.left(end), text.mid(end + gap.size()));
}

int heightOf(const QString& text, const QFont& font, int width) {
    if (text.isEmpty()) return 0;
    return QFontMetrics(font).boundingRect(QRect(0, 0, width, QWIDGETSIZE_MAX), kHowTextStands, text).height();
}

int widestWordOf(const QString& text, const QFont& font) {
    int widest = 0;
    for (const QString& word : text.split(QLatin1Char(' '))) {
        // Where words are not set apart a line may end at any letter.
        const QRect narrowest = QFontMetrics(font).boundingRect(QRect(0, 0, 1, QWIDGETSIZE_MAX), kHowTextStands, word);
        widest = std::max(widest, narrowest.width());
    }
    return widest;
}

} // namespace

struct AlertPage::Places {
    QRect picture;
    QRect title;
    QRect rest;
    int height;
};

AlertPage::AlertPage(QWidget* parent) : AlertLabel(parent) {}

AlertPage::Places AlertPage::placesIn(QSize size) const {
    const auto* const picture = findChild<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    QSize pictured = picture ? picture->minimumSize() : QSize();
    const auto [title, rest] = paragraphsOf(text());
    const int width = std::min(size.width() - 2 * kMargin, kWidestText);
    const int left = (size.width() - width) / 2;

    const int titleHeight = heightOf(title, titleFontOf(font()), width);
    const int restHeight = heightOf(rest, font(), width);
    // The words come first.
    const int spare = size.height() - (titleHeight + restHeight + 2 * kSpacing + 2 * kMargin);
    if (spare < pictured.height()) pictured = QSize(0, 0);

    Places places{};
    places.picture = QRect(QPoint((size.width() - pictured.width()) / 2, 0), pictured);
    places.title = QRect(left, pictured.height() + kSpacing, width, titleHeight);
    places.rest = QRect(left, places.title.bottom() + 1 + kSpacing, width, restHeight);
    places.height = places.rest.bottom() + 1 + 2 * kMargin;
    // A little above the middle, where the eye looks first.
    const int above = std::max((size.height() - places.height) * 2 / 5, 0) + kMargin;
    for (QRect* each : {&places.picture, &places.title, &places.rest}) each->translate(0, above);
    return places;
}

int AlertPage::measuredHeight(int width) const { return placesIn({width, 0}).height; }

QSize AlertPage::sizeHint() const {
    const int width = kWidestText + 2 * kMargin;
    return {width, heightForWidth(width)};
}

QSize AlertPage::minimumSizeHint() const {
    const auto [title, rest] = paragraphsOf(text());
    const int width = std::max(widestWordOf(title, titleFontOf(font())), widestWordOf(rest, font()));
    // How high it is depends on how wide it gets.
    return {width + 2 * kMargin, 0};
}

void AlertPage::paintEvent(QPaintEvent*) {
    const auto [title, rest] = paragraphsOf(text());
    const Places places = placesIn(size());
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    painter.setFont(titleFontOf(font()));
    painter.drawText(places.title, kHowTextStands, title);
    painter.setFont(font());
    painter.drawText(places.rest, kHowTextStands, rest);
    // The text may be another than before.
    placePicture();
}

void AlertPage::resizeEvent(QResizeEvent* event) {
    AlertLabel::resizeEvent(event);
    placePicture();
}

void AlertPage::placePicture() {
    auto* const picture = findChild<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    if (!picture) return;
    const QRect place = placesIn(size()).picture;
    picture->setGeometry(place);
    picture->setVisible(!place.isEmpty() && !text().isEmpty());
}

} // namespace kelvo
