#include "qt/Pairings.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>
#include <QTabWidget>
#include <QToolButton>

#include <algorithm>
#include <iterator>
#include <typeinfo>

namespace kelvo {

namespace {

using platform::NSButton;
using platform::NSControl;
using platform::NSPopUpButton;
using platform::NSTabView;
using platform::NSTextField;
using platform::NSView;

// Contents that a form brings along (items, tabs, a text) go into a control that has none yet; from then on the widget
// shows the control.

QStringList itemTexts(const QComboBox& comboBox) {
    QStringList texts;
    for (int i = 0; i < comboBox.count(); ++i) texts.append(comboBox.itemText(i));
    return texts;
}

void showPopUp(QComboBox& comboBox, const NSPopUpButton& popUp) {
    QStringList titles;
    for (const std::string& title : popUp.itemTitles()) titles.append(QString::fromStdString(title));
    if (itemTexts(comboBox) != titles) {
        comboBox.clear();
        comboBox.addItems(titles);
    }
    comboBox.setCurrentIndex(popUp.indexOfSelectedItem());
}

void pairPopUp(QComboBox& comboBox, NSPopUpButton& popUp, FormBinding& binding) {
    if (popUp.itemTitles().empty()) {
        for (const QString& text : itemTexts(comboBox)) popUp.addItemWithTitle(text.toStdString());
    }
    const auto show = binding.mirror(comboBox, popUp, showPopUp);
    // Of the signals only this one comes when the selected item is picked again, and never from the program.
    QObject::connect(&comboBox, qOverload<int>(&QComboBox::activated), binding.connections(),
                     [&popUp, show](int index) { userActed([&] { popUp.performSelectItemAtIndex(index); }, show); });
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

/// A control of any other kind needs a widget of its own, or nobody would see it.
bool isMereView(const NSView& model) { return typeid(model) == typeid(NSView); }

template <typename Widget, typename Model, auto pair>
void pairAs(QWidget& widget, NSView& model, FormBinding& binding) {
    pair(static_cast<Widget&>(widget), dynamic_cast<Model&>(model), binding);
}

void pairView(QWidget&, NSView&, FormBinding&) {}

std::unique_ptr<NSControl> makePopUp() { return std::make_unique<NSPopUpButton>(); }
std::unique_ptr<NSControl> makeSwitch() { return std::make_unique<NSButton>(NSButton::Type::Switch); }
std::unique_ptr<NSControl> makePushButton() { return std::make_unique<NSButton>(); }

template <typename Widget, typename Model, auto pair>
constexpr Pairing pairing(std::unique_ptr<NSControl> (*makeModel)()) {
    return {isA<Widget>, isControl<Model>, pairAs<Widget, Model, pair>, makeModel};
}

constexpr Pairing plainView = {isA<QWidget>, isMereView, pairView, nullptr};

constexpr Pairing pairings[] = {
    pairing<QComboBox, NSPopUpButton, pairPopUp>(makePopUp),
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
