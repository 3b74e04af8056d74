#include "qt/QtApplication.h"

#include "platform/Guarded.h"
#include "qt/TouchSize.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

#include <memory>
#include <utility>

namespace kelvo {

using platform::NSAlertSheet;

namespace {

/// A dialog that blocks nothing but the window it belongs to.
bool isSheetOf(const QDialog& dialog, const QWidget& window) {
    return dialog.windowModality() == Qt::WindowModal && dialog.parentWidget() &&
           dialog.parentWidget()->window() == &window;
}

/// Texts are shown as they are, the title as a heading.
void showTexts(QMessageBox& box, const NSAlertSheet& sheet) {
    const QString title = QString::fromStdString(sheet.title);
    box.setText(title);
    box.setInformativeText(QString::fromStdString(sheet.message));
    // For a screen reader, which would read the window's title again instead.
    box.setAccessibleName(title);
    box.setAccessibleDescription(QString::fromStdString(sheet.message));
    for (QLabel* label : box.findChildren<QLabel*>()) {
        label->setTextFormat(Qt::PlainText);
        if (label->text() != title) continue;
        QFont heading = label->font();
        heading.setBold(true);
        label->setFont(heading);
    }
}

std::int32_t returnCodeOf(const QMessageBox& box, const QAbstractButton* confirms, const QAbstractButton* declines) {
    if (box.clickedButton() == confirms) return platform::kNSAlertDefaultReturn;
    if (box.clickedButton() == declines) return platform::kNSAlertAlternateReturn;
    return kSheetWasEnded;
}

} // namespace

void QtApplication::activateIgnoringOtherApps() {
    if (!shown_) return;
    QWidget& window = *shown_->window();
    if (window.isMinimized()) window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.raise();
    window.activateWindow();
}

void QtApplication::beginInformationalAlertSheet(const NSAlertSheet& sheet, const platform::NSObject& delegate,
                                                 std::function<void(std::int32_t returnCode)> didEnd) {
    const auto tell = [target = delegate.weakReference(), didEnd = std::move(didEnd)](std::int32_t returnCode) {
        platform::guarded([&] {
            if (!target.expired()) didEnd(returnCode);
        });
    };
    if (!shown_) {
        QMetaObject::invokeMethod(
            qApp, [tell] { tell(kSheetWasEnded); }, Qt::QueuedConnection);
        return;
    }

    // What is shown owns it until it has been closed.
    QMessageBox* const box = std::make_unique<QMessageBox>(shown_.data()).release();
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setIcon(QMessageBox::Information);
    box->setLayoutDirection(shown_->layoutDirection());
    box->setWindowTitle(shown_->window()->windowTitle());
    showTexts(*box, sheet);
    QPushButton* const confirms = box->addButton(QString::fromStdString(sheet.defaultButton), QMessageBox::AcceptRole);
    QPushButton* const declines =
        box->addButton(QString::fromStdString(sheet.alternateButton), QMessageBox::RejectRole);
    for (QPushButton* button : {confirms, declines}) button->setMinimumHeight(touchHeightFor(*button));
    box->setDefaultButton(confirms);
    box->setEscapeButton(declines);
    QObject::connect(box, &QDialog::finished, box,
                     [box, confirms, declines, tell] { tell(returnCodeOf(*box, confirms, declines)); });
    box->open();
}

void QtApplication::endSheetInKeyWindow() {
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (dialog && shown_ && isSheetOf(*dialog, *shown_->window())) dialog->done(kSheetWasEnded);
}

} // namespace kelvo
