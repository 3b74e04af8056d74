#pragma once

#include <QLabel>
#include <QObject>
#include <QPointer>
#include <QWidget>

#include <vector>

namespace kelvo {

/// Says which rows of a list have changed along with the one that the user changed. The label for it has a dynamic
/// property "notes", the name of the list; its text is a pattern whose "%1" stands for the titles of those rows. It
/// shows until the user does something else, in place of the label that its property "inPlaceOf" names.
class RowNotes : public QObject {
public:
    RowNotes(QLabel& note, QWidget& list, QWidget* usual);

private:
    /// What is seen of a row.
    struct Row {
        const QWidget* widget;
        QString title;
        bool isOn;
        QString action;

        bool operator==(const Row&) const = default;
    };
    using Rows = std::vector<Row>;

    [[nodiscard]] Rows rowsNow() const;
    [[nodiscard]] QStringList changedAlong() const;
    void tell(const QStringList& titles);

    QLabel& note_;
    QPointer<QWidget> list_;
    QPointer<QWidget> usual_;
    QString pattern_;
    Rows before_;
};

/// Gives every such label of a form its notes.
void noteRowChanges(QWidget& form);

} // namespace kelvo
