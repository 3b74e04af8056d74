#include "qt/QtApplication.h"
#include "qt/ToolkitPlatform.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class QtApplicationTest : public testing::Test {
protected:
    QtApplicationTest() {
        application_.setWindow(window_);
        window_.show();
    }

    /// Opens a dialog of the window and records what it returns.
    void open(QDialog& dialog, Qt::WindowModality modality) {
        QObject::connect(&dialog, &QDialog::finished, &dialog, [this](int result) { results_.push_back(result); });
        dialog.setWindowModality(modality);
        dialog.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    }

    QtApplication application_;
    QWidget window_;
    std::vector<int> results_;
};

TEST_F(QtApplicationTest, OpenSheetEndsWithAResultThatIsNeitherYesNorNo) {
    QDialog sheet(&window_);
    open(sheet, Qt::WindowModal);

    application_.endSheetInKeyWindow();

    EXPECT_THAT(results_, ElementsAre(kSheetWasEnded));
    EXPECT_FALSE(sheet.isVisible());
    EXPECT_NE(kSheetWasEnded, int{QDialog::Accepted});
    EXPECT_NE(kSheetWasEnded, int{QDialog::Rejected});
}

TEST_F(QtApplicationTest, DialogThatBlocksTheWholeApplicationIsNoSheet) {
    QDialog dialog(&window_);
    open(dialog, Qt::ApplicationModal);
    application_.endSheetInKeyWindow();
    EXPECT_THAT(results_, IsEmpty());
    EXPECT_TRUE(dialog.isVisible());
}

TEST_F(QtApplicationTest, SheetOfAnotherWindowIsLeftAlone) {
    QWidget other;
    other.show();
    QDialog sheet(&other);
    open(sheet, Qt::WindowModal);
    application_.endSheetInKeyWindow();
    EXPECT_THAT(results_, IsEmpty());
}

TEST_F(QtApplicationTest, WithoutASheetThereIsNothingToEnd) {
    application_.endSheetInKeyWindow();
    EXPECT_TRUE(window_.isVisible());
}

/// Alerts of one that stands for a controller.
class AlertSheetTest : public QtApplicationTest {
protected:
    /// Begins the alert of a rotation and records what it comes to.
    QMessageBox& begin() {
        application_.beginInformationalAlertSheet({.title = "Rotate <b>input</b>?",
                                                   .message = "Touches follow the &picture.\nReally.",
                                                   .defaultButton = "Rotate",
                                                   .alternateButton = "Cancel"},
                                                  *delegate_,
                                                  [this](std::int32_t returnCode) { codes_.push_back(returnCode); });
        auto* sheet = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        EXPECT_TRUE(sheet && QTest::qWaitForWindowExposed(sheet));
        return *sheet;
    }

    static QAbstractButton& button(const QMessageBox& sheet, const QString& text) {
        for (QAbstractButton* each : sheet.buttons()) {
            if (each->text() == text) return *each;
        }
        throw std::runtime_error("the sheet has no such button");
    }

    ToolkitPlatform platform_;
    std::unique_ptr<platform::NSObject> delegate_ = std::make_unique<platform::NSView>();
    std::vector<std::int32_t> codes_;
};

TEST_F(AlertSheetTest, BlocksItsWindowAloneAndReturnsAtOnce) {
    const QMessageBox& sheet = begin();
    EXPECT_EQ(sheet.windowModality(), Qt::WindowModal);
    EXPECT_EQ(sheet.parentWidget(), &window_);
    EXPECT_THAT(codes_, IsEmpty());
}

TEST_F(AlertSheetTest, IsTitledAsItsWindow) {
    window_.setWindowTitle("Touch Display");
    EXPECT_EQ(begin().windowTitle(), "Touch Display");
}

TEST_F(AlertSheetTest, ShowsItsTextsAsTheyAre) {
    const QMessageBox& sheet = begin();
    EXPECT_EQ(sheet.icon(), QMessageBox::Information);
    EXPECT_EQ(sheet.text(), "Rotate <b>input</b>?");
    EXPECT_EQ(sheet.informativeText(), "Touches follow the &picture.\nReally.");
    for (const QLabel* label : sheet.findChildren<QLabel*>()) EXPECT_EQ(label->textFormat(), Qt::PlainText);
}

TEST_F(AlertSheetTest, DefaultButtonConfirms) {
    QTest::mouseClick(&button(begin(), "Rotate"), Qt::LeftButton);
    EXPECT_THAT(codes_, ElementsAre(platform::kNSAlertDefaultReturn));
}

TEST_F(AlertSheetTest, ReturnKeyConfirms) {
    QTest::keyClick(&begin(), Qt::Key_Return);
    EXPECT_THAT(codes_, ElementsAre(platform::kNSAlertDefaultReturn));
}

TEST_F(AlertSheetTest, AlternateButtonDeclines) {
    QTest::mouseClick(&button(begin(), "Cancel"), Qt::LeftButton);
    EXPECT_THAT(codes_, ElementsAre(platform::kNSAlertAlternateReturn));
}

