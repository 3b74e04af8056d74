#include "qt/FormFit.h"

#include "qt/FormTexts.h"
#include "qt/PullDown.h"
#include "qt/TouchSize.h"

#include <QEvent>
#include <QFont>
#include <QFontInfo>
#include <QLabel>
#include <QVariant>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>

namespace kelvo {

namespace {

QList<QWidget*> framedWidgetsOf(const QWidget& form) {
    return form.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
}

QStringList keysOf(const QWidget& widget) { return widget.property("mayShow").toStringList(); }

QStringList textsOf(const QWidget& widget, platform::NSBundle* bundle) {
    QStringList texts = keysOf(widget);
    for (QString& text : texts) text = textFor(text, bundle);
    return texts;
}

QString widestOf(const QStringList& texts, const QFontMetrics& metrics) {
    QString widest;
    int width = 0;
    for (const QString& text : texts) {
        const int needed = metrics.horizontalAdvance(text);
        if (needed <= width) continue;
        width = needed;
        widest = text;
    }
    return widest;
}

/// The width at which `widget` shows `text` whole.
int widthFor(const QString& text, const QWidget& widget) {
    if (const auto* pullDown = qobject_cast<const PullDown*>(&widget)) return pullDown->frameWidthFor(text);
    return widget.fontMetrics().boundingRect(text).width() + widget.fontMetrics().averageCharWidth();
}

/// Letters that the font itself does not have may come from a higher one.
int heightFor(const QString& text, const QWidget& widget) {
    const QFontMetrics metrics = widget.fontMetrics();
    return widget.sizeHint().height() + std::max(metrics.boundingRect(text).height() - metrics.height(), 0) + 1;
}

/// Of each widget's height in the form, what it needs of it in this font, where that is more.
double heightFactor(const QList<QWidget*>& widgets, platform::NSBundle* bundle, WidestTexts& widestTexts) {
    double factor = static_cast<double>(touchHeightFor(*widgets.front())) / kTouchHeight;
    for (const QWidget* widget : widgets) {
        const int needed = heightFor(widestTexts.of(*widget, bundle), *widget);
        factor = std::max(factor, static_cast<double>(needed) / widget->height());
    }
    return factor;
}

int scaled(int length, double factor) { return static_cast<int>(std::lround(length * factor)); }

QRect scaledInHeight(const QRect& geometry, double factor) {
    return {geometry.x(), scaled(geometry.y(), factor), geometry.width(), scaled(geometry.height(), factor)};
}

void keepFont(QWidget& widget) {
    QFont kept;
    // A font that is read from a text says everything about itself, so that nothing comes from elsewhere.
    kept.fromString(widget.font().toString());
    widget.setFont(kept);
}

/// Sees to the least size of one widget.
class LeastSize : public QObject {
public:
    explicit LeastSize(QWidget& widget) : QObject(&widget), widget_(widget), designed_(widget.minimumSize()) {
        if (designed_.height() >= kTouchHeight) designed_ = designed_.expandedTo({0, touchHeightFor(widget)});
        widget.installEventFilter(this);
        apply();
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) apply();
        return QObject::eventFilter(watched, event);
    }

private:
    void apply() {
        // Where the designer demands no width, the widget's own already counts.
        const int width = designed_.width() > 0 ? widget_.minimumSizeHint().width() : 0;
        widget_.setMinimumSize(designed_.expandedTo({width, widget_.sizeHint().height()}));
    }

    QWidget& widget_;
    QSize designed_;
};

/// The size in pixels of the font that forms are designed for.
constexpr double kDesignedFont = 13.0;

/// Keeps a form no wider than its designer wants lines to be, in letters of every size.
class WidestSize : public QObject {
public:
    explicit WidestSize(QWidget& form) : QObject(&form), form_(form), designed_(form.maximumWidth()) {
        form.installEventFilter(this);
        apply();
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::FontChange) apply();
        return QObject::eventFilter(watched, event);
    }

private:
    void apply() { form_.setMaximumWidth(scaled(designed_, letterFactor(form_))); }

    QWidget& form_;
    int designed_;
};

} // namespace

double letterFactor(const QWidget& form) { return std::max(form.fontInfo().pixelSize() / kDesignedFont, 1.0); }

const QString& WidestTexts::of(const QWidget& widget, platform::NSBundle* bundle) {
    const QStringList texts = textsOf(widget, bundle);
    const auto [entry, isNew] = known_.try_emplace({widget.font().key(), texts});
    if (isNew) entry->second = widestOf(texts, widget.fontMetrics());
    return entry->second;
}

void keepWhole(QWidget& form) {
    // The form owns it.
    if (form.maximumWidth() < QWIDGETSIZE_MAX) static_cast<void>(std::make_unique<WidestSize>(form).release());
    for (QWidget* widget : form.findChildren<QWidget*>()) {
        widget->ensurePolished();
        // The widget owns it.
        if (!widget->minimumSize().isNull()) static_cast<void>(std::make_unique<LeastSize>(*widget).release());
    }
}

void fitFrames(QWidget& form, platform::NSBundle* bundle, WidestTexts& widestTexts) {
    const QList<QWidget*> widgets = framedWidgetsOf(form);
    QList<QWidget*> fitted;
    std::copy_if(widgets.begin(), widgets.end(), std::back_inserter(fitted),
                 [](const QWidget* each) { return !keysOf(*each).isEmpty(); });
    if (form.layout() || fitted.isEmpty()) return;

    keepFont(form);
    int right = 0;
    int margin = form.width();
    for (QWidget* widget : fitted) {
        widget->ensurePolished();
        right = std::max(right, widget->x() + widthFor(widestTexts.of(*widget, bundle), *widget));
        margin = std::min(margin, form.rect().right() - widget->geometry().right());
    }
    right = std::max(right, form.minimumWidth() - margin);
    const double factor = heightFactor(widgets, bundle, widestTexts);

    form.resize(right + margin, scaled(form.height(), factor));
    for (QWidget* widget : widgets) widget->setGeometry(scaledInHeight(widget->geometry(), factor));
    for (QWidget* widget : fitted) widget->resize(right - widget->x(), widget->height());
}

} // namespace kelvo
