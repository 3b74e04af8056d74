#include "qt/AlertPage.h"
#include "qt/FormFixture.h"
#include "qt/NumberEdit.h"
#include "qt/PictogramView.h"
#include "qt/PullDown.h"
#include "qt/RowScroller.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QWheelEvent>

#include <gtest/gtest.h>

namespace kelvo {

namespace {

class FormPropertiesTest : public FormFixture {};

/// A field from 8 to 128 with the label that says so, and a second field to go to.
class BoundsTest : public FormFixture {
protected:
    void SetUp() override {
        field_.setProperty("minimum", 8.0);
        field_.setProperty("maximum", 128.0);
        label_.setProperty("bounds", "size_");
        other_.setProperty("bounds", "another_");
        owner_.published = {{"size_", &model_}};
        model_.setStringValue("32");
        bind();
        show();
    }

    void typeAndLeave(const QString& text) {
        field_.setFocus();
        field_.selectAll();
        QTest::keyClicks(&field_, text);
        QTest::keyClick(&field_, Qt::Key_Return);
    }

    [[nodiscard]] bool isTinted() const {
        return field_.palette().color(QPalette::Base) != form_.palette().color(QPalette::Base);
    }

    platform::NSTextField model_;
    QLineEdit& field_ = add<QLineEdit>("size_");
    QLabel& label_ = add<QLabel>("hint");
    QLabel& other_ = add<QLabel>("otherHint");
};

TEST_F(BoundsTest, ValueThatComesBackIsMarkedWithItsBounds) {
    typeAndLeave("900");
    // As the program corrects it.
    model_.setStringValue("128");
    EXPECT_EQ(field_.text(), "128");
    EXPECT_TRUE(isTinted());
    EXPECT_TRUE(label_.font().bold());
    EXPECT_FALSE(other_.font().bold());
}

TEST_F(BoundsTest, ValueThatStaysIsNotMarked) {
    typeAndLeave("48");
    model_.setStringValue("48");
    EXPECT_FALSE(isTinted());
    EXPECT_FALSE(label_.font().bold());
}

TEST_F(BoundsTest, ValueThatNobodyTypedIsNotMarked) {
    model_.setStringValue("64");
    EXPECT_FALSE(isTinted());
}

TEST_F(BoundsTest, MarkGoesAway) {
    typeAndLeave("900");
    model_.setStringValue("128");
    ASSERT_TRUE(isTinted());
    EXPECT_TRUE(QTest::qWaitFor([&] { return !isTinted() && !label_.font().bold(); }, 20000));
}

TEST_F(FormPropertiesTest, EmbeddedFormStandsInTheMiddleAndIsNoWiderThanDesigned) {
    platform::NSViewController inner("");
    QWidget content;
    content.setMaximumWidth(300);
    content.setMinimumWidth(100);
    auto& page = add<QWidget>("page_");
    static_cast<void>(std::make_unique<QVBoxLayout>(&page).release());
    page.layout()->setContentsMargins({});
    rows_->setContentsMargins({});
    owner_.published = {{"page_", &inner}};
    widgetOf_ = [&](const platform::NSView&) { return &content; };
    bind();
    form_.resize(500, 200);
    show();
    EXPECT_EQ(content.width(), 300);
    EXPECT_NEAR(content.mapTo(&form_, QPoint()).x(), 100, 1);
    EXPECT_EQ(content.height(), 200);

    form_.resize(200, 200);
    QCoreApplication::processEvents();
    EXPECT_GE(content.width(), 195);
    content.setParent(nullptr);
}

TEST_F(FormPropertiesTest, WhatComesInPlaceOfTheSettingsHasTheFocus) {
    platform::NSView chooser;
    chooser.setHidden(true);
    auto& field = add<QLineEdit>("field");
    auto& view = add<QWidget>("chooser_");
    auto rows = std::make_unique<QVBoxLayout>(&view);
    auto button = std::make_unique<QComboBox>();
    button->setObjectName("choice");
    rows->addWidget(button.release());
    static_cast<void>(rows.release());
    view.setProperty("firstFocus", "choice");
    owner_.published = {{"chooser_", &chooser}};
    bind();
    show();
    field.setFocus();
    chooser.setHidden(false);
    EXPECT_EQ(form_.focusWidget()->objectName(), "choice");
}

TEST_F(FormPropertiesTest, PictureIsGreyedWithoutItsSwitch) {
    platform::NSButton button{platform::NSButton::Type::Switch};
    button.setState(1);
    add<QCheckBox>("switch_");
    auto& picture = add<PictogramView>("picture");
    picture.setProperty("isOnWith", "switch_");
    owner_.published = {{"switch_", &button}};
    bind();
    EXPECT_TRUE(picture.isEnabled());
    button.setState(0);
    EXPECT_FALSE(picture.isEnabled());
    button.setState(1);
    EXPECT_TRUE(picture.isEnabled());
}

/// Ten rows, 60 pixels high each.
class RowScrollerTest : public testing::Test {
protected:
    void SetUp() override {
        auto list = std::make_unique<QWidget>();
        list->resize(100, 10 * kRow);
        scroller_.setFrameShape(QFrame::NoFrame);
        scroller_.setWidget(list.release());
        scroller_.setRowHeight(kRow);
        scroller_.resize(200, 200);
        scroller_.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&scroller_));
    }

