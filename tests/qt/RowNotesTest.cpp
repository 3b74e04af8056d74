#include "qt/RowNotes.h"

#include "qt/PullDown.h"
#include "qt/UserAct.h"

#include <QCheckBox>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace kelvo {

namespace {

struct Row {
    QLabel* title;
    QCheckBox* button;
    PullDown* action;
};

/// A page with a usual text, a note, a list of three rows and a button beside it.
class RowNotesTest : public testing::Test {
protected:
    RowNotesTest() {
        auto rows = std::make_unique<QVBoxLayout>(&page_);
        for (QWidget* each : std::initializer_list<QWidget*>{usual_, note_, list_, elsewhere_}) rows->addWidget(each);
        static_cast<void>(rows.release());
        usual_->setObjectName("rules");
        list_->setObjectName("list_");
        note_->setText("Also changed: %1");
        note_->setProperty("notes", "list_");
        note_->setProperty("inPlaceOf", "rules");
        static_cast<void>(std::make_unique<QVBoxLayout>(list_).release());
        for (const char* title : {"one", "two", "three"}) addRow(title);
        noteRowChanges(page_);
    }

    void SetUp() override {
        page_.show();
        page_.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&page_));
    }

    void addRow(const char* title) {
        auto row = std::make_unique<QWidget>();
        auto cells = std::make_unique<QVBoxLayout>(row.get());
        const Row made{std::make_unique<QLabel>(title).release(), std::make_unique<QCheckBox>().release(),
                       std::make_unique<PullDown>().release()};
        for (QWidget* each : std::initializer_list<QWidget*>{made.title, made.button, made.action}) {
            cells->addWidget(each);
        }
        static_cast<void>(cells.release());
        made.button->setChecked(true);
        made.action->setTitle("three fingers");
        list_->layout()->addWidget(row.release());
        rows_.push_back(made);
    }

    QWidget page_;
    QLabel* usual_ = std::make_unique<QLabel>("rules").release();
    QLabel* note_ = std::make_unique<QLabel>().release();
    QWidget* list_ = std::make_unique<QWidget>().release();
    QCheckBox* elsewhere_ = std::make_unique<QCheckBox>().release();
    std::vector<Row> rows_;
};

TEST_F(RowNotesTest, NothingIsNotedAtFirst) {
    EXPECT_TRUE(note_->isHidden());
    EXPECT_TRUE(usual_->isVisible());
}

TEST_F(RowNotesTest, RowThatChangedAlongIsNamed) {
    rows_[0].action->setFocus();
    userActed([&] {
        rows_[0].action->setTitle("two fingers");
        rows_[1].action->setTitle("four fingers");
    });
    EXPECT_TRUE(note_->isVisible());
    EXPECT_TRUE(usual_->isHidden());
    EXPECT_EQ(note_->text(), "Also changed: two");
}

TEST_F(RowNotesTest, RowThatWentOffAlongIsNamedToo) {
    rows_[0].button->setFocus();
    userActed([&] {
        rows_[1].button->setChecked(false);
        rows_[2].action->setTitle("four fingers");
    });
    EXPECT_EQ(note_->text(), "Also changed: two, three");
}

TEST_F(RowNotesTest, UsersOwnRowIsNotNamed) {
    rows_[0].button->setFocus();
    userActed([&] { rows_[0].button->setChecked(false); });
    EXPECT_TRUE(note_->isHidden());
}

TEST_F(RowNotesTest, NoteGoesWithTheNextThingThatTheUserDoes) {
    rows_[0].button->setFocus();
    userActed([&] { rows_[1].button->setChecked(false); });
    ASSERT_TRUE(note_->isVisible());
    elsewhere_->setFocus();
    userActed([] {});
    EXPECT_TRUE(note_->isHidden());
    EXPECT_TRUE(usual_->isVisible());
}

TEST_F(RowNotesTest, WhatTheProgramChangesByItselfIsNotNoted) {
    rows_[1].button->setChecked(false);
    userActed([] {});
    EXPECT_TRUE(note_->isHidden());
}

TEST_F(RowNotesTest, RowsThatComeAnewAreNotNoted) {
    userActed([&] {
        qDeleteAll(list_->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly));
        rows_.clear();
        addRow("four");
    });
    EXPECT_TRUE(note_->isHidden());
}

} // namespace

} // namespace kelvo
