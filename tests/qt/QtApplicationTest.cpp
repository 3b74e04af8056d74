#include "qt/QtApplication.h"

#include <QApplication>
#include <QDialog>
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
