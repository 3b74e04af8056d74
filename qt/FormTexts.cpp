#include "qt/FormTexts.h"

#include <QComboBox>
#include <QLabel>
#include <QStyle>
#include <QTabBar>
#include <QTabWidget>
#include <QVariant>

namespace kelvo {

namespace {

constexpr const char* textProperties[] = {
    "text", "title", "toolTip", "placeholderText", "accessibleName", "accessibleDescription", "windowTitle",
};

void localizeProperties(QWidget& widget, platform::NSBundle* bundle) {
    for (const char* property : textProperties) {
        const QString key = widget.property(property).toString();
        if (!key.isEmpty()) widget.setProperty(property, textFor(key, bundle));
    }
}

void localizeValueTexts(QWidget& widget, platform::NSBundle* bundle) {
    QStringList texts = widget.property("valueTexts").toStringList();
    if (texts.isEmpty()) return;
    for (QString& text : texts) text = textFor(text, bundle);
    widget.setProperty("valueTexts", texts);
}

void localizeItems(QComboBox& comboBox, platform::NSBundle* bundle) {
    for (int i = 0; i < comboBox.count(); ++i) comboBox.setItemText(i, textFor(comboBox.itemText(i), bundle));
}

void localizeTabs(QTabWidget& tabWidget, platform::NSBundle* bundle) {
    for (int i = 0; i < tabWidget.count(); ++i) tabWidget.setTabText(i, textFor(tabWidget.tabText(i), bundle));
}

/// A label stands where its neighbours do, also when its text is a name in other letters than theirs.
void alignLabels(QWidget& form) {
    for (QLabel* label : form.findChildren<QLabel*>()) {
        label->setAlignment(QStyle::visualAlignment(form.layoutDirection(), label->alignment()));
    }
}

} // namespace

QString textFor(const QString& key, platform::NSBundle* bundle) {
    if (key.isEmpty() || !bundle) return {};
    return QString::fromStdString(bundle->localizedStringForKey(key.toStdString(), ""));
}

Qt::LayoutDirection writingDirection(platform::NSBundle* bundle) {
    return textFor(QStringLiteral("Layout.Direction"), bundle) == QLatin1String("RTL") ? Qt::RightToLeft
                                                                                       : Qt::LeftToRight;
}

void localizeTexts(QWidget& form, platform::NSBundle* bundle) {
    form.setLayoutDirection(writingDirection(bundle));
    alignLabels(form);
    localizeProperties(form, bundle);
    for (QWidget* widget : form.findChildren<QWidget*>()) {
        // What the toolkit puts into a tab bar has the toolkit's own texts.
        if (!qobject_cast<QTabBar*>(widget->parentWidget())) localizeProperties(*widget, bundle);
        localizeValueTexts(*widget, bundle);
    }
    for (QComboBox* comboBox : form.findChildren<QComboBox*>()) localizeItems(*comboBox, bundle);
    for (QTabWidget* tabWidget : form.findChildren<QTabWidget*>()) localizeTabs(*tabWidget, bundle);
}

} // namespace kelvo
