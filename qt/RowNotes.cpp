#include "qt/RowNotes.h"

#include "qt/PullDown.h"
#include "qt/UserAct.h"

#include <QApplication>
#include <QCheckBox>
#include <QVariant>

#include <algorithm>
#include <memory>

namespace kelvo {

RowNotes::RowNotes(QLabel& note, QWidget& list, QWidget* usual)
    : QObject(&note), note_(note), list_(&list), usual_(usual), pattern_(note.text()) {
    note.clear();
    note.hide();
    connect(&UserActs::all(), &UserActs::begun, this, [this] { before_ = rowsNow(); });
    connect(&UserActs::all(), &UserActs::ended, this, [this] { tell(changedAlong()); });
}

RowNotes::Rows RowNotes::rowsNow() const {
    Rows rows;
    if (!list_) return rows;
    for (const QWidget* row : list_->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        const auto* const title = row->findChild<QLabel*>();
        const auto* const button = row->findChild<QCheckBox*>();
        const auto* const action = row->findChild<PullDown*>();
        if (title && button && action) rows.push_back({row, title->text(), button->isChecked(), action->title()});
    }
    return rows;
}

/// The user's own row has the keyboard's focus. What is done elsewhere, like choosing another display, may change every
/// row for reasons of its own.
QStringList RowNotes::changedAlong() const {
    const QWidget* const focused = QApplication::focusWidget();
    if (!focused || !list_ || !list_->isAncestorOf(focused)) return {};
    QStringList titles;
    for (const Row& row : rowsNow()) {
        const auto known = std::ranges::find(before_, row.widget, &Row::widget);
        const bool hasChanged = known != before_.end() && *known != row;
        if (hasChanged && !row.widget->isAncestorOf(focused)) titles.append(row.title);
    }
    return titles;
}

void RowNotes::tell(const QStringList& titles) {
    if (titles.isEmpty() && note_.isHidden()) return;
    if (!titles.isEmpty())
        note_.setText(QString(pattern_).replace(QStringLiteral("%1"), titles.join(QStringLiteral(", "))));
    if (usual_) usual_->setVisible(titles.isEmpty());
    note_.setVisible(!titles.isEmpty());
}

void noteRowChanges(QWidget& form) {
    for (QLabel* label : form.findChildren<QLabel*>()) {
        const QVariant name = label->property("notes");
        auto* const list = name.isValid() ? form.findChild<QWidget*>(name.toString()) : nullptr;
        if (!list) continue;
        auto* const usual = form.findChild<QWidget*>(label->property("inPlaceOf").toString());
        // The label owns it.
        static_cast<void>(std::make_unique<RowNotes>(*label, *list, usual).release());
    }
}

} // namespace kelvo
