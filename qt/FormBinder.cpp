#include "qt/FormBinder.h"

#include "platform/NibMatching.h"
#include "qt/CanvasView.h"
#include "qt/Frames.h"
#include "qt/NamingWidgets.h"
#include "qt/Pairings.h"
#include "qt/PictogramView.h"
#include "qt/ResizeWatch.h"
#include "qt/TabOrder.h"

#include <QAbstractButton>
#include <QBoxLayout>
#include <QLineEdit>
#include <QLocale>
#include <QPointer>
#include <QTimer>
#include <QVariant>

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <utility>

namespace kelvo {

using platform::NSButton;
using platform::NSControl;
using platform::NSNibAction;
using platform::NSOutlet;
using platform::NSPopUpButton;
using platform::NSSlider;
using platform::NSTextField;
using platform::NSView;
using platform::NSViewController;

/// A widget with what it stands for: an outlet, an action, or both.
struct FormBinder::Match {
    QWidget& widget;
    const NSOutlet* outlet;
    const NSNibAction* action;
};

namespace {

/// How long a sign stands that something was done: for reading it in peace.
constexpr std::chrono::seconds kSignIsShownFor{5};

bool fitsView(const QWidget& widget, const NSView* view) { return view && pairingFor(widget).isModel(*view); }

/// An embedded form comes to stand in the layout of its page.
bool fitsController(const QWidget& widget, const NSViewController* controller) {
    return controller && isPlainView(widget) && qobject_cast<const QBoxLayout*>(widget.layout());
}

/// All the width there is goes to the form, as far as its designer lets it.
void addInTheMiddle(QBoxLayout& rows, QWidget& form) {
    constexpr int kNearlyAll = 1000;
    auto row = std::make_unique<QHBoxLayout>();
    row->addStretch(1);
    row->addWidget(&form, kNearlyAll);
    row->addStretch(1);
    rows.addLayout(row.release());
}

bool fitsOutlet(const QWidget& widget, const NSOutlet& outlet) {
    if (const auto* controller = std::get_if<NSViewController*>(&outlet.target)) {
        return fitsController(widget, *controller);
    }
    if (const auto* view = std::get_if<NSView*>(&outlet.target)) return fitsView(widget, *view);
    return false;
}

void keepPlaceWhenHidden(QWidget& widget) {
    // A frame of the platform stays where it is when its neighbour is hidden.
    QSizePolicy policy = widget.sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    widget.setSizePolicy(policy);
}

/// What is asked for in place of the settings is for the keyboard at once.
void giveFocusInside(const QWidget& widget) {
    const QVariant name = widget.property("firstFocus");
    auto* const first = name.isValid() ? widget.findChild<QWidget*>(name.toString()) : nullptr;
    if (first) first->setFocus(Qt::OtherFocusReason);
}

void showHidden(QWidget& widget, const NSView& view) {
    // What was never hidden comes with what it stands in. Asked for ahead, the toolkit would lay the whole form out
    // anew for each widget, and show one that stands nowhere yet as a window of its own.
    if (!view.isHidden() && !widget.testAttribute(Qt::WA_WState_ExplicitShowHide)) return;
    const bool comes = widget.isHidden() && !view.isHidden();
    widget.setHidden(view.isHidden());
    if (comes) giveFocusInside(widget);
}

void showEnabled(QWidget& widget, const NSControl& control) { widget.setEnabled(control.isEnabled()); }

/// Where the designer wants widgets in line, none is narrower than it was designed.
void showFrame(QWidget& widget, const NSView& view, int leastWidth) {
    const QWidget& parent = *widget.parentWidget();
    QRect geometry = geometryFromFrame(view.frame(), parent.height());
    geometry.setWidth(std::max(geometry.width(), leastWidth));
    // The program does not know that a row had to be narrower than it was made.
    geometry.setRight(std::min(geometry.right(), std::max(parent.rect().right(), geometry.left())));
    widget.setGeometry(mirroredIn(parent, geometry));
}

void showPictured(PictogramView& view, const NSPopUpButton& popUp) {
    view.setPicturedText(QString::fromStdString(popUp.titleOfSelectedItem().value_or("")));
}

/// A rectangle that others are put into at their frames, instead of being laid out by the form.
bool holdsSubviews(const QWidget& widget, const NSView& model) {
    return isPlainView(widget) && pairingFor(widget).isModel(model) && !widget.layout();
}

/// The texts have numbers in European digits, in every language, and so has what the user types.
QLocale localeOfTexts() {
    const QLocale users;
    return QString(users.zeroDigit()) == QLatin1String("0") ? users : QLocale::c();
}

/// The text for `widget` to say that what it tells of is at `value`: offset + factor × value in so many decimals.
QString readOutOf(const QWidget& widget, double value) {
    const QVariant factor = widget.property("factor");
    const double shown = widget.property("offset").toDouble() + (factor.isValid() ? factor.toDouble() : 1.0) * value;
    return localeOfTexts().toString(shown, 'f', widget.property("decimals").toInt());
}

QString inserted(const QString& pattern, const QString& text) {
    return pattern.isEmpty() ? text : QString(pattern).replace(QStringLiteral("%1"), text);
}

/// Assistive technology speaks a description whenever it is told of it, changed or not.
void describe(QWidget& widget, const QString& text) {
    if (widget.accessibleDescription() != text) widget.setAccessibleDescription(text);
}

/// The words for what a view shows: those of the form for just this value, or the value in the form's pattern.
QString wordsFor(const QWidget& canvas, const QString& pattern, double value) {
    const QStringList texts = canvas.property("valueTexts").toStringList();
    return texts.isEmpty() ? inserted(pattern, readOutOf(canvas, value)) : texts.value(static_cast<int>(value));
}

} // namespace

FormBinder::FormBinder(std::string formName, QWidget& form, platform::NSNibOwner& owner, WidgetOfView widgetOfView,
                       std::shared_ptr<Pictograms> pictograms)
    : formName_(std::move(formName)),
      form_(form),
      owner_(owner),
      widgetOfView_(std::move(widgetOfView)),
      pictograms_(std::move(pictograms)) {}

FormBinding FormBinder::bind(NSView& view) const {
    const std::vector<NSOutlet> outlets = owner_.outlets();
    const std::vector<NSNibAction> actions = owner_.actions();

    FormBinding binding;
    givePictograms();
    const std::vector<Match> matches = findMatches(outlets, actions);
    for (const Match& match : matches) tie(match, binding);
    letReturnPress(binding);
    confirmPresses(binding);
    if (!form_.layout()) holdInPlace(matches, binding);
    view.setFrame(frameFromGeometry(form_.rect(), form_.height()));
    binding.mirror<QWidget, NSView>(form_, view, showHidden);
    return binding;
}

std::vector<FormBinder::Match> FormBinder::findMatches(const std::vector<NSOutlet>& outlets,
                                                       const std::vector<NSNibAction>& actions) const {
    const QList<QWidget*> widgets = form_.findChildren<QWidget*>();
    platform::NSNibPieces form{
        .kind = "widget",
        .pieces = {},
        .canShow = [&](std::size_t index,
                       const NSOutlet& outlet) { return fitsOutlet(*widgets[static_cast<int>(index)], outlet); },
        .canFire =
            [&](std::size_t index) { return pairingFor(*widgets[static_cast<int>(index)]).makeModel != nullptr; }};
    for (const QWidget* widget : widgets) {
        form.pieces.push_back(
            {widget->objectName().toStdString(), widget->property("action").toString().toStdString()});
    }

    std::vector<Match> matches;
    for (const auto& [index, outlet, action] : platform::matchNib(formName_, form, outlets, actions)) {
        matches.push_back({*widgets[static_cast<int>(index)], outlet, action});
    }
    return matches;
}

void FormBinder::tie(const Match& match, FormBinding& binding) const {
    QWidget& widget = match.widget;
    if (match.outlet && std::holds_alternative<NSViewController*>(match.outlet->target)) {
        embed(*std::get<NSViewController*>(match.outlet->target), widget);
        return;
    }
    const Pairing& pairing = pairingFor(widget);
    NSView& model = match.outlet ? *std::get<NSView*>(match.outlet->target) : binding.keep(pairing.makeModel());
    if (match.action) dynamic_cast<NSControl&>(model).setAction(match.action->perform);
    mirrorView(widget, model, binding);
    if (holdsSubviews(widget, model)) {
        binding.keep(std::make_unique<ShownSubviews>(widget, model, widgetOfView_));
    } else {
        mirrorFrame(widget, model, binding);
        pairing.pair(widget, model, binding);
    }
    const auto* label = qobject_cast<const QLabel*>(&widget);
    if (label) nameAfter(*label, dynamic_cast<NSTextField&>(model), binding);
    if (auto* canvas = qobject_cast<CanvasView*>(&widget)) tellValue(*canvas, model, binding);
    if (auto* slider = dynamic_cast<NSSlider*>(&model)) readOut(widget, *slider, binding);
    if (auto* popUp = dynamic_cast<NSPopUpButton*>(&model)) picture(widget, *popUp, binding);
    if (auto* button = dynamic_cast<NSButton*>(&model)) showWhetherOn(widget, *button, binding);
}

void FormBinder::embed(NSViewController& controller, QWidget& page) const {
    // A controller without a form leaves its page empty.
    QWidget* const content = widgetOfView_(controller.view());
    if (!content) return;
    addInTheMiddle(*qobject_cast<QBoxLayout*>(page.layout()), *content);
    putInsideInTabOrder(page, *content);
}

void FormBinder::mirrorView(QWidget& widget, NSView& model, FormBinding& binding) const {
    keepPlaceWhenHidden(widget);
    binding.mirror<QWidget, NSView>(widget, model, showHidden);
    // A label that names a control has nothing to say without it, unless it is one of the owner's own.
    const std::vector<NSOutlet> outlets = owner_.outlets();
    for (QLabel* label : form_.findChildren<QLabel*>()) {
        if (label->buddy() != &widget || platform::outletNamed(label->objectName().toStdString(), outlets)) continue;
        keepPlaceWhenHidden(*label);
        binding.mirror<QWidget, NSView>(*label, model, showHidden);
    }
    auto* const control = dynamic_cast<NSControl*>(&model);
    if (!control) return;
    binding.mirror<QWidget, NSControl>(widget, *control, showEnabled);
    for (QLabel* label : widgetsNaming<QLabel>(form_, "enabledWith", widget)) {
        binding.mirror<QWidget, NSControl>(*label, *control, showEnabled);
    }
}

void FormBinder::mirrorFrame(QWidget& widget, NSView& model, FormBinding& binding) const {
    QWidget& parent = *widget.parentWidget();
    if (parent.layout()) return;
    model.setFrame(frameFromGeometry(widget.geometry(), parent.height()));
    const int leastWidth = widget.property("keepsWidth").toBool() ? widget.width() : 0;
    const auto show = binding.mirror<QWidget, NSView>(
        widget, model, [leastWidth](QWidget& shown, const NSView& view) { showFrame(shown, view, leastWidth); });
    binding.keep(std::make_unique<ResizeWatch>(parent, show));
}

void FormBinder::holdInPlace(const std::vector<Match>& matches, FormBinding& binding) const {
    for (QWidget* widget : form_.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        const bool hasFrame =
            std::any_of(matches.begin(), matches.end(), [&](const Match& each) { return &each.widget == widget; });
        if (hasFrame) continue;
        const auto place = [held = QPointer<QWidget>(widget), geometry = widget->geometry()] {
            if (held) held->setGeometry(mirroredIn(*held->parentWidget(), geometry));
        };
        place();
        binding.keep(std::make_unique<ResizeWatch>(form_, place));
    }
}

void FormBinder::nameAfter(const QLabel& label, NSTextField& model, FormBinding& binding) const {
    for (QWidget* widget : form_.findChildren<QWidget*>()) {
        if (widget->property("namedBy").toString() != label.objectName()) continue;
        const auto name = [pattern = widget->accessibleName()](QWidget& named, const NSTextField& text) {
            named.setAccessibleName(inserted(pattern, QString::fromStdString(text.stringValue())));
        };
        binding.mirror<QWidget, NSTextField>(*widget, model, name);
    }
}

void FormBinder::givePictograms() const {
    if (!pictograms_) return;
    for (PictogramView* view : form_.findChildren<PictogramView*>()) view->setPictograms(pictograms_);
    for (QAbstractButton* button : form_.findChildren<QAbstractButton*>()) {
        const QString name = button->property("pictogram").toString();
        if (!name.isEmpty()) button->setIcon(pictogramIcon(pictograms_, name, button->property("angle").toDouble()));
    }
}

void FormBinder::picture(const QWidget& popUp, NSPopUpButton& model, FormBinding& binding) const {
    for (PictogramView* view : widgetsNaming<PictogramView>(form_, "pictures", popUp)) {
        binding.mirror<PictogramView, NSPopUpButton>(*view, model, showPictured);
        view->moveAlongWith(form_);
    }
}

void FormBinder::showWhetherOn(const QWidget& button, NSButton& model, FormBinding& binding) const {
    for (PictogramView* view : widgetsNaming<PictogramView>(form_, "isOnWith", button)) {
        binding.mirror<PictogramView, NSButton>(
            *view, model, [](PictogramView& shown, const NSButton& read) { shown.setEnabled(read.state() != 0); });
    }
}

void FormBinder::tellValue(CanvasView& canvas, NSView& model, FormBinding& binding) const {
    const auto tell = [pattern = canvas.accessibleDescription()](CanvasView& told, const NSView& view) {
        const std::optional<double> value = view.accessibilityValue();
        describe(told, value ? wordsFor(told, pattern, *value) : QString());
    };
    binding.mirror<CanvasView, NSView>(canvas, model, tell);
    const auto show = [told = QPointer<CanvasView>(&canvas)](QLabel& label, const NSView&) {
        if (told) label.setText(told->accessibleDescription());
    };
    for (QLabel* label : widgetsNaming<QLabel>(form_, "tells", canvas))
        binding.mirror<QLabel, NSView>(*label, model, show);
}

void FormBinder::readOut(QWidget& slider, NSSlider& model, FormBinding& binding) const {
    for (QLabel* label : widgetsNaming<QLabel>(form_, "reads", slider)) {
        const auto show = [pattern = label->text(), told = QPointer<QWidget>(&slider)](QLabel& shown,
                                                                                       const NSSlider& read) {
            shown.setText(inserted(pattern, readOutOf(shown, read.doubleValue())));
            if (told) describe(*told, shown.text());
        };
        binding.mirror<QLabel, NSSlider>(*label, model, show);
    }
}

void FormBinder::letReturnPress(FormBinding& binding) const {
    for (QLineEdit* field : form_.findChildren<QLineEdit*>()) {
        const QVariant name = field->property("returnPresses");
        // Any button would do for no name.
        auto* const button = name.isValid() ? form_.findChild<QAbstractButton*>(name.toString()) : nullptr;
        if (!button) continue;
        // What the key does to the field itself comes first, and may be the end of the form.
        QObject::connect(field, &QLineEdit::returnPressed, binding.connections(),
                         [pressed = QPointer<QAbstractButton>(button)] {
                             if (pressed) pressed->click();
                         });
    }
}

void FormBinder::confirmPresses(FormBinding& binding) const {
    for (QAbstractButton* button : form_.findChildren<QAbstractButton*>()) {
        for (QLabel* sign : widgetsNaming<QLabel>(form_, "confirms", *button)) {
            keepPlaceWhenHidden(*sign);
            sign->hide();
            QTimer& end = binding.keep(std::make_unique<QTimer>());
            end.setSingleShot(true);
            end.setInterval(kSignIsShownFor);
            QObject::connect(&end, &QTimer::timeout, sign, &QWidget::hide);
            QObject::connect(button, &QAbstractButton::clicked, sign, &QWidget::show);
            QObject::connect(button, &QAbstractButton::clicked, &end, qOverload<>(&QTimer::start));
        }
    }
}

} // namespace kelvo
