#include "qt/CaptionLabel.h"
#include "qt/PullDown.h"
#include "qt/ToolkitPlatform.h"

#include <QAccessible>
#include <QCheckBox>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvo {

namespace {

using testing::ElementsAre;

/// A controller with the outlets and the action of a gesture row.
class RowStandIn : public platform::NSViewController {
public:
    RowStandIn() : NSViewController("TDGesturesCellView") {}

    [[nodiscard]] std::vector<platform::NSOutlet> outlets() override {
        return {{"clickBtn", &clickBtn},
                {"m_title", &m_title},
                {"m_gestures", &m_gestures},
                {"PopUpBtnCell", &m_gestures.cell()}};
    }
    [[nodiscard]] std::vector<platform::NSNibAction> actions() override {
        return {{"changeAction:", [this](platform::NSControl& sender) { senders.push_back(&sender); }}};
    }

    platform::NSButton clickBtn{platform::NSButton::Type::Switch};
    platform::NSTextField m_title;
    platform::NSPopUpButton m_gestures{true};
    std::vector<platform::NSControl*> senders;
};

/// `text` in a language whose words are a third longer.
std::string aThirdLonger(const std::string& text) { return text + text.substr(0, (text.size() + 2) / 3); }

class GestureRowTest : public testing::Test {
protected:
    void SetUp() override {
        form_ = platform_.nibs.widgetFor(row_.view());
        form_->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(form_));
    }

    template <typename Widget>
    Widget& widget() {
        return *form_->findChild<Widget*>();
    }

    /// As a row gives its pop-up the width of an action's text.
    void showAction(const std::string& text) {
        row_.m_gestures.setTitle(text);
        platform::NSRect frame = row_.m_gestures.frame();
        frame.width = row_.m_gestures.cell().attributedTitleWidth() + 25.0;
        row_.m_gestures.setFrame(frame);
    }

    ToolkitPlatform platform_;
    RowStandIn row_;
    QWidget* form_ = nullptr;
};

TEST_F(GestureRowTest, RowAndPopUpHaveTheFormsFrames) {
    const platform::NSRect row = row_.view().frame();
    const platform::NSRect popUp = row_.m_gestures.frame();
    EXPECT_EQ(row.width, form_->width());
    EXPECT_EQ(row.height, form_->height());
    EXPECT_EQ(popUp.y, row.height - widget<PullDown>().geometry().bottom() - 1);
}

TEST_F(GestureRowTest, PopUpShowsItsActionWholeInLongerLanguagesToo) {
    for (const std::string text : {"Swipe left or right with three fingers", "Swipe in from the right with two fingers",
                                   "Content moves along with the fingers"}) {
        showAction(aThirdLonger(text));
        EXPECT_GE(widget<PullDown>().width(), widget<PullDown>().widthFor(QString::fromStdString(aThirdLonger(text))));
        EXPECT_LE(widget<PullDown>().geometry().right(), form_->rect().right()) << text;
    }
}

TEST_F(GestureRowTest, TitleIsShownWholeInLongerLanguagesToo) {
    row_.m_title.setStringValue(aThirdLonger("Move between full-screen apps"));
    const auto& title = widget<CaptionLabel>();
    EXPECT_LE(title.sizeHint().width(), title.width());
    EXPECT_LE(title.geometry().right(), form_->rect().right());
}

TEST_F(GestureRowTest, RowIsOpaqueSinceAnotherMayLieBeneath) { EXPECT_TRUE(form_->autoFillBackground()); }

TEST_F(GestureRowTest, ClickAnywhereOnTheCheckBoxOrTheTitleSwitches) {
    row_.m_title.setStringValue("Rotate");
    QTest::mouseClick(&widget<QCheckBox>(), Qt::LeftButton, {}, widget<QCheckBox>().rect().center());
    EXPECT_EQ(row_.clickBtn.state(), 1);
    QTest::mouseClick(&widget<CaptionLabel>(), Qt::LeftButton, {}, {10, 20});
    EXPECT_EQ(row_.clickBtn.state(), 0);
    EXPECT_THAT(row_.senders, ElementsAre(&row_.clickBtn, &row_.clickBtn));
}

TEST_F(GestureRowTest, PressThatLeavesTheTitleSwitchesNothing) {
    QTest::mousePress(&widget<CaptionLabel>(), Qt::LeftButton, {}, {10, 20});
    QTest::mouseRelease(&widget<CaptionLabel>(), Qt::LeftButton, {}, {10, 200});
    EXPECT_EQ(row_.clickBtn.state(), 0);
}

TEST_F(GestureRowTest, ChoiceFiresForThePopUp) {
    for (const char* title : {"", "two fingers", "three fingers"}) row_.m_gestures.addItemWithTitle(title);
    row_.m_gestures.selectItemAtIndex(1);
    QTest::keyClick(&widget<PullDown>(), Qt::Key_Down);
    EXPECT_THAT(row_.senders, ElementsAre(&row_.m_gestures));
}

TEST_F(GestureRowTest, CheckBoxAndPopUpAreCalledByTheTitle) {
    platform_.bundle.texts["Gestures.ActionOf"] = "How to make it: %1";
    RowStandIn row;
    row.m_title.setStringValue("Rotate");
    const QWidget& form = *platform_.nibs.widgetFor(row.view());
    const auto nameOf = [](QWidget* named) {
        return QAccessible::queryAccessibleInterface(named)->text(QAccessible::Name).toStdString();
    };
    EXPECT_EQ(nameOf(form.findChild<QCheckBox*>()), "Rotate");
    EXPECT_EQ(nameOf(form.findChild<PullDown*>()), "How to make it: Rotate");

    row.m_title.setStringValue("Scroll");
    EXPECT_EQ(nameOf(form.findChild<QCheckBox*>()), "Scroll");
    EXPECT_EQ(nameOf(form.findChild<PullDown*>()), "How to make it: Scroll");
}

} // namespace

} // namespace kelvo
