#include "qt/ShownDisplay.h"

#include "platform/Files.h"

#include <QEvent>
#include <QLabel>
#include <QLineEdit>
#include <QVariant>

#include <utility>

namespace kelvo {

namespace {

using platform::NSMutableDictionary;

// The pane's own names for these.
constexpr char kUtilitiesFile[] = "Utilities.plist";
constexpr char kSettingsFilePrefix[] = "Settings_";
constexpr char kSettingsFileSuffix[] = ".plist";
constexpr char kSelectDeviceName[] = "SelectDeviceName";

NSMutableDictionary contentsOf(const std::string& folder, const std::string& file) {
    return NSMutableDictionary::dictionaryWithContentsOfFile(platform::stringByAppendingPathComponent(folder, file));
}

bool isShown(const QWidget* widget) {
    // What has not been shown yet is to be, unless the pane has hidden it.
    return widget && !(widget->isHidden() && widget->testAttribute(Qt::WA_WState_ExplicitShowHide));
}

QString textOf(const NSMutableDictionary& dictionary, const QString& key) {
    return QString::fromStdString(dictionary.objectForKey(key.toStdString()).stringValue().value_or(""));
}

} // namespace

std::string panePreferenceFolder(platform::NSBundle& bundle) {
    return platform::NSFileManager::defaultManager().homeDirectory() + "/Library/Preferences/" +
           bundle.localizedStringForKey("PreferenceFolderName", "");
}

ShownDisplay::ShownDisplay(QWidget& form, std::string folder)
    : QObject(&form), form_(form), settings_(form.findChild<QWidget*>("tabView_")), folder_(std::move(folder)) {
    refreshSoon_.setSingleShot(true);
    refreshSoon_.setInterval(0);
    QObject::connect(&refreshSoon_, &QTimer::timeout, this, &ShownDisplay::refresh);
    files_.addPath(QString::fromStdString(folder_));
    QObject::connect(&files_, &QFileSystemWatcher::directoryChanged, this, &ShownDisplay::refresh);
    if (settings_) settings_->installEventFilter(this);
    refresh();
}

bool ShownDisplay::eventFilter(QObject* watched, QEvent* event) {
    // The pane says what it shows in several steps, of which the display's name comes last.
    if (event->type() == QEvent::ShowToParent || event->type() == QEvent::HideToParent) refreshSoon_.start();
    return QObject::eventFilter(watched, event);
}

void ShownDisplay::refresh() {
    NSMutableDictionary utilities;
    if (isShown(settings_)) utilities = contentsOf(folder_, kUtilitiesFile);
    const QString name = textOf(utilities, kSelectDeviceName);
    NSMutableDictionary settings;
    if (!name.isEmpty()) settings = contentsOf(folder_, kSettingsFilePrefix + name.toStdString() + kSettingsFileSuffix);
    showFacts(utilities, settings);
    if (std::exchange(name_, name) != name) emit named(name);
}

void ShownDisplay::showFacts(const NSMutableDictionary& utilities, const NSMutableDictionary& settings) {
    const auto factFor = [&](const QWidget& widget) {
        const QString key = widget.property("fact").toString();
        const QString ofUtilities = textOf(utilities, key);
        return ofUtilities.isEmpty() ? textOf(settings, key) : ofUtilities;
    };
    for (QLabel* label : form_.findChildren<QLabel*>()) {
        if (label->property("fact").isValid()) label->setText(factFor(*label));
    }
    for (QLineEdit* field : form_.findChildren<QLineEdit*>()) {
        if (field->property("fact").isValid()) field->setPlaceholderText(factFor(*field));
    }
}

} // namespace kelvo
