#include "qt/FormFixture.h"

#include <QLineEdit>
#include <QMenu>
#include <QPushButton>

#include <gmock/gmock.h>

namespace kelvo {

namespace {

using platform::NSTextField;
using testing::ElementsAre;
using testing::IsEmpty;

/// A field for numbers from 8 to 128 with "32" in it, and a button to go to.
class TextEditingTest : public FormFixture, private platform::NSTextFieldDelegate {
protected:
    void SetUp() override {
        widget_.setProperty("minimum", 8.0);
        widget_.setProperty("maximum", 128.0);
        owner_.published = {{"number_", &model_}};
        model_.setDelegate(this);
        bind();
        model_.setStringValue("32");
        show();
        form_.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&form_));
        widget_.setFocus();
    }

    void type(const char* text) {
        widget_.selectAll();
        QTest::keyClicks(&widget_, text);
    }

    NSTextField model_;
    QLineEdit& widget_ = add<QLineEdit>("number_");
    QPushButton& elsewhere_ = add<QPushButton>("");
    /// What the delegate heard.
    std::vector<std::string> story_;
    bool mayLeave_ = true;

private:
    bool controlTextShouldEndEditing(NSTextField&, const std::string& editor) override {
        story_.push_back("end with " + editor);
        return mayLeave_;
    }
    bool controlDidFailToFormatStringErrorDescription(NSTextField& control, const std::string& text,
                                                      const std::string&) override {
        story_.push_back("refused " + text);
        control.setStringValue("32");
        return true;
    }
};

TEST_F(TextEditingTest, ProgramsTextIsShownAndNobodyHearsOfIt) {
    EXPECT_EQ(widget_.text(), "32");
    EXPECT_THAT(story_, IsEmpty());
}

TEST_F(TextEditingTest, TypingAloneIsNoEndThoughAShortcutAlreadyFindsTheText) {
    type("40");
    EXPECT_THAT(story_, IsEmpty());
    EXPECT_EQ(model_.stringValue(), "40");
}

TEST_F(TextEditingTest, ReturnEndsEditingOnce) {
    type("40");
    QTest::keyClick(&widget_, Qt::Key_Return);
    EXPECT_THAT(story_, ElementsAre("end with 40"));
    EXPECT_EQ(model_.stringValue(), "40");
}

TEST_F(TextEditingTest, ReturnEndsEditingEvenOfAnUnchangedText) {
    QTest::keyClick(&widget_, Qt::Key_Return);
    EXPECT_THAT(story_, ElementsAre("end with 32"));
}

TEST_F(TextEditingTest, LeavingTheFieldEndsEditing) {
    type("40");
    elsewhere_.setFocus();
    EXPECT_THAT(story_, ElementsAre("end with 40"));
}

TEST_F(TextEditingTest, LeavingAnUnchangedFieldEndsEditingToo) {
    elsewhere_.setFocus();
    EXPECT_THAT(story_, ElementsAre("end with 32"));
}

TEST_F(TextEditingTest, KeysAndPointerLeaveTheFieldOnceEachTime) {
    QTest::keyClick(&widget_, Qt::Key_Tab);
    EXPECT_THAT(story_, ElementsAre("end with 32"));
    QTest::keyClick(&elsewhere_, Qt::Key_Backtab);
    ASSERT_TRUE(widget_.hasFocus());
    QTest::mouseClick(&elsewhere_, Qt::LeftButton);
    EXPECT_THAT(story_, ElementsAre("end with 32", "end with 32"));
}

TEST_F(TextEditingTest, LeavingAfterReturnIsAnEndOfItsOwn) {
    type("40");
    QTest::keyClick(&widget_, Qt::Key_Return);
    elsewhere_.setFocus();
    EXPECT_THAT(story_, ElementsAre("end with 40", "end with 40"));
}

TEST_F(TextEditingTest, AnotherWindowOrAMenuIsNoEndOfWhatWasNotTouched) {
    QLineEdit other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    form_.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form_));
    ASSERT_TRUE(widget_.hasFocus());
    EXPECT_THAT(story_, IsEmpty());

    QMenu menu;
    menu.addAction("item");
    menu.popup({0, 0});
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&menu));
    menu.close();
    ASSERT_TRUE(widget_.hasFocus());
    EXPECT_THAT(story_, IsEmpty());
}

TEST_F(TextEditingTest, WhatWasTypedDoesNotWaitUntilTheUserComesBackFromAnotherWindow) {
    type("40");
    QLineEdit other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    EXPECT_THAT(story_, ElementsAre("end with 40"));
}

TEST_F(TextEditingTest, FieldThatTheProgramHidesIsLeftWhenThatIsDone) {
    model_.setHidden(true);
    EXPECT_THAT(story_, IsEmpty());
    QCoreApplication::processEvents();
    EXPECT_THAT(story_, ElementsAre("end with 32"));
}

TEST_F(TextEditingTest, FieldThatTheProgramHidesAndGivesAnotherTextIsLeftWithThat) {
    type("40");
    model_.setHidden(true);
    model_.setStringValue("64");
    QCoreApplication::processEvents();
    EXPECT_THAT(story_, ElementsAre("end with 64"));
}

TEST_F(TextEditingTest, DisabledFieldIsNotLeft) {
    type("40");
    model_.setEnabled(false);
    QCoreApplication::processEvents();
    EXPECT_THAT(story_, IsEmpty());
}

TEST_F(TextEditingTest, WindowThatClosesIsNoEndOfWhatWasNotTouched) {
    form_.close();
    QCoreApplication::processEvents();
    EXPECT_THAT(story_, IsEmpty());
}

TEST_F(TextEditingTest, UntiedFieldIsNotLeft) {
    type("40");
    binding_.reset();
    elsewhere_.setFocus();
    QCoreApplication::processEvents();
    EXPECT_THAT(story_, IsEmpty());
}

TEST_F(TextEditingTest, FieldThatIsDestroyedWithTheFocusInItIsNotLeft) {
    type("40");
    { const std::unique_ptr<QWidget> gone(&widget_); }
    QCoreApplication::processEvents();
    EXPECT_THAT(story_, IsEmpty());
}

TEST_F(TextEditingTest, EmptyTextIsAnEndLikeAnyOther) {
    type("");
    widget_.clear();
    elsewhere_.setFocus();
    EXPECT_THAT(story_, ElementsAre("end with "));
}

TEST_F(TextEditingTest, TextOutsideOfTheFormsBoundsIsRefusedAndTheLastGoodOneShown) {
    for (const char* text : {"7", "129", "forty"}) {
        type(text);
        QTest::keyClick(&widget_, Qt::Key_Return);
        EXPECT_EQ(widget_.text(), "32");
    }
    EXPECT_THAT(story_, ElementsAre("refused 7", "refused 129", "refused forty"));
}

TEST_F(TextEditingTest, DelegateMayKeepTheUserInTheField) {
    mayLeave_ = false;
    type("40");
    elsewhere_.setFocus();
    EXPECT_TRUE(QTest::qWaitFor([this] { return widget_.hasFocus(); }));
}

class FreeTextTest : public FormFixture {};

TEST_F(FreeTextTest, FieldWithoutBoundsTakesEveryText) {
    NSTextField model;
    QLineEdit& widget = add<QLineEdit>("name_");
    owner_.published = {{"name_", &model}};
    bind();
    show();
    QTest::keyClicks(&widget, "any");
    QTest::keyClick(&widget, Qt::Key_Return);
    EXPECT_EQ(model.stringValue(), "any");
}

} // namespace

} // namespace kelvo