    void turnWheel(int angle) {
        QWheelEvent turn({50, 50}, scroller_.mapToGlobal(QPoint(50, 50)), {}, {0, angle}, Qt::NoButton, Qt::NoModifier,
                         Qt::NoScrollPhase, false);
        QApplication::sendEvent(scroller_.viewport(), &turn);
    }

    static constexpr int kRow = 60;
    RowScroller scroller_;
    QScrollBar& bar_ = *scroller_.verticalScrollBar();
};

TEST_F(RowScrollerTest, ShowsWholeRowsHoweverHighItIs) {
    for (const int height : {200, 179, 180, 181, 400, 599}) {
        scroller_.resize(200, height);
        QCoreApplication::processEvents();
        EXPECT_EQ(scroller_.viewport()->height(), height / kRow * kRow) << height;
        EXPECT_EQ(bar_.maximum() % kRow, 0) << height;
    }
}

TEST_F(RowScrollerTest, RowThatDoesNotFitIsShownAsFarAsItDoes) {
    scroller_.resize(200, 40);
    QCoreApplication::processEvents();
    EXPECT_EQ(scroller_.viewport()->height(), 40);
}

TEST_F(RowScrollerTest, NotchOfTheWheelIsARow) {
    turnWheel(-120);
    EXPECT_EQ(bar_.value(), kRow);
    turnWheel(-240);
    EXPECT_EQ(bar_.value(), 3 * kRow);
    turnWheel(120);
    EXPECT_EQ(bar_.value(), 2 * kRow);
}

TEST_F(RowScrollerTest, ScrollBarThatIsLetGoComesToRestOnARow) {
    bar_.setSliderDown(true);
    bar_.setSliderPosition(70);
    EXPECT_EQ(bar_.value(), 70);
    bar_.setSliderDown(false);
    EXPECT_EQ(bar_.value(), kRow);
}

class AlertPageTest : public testing::Test {
protected:
    AlertPageTest() {
        page_.setTextFormat(Qt::PlainText);
        page_.setWordWrap(true);
        page_.setText("Nothing is connected.\n\nConnect the cable of the display to this computer, and wait.");
        picture_->setMinimumSize(96, 96);
    }

    AlertPage page_;
    QWidget* picture_ = std::make_unique<QWidget>(&page_).release();
};

TEST_F(AlertPageTest, PictureStandsAboveTheTextInTheMiddle) {
    page_.resize(600, 500);
    page_.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&page_));
    EXPECT_EQ(picture_->size(), QSize(96, 96));
    EXPECT_NEAR(picture_->geometry().center().x(), 300, 1);
    EXPECT_GT(picture_->y(), 0);
    EXPECT_LT(picture_->geometry().bottom(), 300);
}

TEST_F(AlertPageTest, NarrowPageIsHigherAndNoWordIsCut) {
    EXPECT_GT(page_.heightForWidth(200), page_.heightForWidth(600));
    const int narrowest = page_.minimumSizeHint().width();
    QFont bold = page_.font();
    bold.setBold(true);
    EXPECT_GT(narrowest, QFontMetrics(bold).horizontalAdvance("connected."));
    EXPECT_LT(narrowest, page_.sizeHint().width());
}

TEST_F(AlertPageTest, PictureGivesWayToTheWordsWhereThereIsLittleRoom) {
    page_.resize(600, page_.heightForWidth(600));
    page_.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&page_));
    EXPECT_TRUE(picture_->isHidden());
    page_.resize(600, page_.heightForWidth(600) + 200);
    QCoreApplication::processEvents();
    EXPECT_TRUE(picture_->isVisible());
}

TEST_F(AlertPageTest, WhatIsReadOutIsTheWholeText) {
    EXPECT_EQ(page_.text(), "Nothing is connected.\n\nConnect the cable of the display to this computer, and wait.");
}

TEST_F(AlertPageTest, TextWithoutASecondParagraphIsTheTitle) {
    const int two = page_.heightForWidth(600);
    page_.setText("Nothing is connected.");
    EXPECT_LT(page_.heightForWidth(600), two);
}

} // namespace

} // namespace kelvo
