#pragma once

#include "platform/Bundle.h"
#include "platform/PropertyList.h"

#include <QFileSystemWatcher>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <QWidget>

#include <string>

namespace kelvo {

/// Says which display the settings in a pane's form are of, and what the display's settings file knows of it. The logic
/// shows neither; both stand in the pane's files, which are followed.
///
/// A label or field of the form, or of a form in it, whose dynamic property "fact" is a key shows the value of that key
/// in the utilities file, else in the display's settings file: a label as its text, a field as its placeholder.
class ShownDisplay : public QObject {
    Q_OBJECT

public:
    /// `form` is the pane's, which this belongs to; `folder` is the pane's preference folder.
    ShownDisplay(QWidget& form, std::string folder);

    /// The display's name; empty while no settings show.
    [[nodiscard]] const QString& name() const { return name_; }

signals:
    void named(const QString& name);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void refresh();
    void showFacts(const platform::NSMutableDictionary& utilities, const platform::NSMutableDictionary& settings);

    QWidget& form_;
    QPointer<QWidget> settings_;
    std::string folder_;
    QFileSystemWatcher files_;
    QTimer refreshSoon_;
    QString name_;
};

/// Where the pane of that bundle keeps its files.
[[nodiscard]] std::string panePreferenceFolder(platform::NSBundle& bundle);

} // namespace kelvo
