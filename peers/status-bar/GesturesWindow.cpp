#include "peers/status-bar/GesturesWindow.h"

#include "TDNames.h"
#include "TDUtilities.h"
#include "peers/actions/ActionTexts.h"
#include "peers/driver/GestureTable.h"
#include "platform/Guarded.h"
#include "platform/PropertyList.h"

#include <QHeaderView>
#include <QSignalBlocker>

#include <memory>
#include <string>
#include <vector>

namespace kelvo {

namespace {

using platform::NSMutableDictionary;

QString localized(const std::string& key, const char* text) {
    return QString::fromStdString(localizedString(key, text));
}

/// Gestures and fingers are called as the pane calls them.
QString called(const std::string& name) {
    return name.empty() ? QString() : QString::fromStdString(localizedString(name, name));
}

std::vector<std::string> connectedDisplays() {
    std::vector<std::string> names;
    const auto utilities = NSMutableDictionary::dictionaryWithContentsOfFile(getUilitiesFilePath());
    const platform::NSMutableArray connected = utilities.objectForKey(keys::currentDeviceType).array();
    for (const platform::Value& name : connected.objects()) {
        if (name.string()) names.push_back(*name.string());
    }
    return names;
}

QString sourceOf(const ActionsInForce& actions, touch::Gesture gesture) {
    const std::string& left = actions.actionFor(gesture, touch::Direction::Left).file;
    const std::string& right = actions.actionFor(gesture, touch::Direction::Right).file;
    const auto shown = [](const std::string& file) {
        return file.empty() ? localized("Actions.Own", "The driver") : QString::fromStdString(file);
    };
    return !touch::hasWays(gesture) || left == right ? shown(right) : shown(left) + "\n" + shown(right);
}

} // namespace

GesturesWindow::GesturesWindow() {
    setWindowTitle(localized("Menu.Gestures", "What gestures do"));
    if (localizedString("Layout.Direction") == "RTL") setLayoutDirection(Qt::RightToLeft);
    displays_.setAccessibleName(localized("Device.AccessibleName", "Touchscreen to set up"));
    table_.setAccessibleName(windowTitle());
    table_.setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_.setSelectionBehavior(QAbstractItemView::SelectRows);
    table_.setTabKeyNavigation(false);
    table_.verticalHeader()->hide();
    table_.setColumnCount(5);
    table_.setHorizontalHeaderLabels({localized("Actions.Gesture", "Gesture"), localized("Actions.State", "State"),
                                      localized("Actions.Made", "Fingers"),
                                      localized("Actions.Here", "On this desktop"),
                                      localized("Actions.Source", "Set in")});
    layout_.addWidget(&displays_);
    layout_.addWidget(&table_);
    resize(960, 520);
    QObject::connect(&displays_, &QComboBox::currentIndexChanged, this,
                     [this] { platform::guarded([this] { fillTable(); }); });
}

void GesturesWindow::showAnew() {
    fillDisplays();
    fillTable();
    show();
    raise();
    activateWindow();
}

/// The one that was shown stays chosen.
void GesturesWindow::fillDisplays() {
    const QSignalBlocker blocker(displays_);
    const QString chosen = displays_.currentText();
    displays_.clear();
    for (const std::string& name : connectedDisplays()) displays_.addItem(QString::fromStdString(name));
    if (const int index = displays_.findText(chosen); index >= 0) displays_.setCurrentIndex(index);
    displays_.setVisible(displays_.count() > 1);
}

void GesturesWindow::fillTable() {
    const std::string display = displays_.currentText().toStdString();
    const auto settings = display.empty()
                              ? NSMutableDictionary()
                              : NSMutableDictionary::dictionaryWithContentsOfFile(getSettingsFilePath(display));
    const ActionsInForce actions(currentDesktopSession());
    const std::vector<GestureRow> rows = gestureTable(display, settings);
    table_.setRowCount(static_cast<int>(rows.size()));
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const GestureRow& row = rows[i];
        const QStringList cells{
            called(row.name), row.isOn ? localized("Actions.On", "on") : localized("Actions.Off", "off"),
            called(row.fingers), QString::fromStdString(textOf(actions, row.gesture)), sourceOf(actions, row.gesture)};
        for (int column = 0; column < cells.size(); ++column) {
            table_.setItem(static_cast<int>(i), column, std::make_unique<QTableWidgetItem>(cells.at(column)).release());
        }
    }
    table_.resizeColumnsToContents();
    table_.resizeRowsToContents();
}

} // namespace kelvo
