#include "qt/PullDown.h"
#include "qt/FormFixture.h"

#include <QAbstractItemView>
#include <QAccessible>

#include <gmock/gmock.h>

namespace kelvo {

namespace {

using platform::NSPopUpButton;
using testing::ElementsAre;
using testing::IsEmpty;

/// A pull-down that can be made deaf.
class DeafablePopUp : public NSPopUpButton {
public:
    DeafablePopUp() : NSPopUpButton(true) {}
    [[nodiscard]] bool opensMenu() const override { return !isDeaf && NSPopUpButton::opensMenu(); }

    bool isDeaf = false;
};

/// A pull-down with an empty first item and two to choose from, the first of which is selected.
class PullDownTest : public FormFixture {
protected:
    void SetUp() override {
        owner_.published = {{"choice_", &model_}, {"choiceCell", &model_.cell()}};
        owner_.selectors = {"choose:"};
        bind();
        for (const char* title : {"", "two fingers", "three fingers"}) model_.addItemWithTitle(title);
        model_.selectItemAtIndex(1);
        model_.setTitle("two fingers");
        show();
    }

    bool isMenuOpen() { return widget_.view()->isVisible(); }

    DeafablePopUp model_;
    PullDown& widget_ = add<PullDown>("choice_", "choose:");
};

TEST_F(PullDownTest, FirstItemIsNotOffered) {
    ASSERT_EQ(widget_.count(), 2);
    EXPECT_EQ(widget_.itemText(0), "two fingers");
    EXPECT_EQ(widget_.itemText(1), "three fingers");
    EXPECT_EQ(widget_.currentIndex(), 0);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&widget_)->text(QAccessible::Value), "two fingers");
}

TEST_F(PullDownTest, ButtonShowsTheTitleWhateverIsSelected) {
    model_.setTitle("another");
    EXPECT_EQ(widget_.title(), "another");
    EXPECT_EQ(widget_.currentIndex(), 0);
}

TEST_F(PullDownTest, FirstItemSelectedIsNoChoice) {
    model_.selectItemAtIndex(0);
    EXPECT_EQ(widget_.currentIndex(), -1);
}

TEST_F(PullDownTest, DownKeyChoosesTheNextAndFires) {
    QTest::keyClick(&widget_, Qt::Key_Down);
    EXPECT_EQ(model_.indexOfSelectedItem(), 2);
    EXPECT_THAT(owner_.fired, ElementsAre("choose:"));
}

TEST_F(PullDownTest, UpKeyStopsAtTheFirstChoice) {
    QTest::keyClick(&widget_, Qt::Key_Up);
    EXPECT_EQ(model_.indexOfSelectedItem(), 1);
    EXPECT_THAT(owner_.fired, IsEmpty());
}

TEST_F(PullDownTest, SpaceKeyOpensTheMenuAndReturnChooses) {
    QTest::keyClick(&widget_, Qt::Key_Space);
    ASSERT_TRUE(isMenuOpen());
    QTest::keyClick(widget_.view(), Qt::Key_Down);
    QTest::keyClick(widget_.view(), Qt::Key_Return);
    EXPECT_EQ(model_.indexOfSelectedItem(), 2);
    EXPECT_THAT(owner_.fired, ElementsAre("choose:"));
}

TEST_F(PullDownTest, ChoosingTheSameAgainFiresAgain) {
    widget_.showPopup();
    QTest::keyClick(widget_.view(), Qt::Key_Return);
    EXPECT_EQ(model_.indexOfSelectedItem(), 1);
    EXPECT_THAT(owner_.fired, ElementsAre("choose:"));
}

TEST_F(PullDownTest, PressOpensTheMenu) {
    QTest::mousePress(&widget_, Qt::LeftButton);
    EXPECT_TRUE(isMenuOpen());
    widget_.hidePopup();
    QTest::mouseRelease(&widget_, Qt::LeftButton);
}

TEST_F(PullDownTest, DeafPullDownTakesNeitherPressesNorKeys) {
    // Nobody is told of this change: the pull-down is asked at each press and key.
    model_.isDeaf = true;
    QTest::mouseClick(&widget_, Qt::LeftButton);
    EXPECT_FALSE(isMenuOpen());
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Down, Qt::Key_F4, Qt::Key_T}) QTest::keyClick(&widget_, key);
    EXPECT_FALSE(isMenuOpen());
    EXPECT_EQ(model_.indexOfSelectedItem(), 1);
    EXPECT_THAT(owner_.fired, IsEmpty());
}

TEST_F(PullDownTest, WithoutBorderAndArrowItTakesNoFocus) {
    model_.cell().setBordered(false);
    model_.cell().setArrow(false);
    EXPECT_EQ(widget_.focusPolicy(), Qt::NoFocus);
}

