#include "qt/Pairings.h"

#include "platform/Guarded.h"
#include "qt/CanvasView.h"
#include "qt/MovedControl.h"
#include "qt/PullDown.h"
#include "qt/QtGraphicsContext.h"
#include "qt/ReturnedValue.h"
#include "qt/TouchSize.h"
#include "qt/UserAct.h"
#include "qt/WheelFilter.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QStackedWidget>
#include <QTabWidget>
#include <QToolButton>
#include <QVariant>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <typeinfo>
#include <vector>

namespace kelvo {

namespace {

using platform::NSButton;
using platform::NSControl;
using platform::NSEvent;
using platform::NSMatrix;
using platform::NSPoint;
using platform::NSPopUpButton;
using platform::NSSlider;
using platform::NSTabView;
using platform::NSTextField;
using platform::NSView;

// Contents that a form brings along (items, tabs, a text) go into a control that has none yet; from then on the widget
// shows the control.

/// A number that the form's designer gave a widget.
std::optional<double> numberProperty(const QWidget& widget, const char* name) {
    bool isNumber = false;
    const double number = widget.property(name).toDouble(&isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

void letWheelPass(QWidget& widget, FormBinding& binding) {
    binding.keep(std::make_unique<WheelFilter>()).guard(widget);
}

std::vector<std::string> itemTexts(const QComboBox& comboBox) {
    std::vector<std::string> texts;
    texts.reserve(static_cast<std::size_t>(comboBox.count()));
    for (int i = 0; i < comboBox.count(); ++i) texts.push_back(comboBox.itemText(i).toStdString());
    return texts;
}

/// The items of a pop-up from the one at `first`, as a combo box shows them. What it shows already stands until the
/// pop-up is emptied, so each item is looked at once, however many changes there are.
class ShownItems {
public:
    explicit ShownItems(std::size_t first) : first_(first) {}

    void show(QComboBox& comboBox, const NSPopUpButton& popUp) {
        const auto& all = popUp.itemTitles();
        const auto shown = [&] { return static_cast<std::size_t>(comboBox.count()) + first_; };
        if (timesEmptied_ != popUp.timesEmptied() || shown() > all.size()) comboBox.clear();
        timesEmptied_ = popUp.timesEmptied();
        QStringList titles;
        for (std::size_t i = shown(); i < all.size(); ++i) titles.append(QString::fromStdString(all[i]));
        if (!titles.isEmpty()) comboBox.addItems(titles);
        comboBox.setCurrentIndex(popUp.indexOfSelectedItem() - static_cast<int>(first_));
    }

private:
    std::size_t first_;
    /// None before the first time, when the form's own items may stand there.
    std::optional<std::size_t> timesEmptied_;
};

void pairPopUp(QComboBox& comboBox, NSPopUpButton& popUp, FormBinding& binding) {
    if (popUp.itemTitles().empty()) {
        popUp.addItemsWithTitles(itemTexts(comboBox));
    }
    offerChoicesToFingers(comboBox);
    letWheelPass(comboBox, binding);
    const auto show = binding.mirror(
        comboBox, popUp, [items = std::make_shared<ShownItems>(0)](QComboBox& shown, const NSPopUpButton& model) {
            items->show(shown, model);
        });
    // Of the signals only this one comes when the selected item is picked again, and never from the program.
    QObject::connect(&comboBox, qOverload<int>(&QComboBox::activated), binding.connections(),
                     [&popUp, show](int index) { userActed([&] { popUp.performSelectItemAtIndex(index); }, show); });
}

/// The first item of a pull-down only carries its title, so the menu begins with the second.
constexpr int kFirstChoice = 1;

void showButton(PullDown& pullDown, const NSPopUpButton& popUp) {
    pullDown.setTitle(QString::fromStdString(popUp.title()));
    pullDown.setLook(popUp.cell().isBordered(), popUp.cell().hasArrow());
}

/// The width of a title, with what the style's border and arrow take beyond the program's own margin.
double measured(const PullDown& pullDown, const std::string& title) {
    return pullDown.frameWidthFor(QString::fromStdString(title)) - PullDown::kMargin;
}

void pairPullDown(PullDown& pullDown, NSPopUpButton& popUp, FormBinding& binding) {
    letWheelPass(pullDown, binding);
    popUp.cell().setMeasure([shown = QPointer<PullDown>(&pullDown)](const std::string& title) {
        return shown ? measured(*shown, title) : 0.0;
    });
    pullDown.setOpensMenu(
        [&popUp, tied = QPointer<QObject>(binding.connections())] { return tied && popUp.opensMenu(); });
    const auto show = binding.mirror(
        pullDown, popUp,
        [items = std::make_shared<ShownItems>(kFirstChoice)](PullDown& shown, const NSPopUpButton& model) {
            items->show(shown, model);
            showButton(shown, model);
        });
    QObject::connect(&pullDown, qOverload<int>(&QComboBox::activated), binding.connections(),
                     [&popUp, show](int choice) {
                         userActed([&] { popUp.performSelectItemAtIndex(choice + kFirstChoice); }, show);
                     });
}

void showCheckBox(QCheckBox& checkBox, const NSButton& button) {
    const bool mixed = button.state() < 0;
    checkBox.setTristate(mixed);
    checkBox.setCheckState(mixed ? Qt::PartiallyChecked : button.state() == 0 ? Qt::Unchecked : Qt::Checked);
}

void pairCheckBox(QCheckBox& checkBox, NSButton& button, FormBinding& binding) {
    const auto show = binding.mirror(checkBox, button, showCheckBox);
    QObject::connect(&checkBox, &QCheckBox::clicked, binding.connections(),
                     [&button, show] { userActed([&] { button.performClick(); }, show); });
}

void showPushButton(QAbstractButton& pushButton, const NSButton& button) {
    pushButton.setChecked(pushButton.isCheckable() && button.state() != 0);
}

void pairPushButton(QAbstractButton& pushButton, NSButton& button, FormBinding& binding) {
    const auto show = binding.mirror(pushButton, button, showPushButton);
    QObject::connect(&pushButton, &QAbstractButton::clicked, binding.connections(),
                     [&button, show] { userActed([&] { button.performClick(); }, show); });
}

void showText(QLabel& label, const NSTextField& textField) {
    label.setText(QString::fromStdString(textField.stringValue()));
}

void pairText(QLabel& label, NSTextField& textField, FormBinding& binding) {
    if (textField.stringValue().empty()) textField.setStringValue(label.text().toStdString());
    binding.mirror(label, textField, showText);
}

void showEditable(QLineEdit& lineEdit, const NSTextField& textField) {
    const QString text = QString::fromStdString(textField.stringValue());
    if (lineEdit.text() != text) lineEdit.setText(text);
}

/// The numbers that the form lets into a field; none when every text may be in it.
std::optional<platform::NSNumberFormatter> formatterOf(const QLineEdit& lineEdit) {
    const auto minimum = numberProperty(lineEdit, "minimum");
    const auto maximum = numberProperty(lineEdit, "maximum");
    if (!minimum || !maximum) return std::nullopt;
    return platform::NSNumberFormatter{*minimum, *maximum};
}

/// Whether editing in `lineEdit` ends when the focus goes to `focused`. From another window the user comes back to the
/// field and has not left it, but what was typed is not to wait for that.
bool endsEditing(const QLineEdit& lineEdit, const QWidget* focused) {
    return lineEdit.isModified() || (focused && focused->window() == lineEdit.window());
}

void endEditing(QLineEdit& lineEdit, NSTextField& textField) {
    lineEdit.setModified(false);
    if (textField.performEndEditing(lineEdit.text().toStdString())) return;
    // The focus may be just leaving.
    QMetaObject::invokeMethod(
        &lineEdit, [&lineEdit] { lineEdit.setFocus(); }, Qt::QueuedConnection);
}

void pairEditable(QLineEdit& lineEdit, NSTextField& textField, FormBinding& binding) {
    textField.setFormatter(formatterOf(lineEdit));
    if (textField.stringValue().empty()) textField.setStringValue(lineEdit.text().toStdString());
    const auto typed = std::make_shared<TypedText>();
    const auto show = binding.mirror(lineEdit, textField, [typed](QLineEdit& shown, const NSTextField& model) {
        showEditable(shown, model);
        if (typed->isReplacedBy(shown.text()) && shown.isVisible()) showThatValueCameBack(shown);
    });
    const auto end = [&lineEdit, &textField, show] { userActed([&] { endEditing(lineEdit, textField); }, show); };
    QObject::connect(&lineEdit, &QLineEdit::returnPressed, binding.connections(), end);
    QObject::connect(qApp, &QApplication::focusChanged, binding.connections(),
                     [&lineEdit, end, context = binding.connections()](QWidget* left, QWidget* focused) {
                         // A field that is being destroyed is none any more.
                         if (qobject_cast<QLineEdit*>(left) != &lineEdit || !endsEditing(lineEdit, focused)) return;
                         if (lineEdit.isVisible()) return end();
                         // It is the program that hides the field, in the middle of something else.
                         QMetaObject::invokeMethod(
                             context,
                             [shown = QPointer<QLineEdit>(&lineEdit), end] {
                                 if (shown) end();
                             },
                             Qt::QueuedConnection);
                     });
    // A button's shortcut fires while the user is still in the field.
    QObject::connect(&lineEdit, &QLineEdit::textEdited, binding.connections(),
                     [&textField, typed](const QString& text) {
                         typed->remember(text);
                         platform::guarded([&] { textField.performEdit(text.toStdString()); });
                     });
}

/// A slider counts whole steps, of which the form says how many make one.
double stepsPerUnit(const QSlider& slider) { return numberProperty(slider, "stepsPerUnit").value_or(1.0); }

void showValue(QSlider& slider, const NSSlider& model) {
    slider.setValue(static_cast<int>(std::lround(model.doubleValue() * stepsPerUnit(slider))));
}

void pairSlider(QSlider& slider, NSSlider& model, FormBinding& binding) {
    letWheelPass(slider, binding);
    const double steps = stepsPerUnit(slider);
    model.setBounds(slider.minimum() / steps, slider.maximum() / steps);
    const auto show = binding.mirror(slider, model, showValue);
    auto position = std::make_shared<int>(slider.value());
    MovedControl& control = binding.keep(std::make_unique<MovedControl>(
        [&model, steps, show, position] { userActed([&] { model.performSetDoubleValue(*position / steps); }, show); }));
    // What the program sets is shown in silence, so a change that is heard of is the user's.
    QObject::connect(&slider, &QSlider::valueChanged, binding.connections(), [&control, position](int value) {
        *position = value;
        control.moved();
    });
}

/// The radio buttons that are the rows of a matrix.
QList<QRadioButton*> rowsOf(const QWidget& matrix) {
    return matrix.findChildren<QRadioButton*>(QString(), Qt::FindDirectChildrenOnly);
}

/// The Tab key comes to the row that is selected, and the keyboard's focus goes along when another is selected. The
/// toolkit would have the row that had the focus last.
void letKeysFollow(const QList<QRadioButton*>& rows, QRadioButton& selected) {
    const bool isInside =
        std::any_of(rows.begin(), rows.end(), [](const QRadioButton* row) { return row->hasFocus(); });
    for (QRadioButton* row : rows) row->setFocusPolicy(row == &selected ? Qt::StrongFocus : Qt::ClickFocus);
    if (isInside) selected.setFocus();
}

void showSelectedRow(QWidget& widget, const NSMatrix& matrix) {
    const int row = matrix.selectedRow();
    const auto rows = rowsOf(widget);
    if (row < 0 || row >= rows.size()) return;
    rows[row]->setChecked(true);
    letKeysFollow(rows, *rows[row]);
}

void pairMatrix(QWidget& widget, NSMatrix& matrix, FormBinding& binding) {
    const auto rows = rowsOf(widget);
    matrix.setNumberOfRows(static_cast<int>(rows.size()));
    const auto show = binding.mirror(widget, matrix, showSelectedRow);
    for (int row = 0; row < rows.size(); ++row) {
        QObject::connect(rows[row], &QRadioButton::clicked, binding.connections(),
                         [&matrix, show, row] { userActed([&] { matrix.performSelectRow(row); }, show); });
    }
}

void draw(NSView& view, QPainter& painter) {
    QtGraphicsContext context(painter);
    const platform::NSGraphicsContext::Current current(context);
    view.drawRect(view.bounds());
}

void fitFrame(NSView& view, const CanvasView& canvas) {
    platform::NSRect frame = view.frame();
    frame.width = canvas.width();
    frame.height = canvas.height();
    view.setFrame(frame);
}

/// A press or release at `place` of the canvas, by the window's content, whose origin is at the bottom left.
NSEvent eventAt(const CanvasView& canvas, NSView& view, QPoint place) {
    const QWidget& content = *canvas.window();
    const auto inContent = [&](QPoint point) {
        const QPoint mapped = canvas.mapTo(&content, point);
        return NSPoint{static_cast<double>(mapped.x()), static_cast<double>(content.height() - mapped.y())};
    };
    view.setOriginInContentView(inContent({0, canvas.height()}));
    return {inContent(place)};
}

void pairCanvas(CanvasView& canvas, NSView& view, FormBinding& binding) {
    fitFrame(view, canvas);
    binding.mirror<CanvasView, NSView>(canvas, view, [](CanvasView& shown, const NSView&) { shown.update(); });
    QObject* const context = binding.connections();
    QObject::connect(&canvas, &CanvasView::resized, context, [&canvas, &view] { fitFrame(view, canvas); });
    QObject::connect(&canvas, &CanvasView::drawn, context,
                     [&view](QPainter& painter) { platform::guarded([&] { draw(view, painter); }); });
    QObject::connect(&canvas, &CanvasView::pressed, context, [&canvas, &view](QPoint place) {
        userActed([&] { view.mouseDown(eventAt(canvas, view, place)); });
    });
    QObject::connect(&canvas, &CanvasView::released, context, [&canvas, &view](QPoint place) {
        userActed([&] { view.mouseUp(eventAt(canvas, view, place)); });
    });
}

void showTab(QTabWidget& tabWidget, const NSTabView& tabView) {
    tabWidget.setCurrentIndex(tabView.indexOfSelectedTabViewItem());
}

void pairTabs(QTabWidget& tabWidget, NSTabView& tabView, FormBinding& binding) {
    if (tabView.numberOfTabViewItems() == 0) {
        for (int i = 0; i < tabWidget.count(); ++i) tabView.addTabViewItem(tabWidget.tabText(i).toStdString());
    }
    const auto show = binding.mirror(tabWidget, tabView, showTab);
    QObject::connect(&tabWidget, &QTabWidget::currentChanged, binding.connections(), [&tabView, show](int index) {
        userActed([&] { tabView.selectTabViewItemAtIndex(index); }, show);
    });
}

void showPage(QStackedWidget& stack, const NSTabView& tabView) {
    stack.setCurrentIndex(tabView.indexOfSelectedTabViewItem());
}

void pairPages(QStackedWidget& stack, NSTabView& tabView, FormBinding& binding) {
    if (tabView.numberOfTabViewItems() == 0) {
        for (int i = 0; i < stack.count(); ++i) {
            tabView.addTabViewItem(stack.widget(i)->accessibleName().toStdString());
        }
    }
    binding.mirror(stack, tabView, showPage);
}

template <typename Widget>
bool isA(const QWidget& widget) {
    return qobject_cast<const Widget*>(&widget) != nullptr;
}

template <typename Model>
bool isControl(const NSView& model) {
    return dynamic_cast<const Model*>(&model) != nullptr;
}

bool hasRadioButtons(const QWidget& widget) { return !rowsOf(widget).isEmpty(); }

bool isPullDown(const NSView& model) {
    const auto* popUp = dynamic_cast<const NSPopUpButton*>(&model);
    return popUp && popUp->pullsDown();
}

bool isPopUp(const NSView& model) { return isControl<NSPopUpButton>(model) && !isPullDown(model); }

/// A view of any class that draws itself.
bool isDrawn(const NSView& model) { return !isControl<NSControl>(model) && !isControl<NSTabView>(model); }

/// A control of any other kind needs a widget of its own, or nobody would see it.
bool isMereView(const NSView& model) { return typeid(model) == typeid(NSView); }

template <typename Widget, typename Model, auto pair>
void pairAs(QWidget& widget, NSView& model, FormBinding& binding) {
    pair(static_cast<Widget&>(widget), dynamic_cast<Model&>(model), binding);
}

void pairView(QWidget&, NSView&, FormBinding&) {}

std::unique_ptr<NSControl> makeMatrix() { return std::make_unique<NSMatrix>(); }
std::unique_ptr<NSControl> makePopUp() { return std::make_unique<NSPopUpButton>(); }
std::unique_ptr<NSControl> makePullDown() { return std::make_unique<NSPopUpButton>(true); }
std::unique_ptr<NSControl> makePushButton() { return std::make_unique<NSButton>(); }
std::unique_ptr<NSControl> makeSlider() { return std::make_unique<NSSlider>(); }
std::unique_ptr<NSControl> makeSwitch() { return std::make_unique<NSButton>(NSButton::Type::Switch); }

template <typename Widget, typename Model, auto pair>
constexpr Pairing pairing(std::unique_ptr<NSControl> (*makeModel)()) {
    return {isA<Widget>, isControl<Model>, pairAs<Widget, Model, pair>, makeModel};
}

constexpr Pairing plainView = {isA<QWidget>, isMereView, pairView, nullptr};

// A widget is of the first kind that fits.
constexpr Pairing pairings[] = {
    {isA<PullDown>, isPullDown, pairAs<PullDown, NSPopUpButton, pairPullDown>, makePullDown},
    {isA<QComboBox>, isPopUp, pairAs<QComboBox, NSPopUpButton, pairPopUp>, makePopUp},
    {isA<CanvasView>, isDrawn, pairAs<CanvasView, NSView, pairCanvas>, nullptr},
    {hasRadioButtons, isControl<NSMatrix>, pairAs<QWidget, NSMatrix, pairMatrix>, makeMatrix},
    pairing<QSlider, NSSlider, pairSlider>(makeSlider),
    pairing<QLineEdit, NSTextField, pairEditable>(nullptr),
    pairing<QCheckBox, NSButton, pairCheckBox>(makeSwitch),
    pairing<QPushButton, NSButton, pairPushButton>(makePushButton),
    pairing<QToolButton, NSButton, pairPushButton>(makePushButton),
    pairing<QLabel, NSTextField, pairText>(nullptr),
    pairing<QTabWidget, NSTabView, pairTabs>(nullptr),
    pairing<QStackedWidget, NSTabView, pairPages>(nullptr),
};

} // namespace

const Pairing& pairingFor(const QWidget& widget) {
    const auto own = std::find_if(std::begin(pairings), std::end(pairings),
                                  [&](const Pairing& candidate) { return candidate.isWidget(widget); });
    return own == std::end(pairings) ? plainView : *own;
}

bool isPlainView(const QWidget& widget) { return &pairingFor(widget) == &plainView; }

} // namespace kelvo
