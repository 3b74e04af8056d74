#include "qt/PictogramView.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QApplication>
#include <QPainter>

#include <utility>

namespace kelvo {

namespace {

/// Of its room, for a picture that is not being used.
constexpr double kUsualSize = 0.75;

constexpr int kGrowthMilliseconds = 150;
constexpr int kMotionMilliseconds = 1600;
/// Whatever moves for longer than five seconds draws the eye away from what is being done.
constexpr int kMotions = 3;

/// What assistive technology takes for a picture that is not there.
class UnheardPicture final : public QAccessibleWidget {
public:
    explicit UnheardPicture(QWidget* widget) : QAccessibleWidget(widget, QAccessible::Graphic) {}

    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.invisible = true;
        return state;
    }
};

QAccessibleInterface* makeUnheard(const QString&, QObject* object) {
    auto* const view = qobject_cast<PictogramView*>(object);
    return view ? std::make_unique<UnheardPicture>(view).release() : nullptr;
}

void passOverOnce() { [[maybe_unused]] static const bool isDone = (QAccessible::installFactory(makeUnheard), true); }

} // namespace

PictogramView::PictogramView(QWidget* parent) : QWidget(parent) {
    passOverOnce();
    for (QVariantAnimation* animation : {&growth_, &motion_}) {
        animation->setStartValue(0.0);
        animation->setEndValue(1.0);
        connect(animation, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
    }
    growth_.setObjectName(QStringLiteral("growth"));
    motion_.setObjectName(QStringLiteral("motion"));
    motion_.setDuration(kMotionMilliseconds);
    motion_.setLoopCount(kMotions);
}

void PictogramView::setPictograms(std::shared_ptr<Pictograms> pictograms) {
    pictograms_ = std::move(pictograms);
    if (!pictograms_) return;
    connect(&pictograms_->desktopMotion(), &DesktopMotion::changed, this, [this] {
        if (!pictograms_->mayMoveOn(*this)) motion_.stop();
        update();
    });
}

QString PictogramView::pictogram() const {
    if (!name_.isEmpty() || !pictograms_) return name_;
    return pictograms_->nameOfText(picturedText_);
}

void PictogramView::setPictogram(const QString& name) {
    name_ = name;
    update();
}

void PictogramView::setPicturedText(const QString& text) {
    if (text == picturedText_) return;
    picturedText_ = text;
    if (isAwake()) move();
    update();
}

void PictogramView::moveAlongWith(QWidget& place) {
    usedPlace_ = &place;
    place.installEventFilter(this);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* focused) {
        setAwake(isPointedAt_, focused && (focused == usedPlace_ || usedPlace_->isAncestorOf(focused)));
    });
}

bool PictogramView::eventFilter(QObject* watched, QEvent* event) {
    if (watched == usedPlace_) {
        if (event->type() == QEvent::Enter) setAwake(true, hasFocusInside_);
        if (event->type() == QEvent::Leave) setAwake(false, hasFocusInside_);
    }
    return QWidget::eventFilter(watched, event);
}

void PictogramView::hideEvent(QHideEvent* event) {
    setAwake(false, false);
    QWidget::hideEvent(event);
}

void PictogramView::changeEvent(QEvent* event) {
    // What is off invites nobody to do it.
    if (event->type() == QEvent::EnabledChange && !isEnabled()) motion_.stop();
    QWidget::changeEvent(event);
}

void PictogramView::setAwake(bool isPointedAt, bool hasFocusInside) {
    const bool wasAwake = isAwake();
    isPointedAt_ = isPointedAt;
    hasFocusInside_ = hasFocusInside;
    if (isAwake() == wasAwake || !pictograms_) return;
    if (isAwake()) {
        grow(QAbstractAnimation::Forward);
        move();
    } else {
        grow(QAbstractAnimation::Backward);
        motion_.stop();
    }
}

void PictogramView::grow(QAbstractAnimation::Direction direction) {
    growth_.setDuration(pictograms_->mayMoveOn(*this) ? kGrowthMilliseconds : 0);
    growth_.setDirection(direction);
    growth_.start();
}

void PictogramView::move() {
    motion_.stop();
    if (isEnabled() && pictograms_ && pictograms_->mayMoveOn(*this)) motion_.start();
}

QRectF PictogramView::place() const {
    const double room = qMin(width(), height());
    const double grown = growth_.currentValue().toDouble();
    const double side = usedPlace_ ? room * (kUsualSize + (1.0 - kUsualSize) * grown) : room;
    QRectF place(0.0, 0.0, side, side);
    place.moveCenter(QRectF(rect()).center());
    return place;
}

void PictogramView::paintEvent(QPaintEvent*) {
    const QString name = pictogram();
    if (name.isEmpty() || !pictograms_) return;
    const PictogramColours colours = pictogramColours(palette(), isEnabled());
    QPainter painter(this);
    const bool isStill =
        growth_.state() == QAbstractAnimation::Stopped && motion_.state() == QAbstractAnimation::Stopped;
    if (!isStill) {
        const bool isMoving = motion_.state() == QAbstractAnimation::Running;
        pictograms_->paint(painter, place(), name, colours, isMoving ? motion_.currentValue().toDouble() : 0.0);
        return;
    }
    const double ratio = devicePixelRatioF();
    QPixmap drawn = pictograms_->pixmap(name, qRound(place().width() * ratio), colours);
    drawn.setDevicePixelRatio(ratio);
    painter.drawPixmap(place().topLeft(), drawn);
}

} // namespace kelvo