TEST_F(PullDownTest, WithoutBorderAndArrowItIsTextOnWhateverLiesBeneath) {
    model_.cell().setBordered(false);
    model_.cell().setArrow(false);
    model_.setTitle("");
    const QImage bare = widget_.grab().toImage();
    QImage beneath(bare.size(), bare.format());
    beneath.fill(widget_.palette().color(QPalette::Window));
    EXPECT_EQ(bare, beneath);
}

TEST_F(PullDownTest, TitleWithTooLittleRoomIsSetSmallerAndStillWhole) {
    const QString title = QStringLiteral("|||||||||||||||||||||||||||||||||||||||||||||||||");
    model_.cell().setBordered(false);
    model_.cell().setArrow(false);
    model_.setTitle(title.toStdString());
    const auto columnsOfInk = [&](int width) {
        widget_.setFixedWidth(width);
        const QImage shown = widget_.grab().toImage().convertToFormat(QImage::Format_Grayscale8);
        std::vector<int> columns;
        for (int x = 0; x < shown.width(); ++x) {
            for (int y = 0; y < shown.height(); ++y) {
                if (qGray(shown.pixel(x, y)) < 200 && (columns.empty() || columns.back() != x)) columns.push_back(x);
            }
        }
        return columns;
    };
    const std::vector<int> usual = columnsOfInk(widget_.widthFor(title));
    const int narrow = (widget_.widthFor(title) + widget_.leastWidthFor(title)) / 2;
    const std::vector<int> narrowed = columnsOfInk(narrow);

    ASSERT_FALSE(usual.empty());
    ASSERT_FALSE(narrowed.empty());
    EXPECT_LT(narrowed.back(), narrow - 1);
    EXPECT_LT(narrowed.back() - narrowed.front(), usual.back() - usual.front());
    // Were it cut off or ended in dots, the last stroke would be further from the edge or missing.
    EXPECT_GT(narrowed.back() - narrowed.front(), (usual.back() - usual.front()) / 2);
}

TEST_F(PullDownTest, TitlesWidthAndTheProgramsMarginShowTheTitleWhole) {
    model_.setTitle("Scroll left or right with two fingers");
    const double width = model_.cell().attributedTitleWidth();
    EXPECT_GE(width, widget_.fontMetrics().horizontalAdvance("Scroll left or right with two fingers"));
    EXPECT_GE(width + 25.0, widget_.widthFor("Scroll left or right with two fingers"));
}

TEST_F(PullDownTest, TitleIsMeasuredInTheWidgetsFont) {
    const double before = model_.cell().attributedTitleWidth();
    QFont font = widget_.font();
    font.setPointSizeF(font.pointSizeF() * 2);
    widget_.setFont(font);
    EXPECT_GT(model_.cell().attributedTitleWidth(), before * 1.5);
}

TEST_F(PullDownTest, MenuIsAsWideAsItsWidestChoice) {
    widget_.setFixedWidth(60);
    model_.addItemWithTitle("a choice that is much wider than the button");
    widget_.showPopup();
    EXPECT_GE(widget_.view()->viewport()->width(),
              widget_.fontMetrics().horizontalAdvance("a choice that is much wider than the button"));
    widget_.hidePopup();
}

TEST_F(PullDownTest, ChoicesAreHighEnoughToTouch) {
    widget_.showPopup();
    EXPECT_GE(widget_.view()->visualRect(widget_.model()->index(0, 0)).height(), 40);
    widget_.hidePopup();
}

TEST_F(PullDownTest, TitleThatNobodyShowsAnyMoreHasNoWidth) {
    { const std::unique_ptr<PullDown> gone(&widget_); }
    EXPECT_EQ(model_.cell().attributedTitleWidth(), 0.0);
}

class PullDownFormTest : public FormFixture {};

TEST_F(PullDownFormTest, PlainPopUpCannotShowAPullDownNorThePullDownAPopUp) {
    NSPopUpButton popUp;
    NSPopUpButton pullDown(true);
    add<QComboBox>("down_");
    add<PullDown>("up_");
    owner_.published = {{"down_", &pullDown}, {"up_", &popUp}};
    EXPECT_EQ(misfit(), "form TestForm does not fit its owner: widget down_ cannot show its outlet; "
                        "widget up_ cannot show its outlet");
}

TEST_F(PullDownFormTest, CellWithoutAWidgetForItsPopUpIsAnErrorThatNamesIt) {
    NSPopUpButton pullDown(true);
    owner_.published = {{"PopUpBtnCell", &pullDown.cell()}};
    EXPECT_EQ(misfit(), "form TestForm does not fit its owner: outlet PopUpBtnCell has no widget");
}

TEST_F(PullDownFormTest, CellHasNoWidgetOfItsOwn) {
    NSPopUpButton pullDown(true);
    add<PullDown>("PopUpBtnCell");
    owner_.published = {{"PopUpBtnCell", &pullDown.cell()}};
    EXPECT_THAT(misfit(), testing::HasSubstr("widget PopUpBtnCell cannot show its outlet"));
}

} // namespace

} // namespace kelvo