TEST_F(AlertSheetTest, EscapeKeyDeclines) {
    QTest::keyClick(&begin(), Qt::Key_Escape);
    EXPECT_THAT(codes_, ElementsAre(platform::kNSAlertAlternateReturn));
}

TEST_F(AlertSheetTest, ProgramEndsItWithNeither) {
    begin();
    application_.endSheetInKeyWindow();
    EXPECT_THAT(codes_, ElementsAre(kSheetWasEnded));
    EXPECT_NE(kSheetWasEnded, platform::kNSAlertDefaultReturn);
    EXPECT_NE(kSheetWasEnded, platform::kNSAlertAlternateReturn);
}

TEST_F(AlertSheetTest, GoesWhenItHasBeenClosed) {
    const QPointer<QMessageBox> sheet = &begin();
    application_.endSheetInKeyWindow();
    EXPECT_TRUE(QTest::qWaitFor([&] { return sheet.isNull(); }));
}

TEST_F(AlertSheetTest, EachOfSeveralTellsItsOwnEnd) {
    begin();
    QTest::keyClick(&begin(), Qt::Key_Return);
    application_.endSheetInKeyWindow();
    EXPECT_THAT(codes_, ElementsAre(platform::kNSAlertDefaultReturn, kSheetWasEnded));
}

TEST_F(AlertSheetTest, DelegateThatIsGoneIsNotTold) {
    QMessageBox& sheet = begin();
    delegate_.reset();
    QTest::keyClick(&sheet, Qt::Key_Return);
    EXPECT_THAT(codes_, IsEmpty());
}

TEST_F(AlertSheetTest, WhatTheDelegateThrowsIsLogged) {
    application_.beginInformationalAlertSheet({.title = "", .message = "", .defaultButton = "", .alternateButton = ""},
                                              *delegate_, [](std::int32_t) { throw std::runtime_error("bad luck"); });
    application_.endSheetInKeyWindow();
    EXPECT_THAT(platform_.log.lines, ElementsAre("Unexpected error: bad luck"));
}

TEST_F(AlertSheetTest, WithoutAWindowItCountsAsEndedLater) {
    QtApplication application;
    application.beginInformationalAlertSheet({.title = "", .message = "", .defaultButton = "", .alternateButton = ""},
                                             *delegate_, [this](std::int32_t code) { codes_.push_back(code); });
    EXPECT_THAT(codes_, IsEmpty());
    EXPECT_TRUE(QTest::qWaitFor([this] { return !codes_.empty(); }));
    EXPECT_THAT(codes_, ElementsAre(kSheetWasEnded));
}

TEST_F(QtApplicationTest, ActivatingRestoresAMinimisedWindow) {
    window_.showMinimized();
    application_.activateIgnoringOtherApps();
    EXPECT_FALSE(window_.isMinimized());
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window_));
}

TEST_F(QtApplicationTest, ActivatingKeepsAMaximisedWindowMaximised) {
    window_.setWindowState(Qt::WindowMaximized | Qt::WindowMinimized);
    application_.activateIgnoringOtherApps();
    EXPECT_TRUE(window_.isMaximized());
}

TEST_F(QtApplicationTest, ActivatingBringsTheWindowBeforeAnother) {
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));

    application_.activateIgnoringOtherApps();

    EXPECT_TRUE(QTest::qWaitForWindowActive(&window_));
}

TEST_F(QtApplicationTest, ActivatesTheWindowOfWhatIsShown) {
    QWidget part(&window_);
    application_.setWindow(part);
    window_.showMinimized();
    application_.activateIgnoringOtherApps();
    EXPECT_FALSE(window_.isMinimized());
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window_));
}

TEST_F(AlertSheetTest, OfAPartBlocksItsWindowAndCanBeEndedByTheProgram) {
    QWidget part(&window_);
    application_.setWindow(part);
    const QMessageBox& sheet = begin();
    EXPECT_EQ(sheet.windowModality(), Qt::WindowModal);
    EXPECT_EQ(sheet.parentWidget()->window(), &window_);
    application_.endSheetInKeyWindow();
    EXPECT_THAT(codes_, ElementsAre(kSheetWasEnded));
}

TEST_F(AlertSheetTest, GoesWithThePartItBelongsTo) {
    auto part = std::make_unique<QWidget>(&window_);
    application_.setWindow(*part);
    const QPointer<QMessageBox> sheet = &begin();
    part.reset();
    EXPECT_TRUE(sheet.isNull());
    EXPECT_THAT(codes_, IsEmpty());
}

TEST(QtApplication, WithoutAWindowNothingHappens) {
    QtApplication application;
    {
        QWidget window;
        application.setWindow(window);
    }
    EXPECT_NO_THROW(application.activateIgnoringOtherApps());
    EXPECT_NO_THROW(application.endSheetInKeyWindow());
}

} // namespace

} // namespace kelvo
