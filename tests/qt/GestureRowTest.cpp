#include "qt/CaptionLabel.h"
#include "qt/PictogramView.h"
#include "qt/PullDown.h"
#include "qt/ToolkitPlatform.h"

#include <QAbstractAnimation>
#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QProxyStyle>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <utility>

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
    void SetUp() override { show(row_); }

    void show(RowStandIn& row) {
        form_ = platform_.nibs.widgetFor(row.view());
        form_->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(form_));
    }

    template <typename Widget>
    Widget& widget() {
        return *form_->findChild<Widget*>();
    }

    /// As a row gives its pop-up the width of an action's text.
    static void showAction(RowStandIn& row, const std::string& text) {
        row.m_gestures.setTitle(text);
        platform::NSRect frame = row.m_gestures.frame();
        frame.width = row.m_gestures.cell().attributedTitleWidth() + 25.0;
        row.m_gestures.setFrame(frame);
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
    const std::string text = aThirdLonger("Swipe in from the right with two fingers");
    platform_.bundle.texts["SwipeLeftFromTheRightEdgeWithTwoFingers"] = text;
    RowStandIn row;
    show(row);
    showAction(row, text);
    EXPECT_GE(widget<PullDown>().width(), widget<PullDown>().widthFor(QString::fromStdString(text)));
    EXPECT_LE(widget<PullDown>().geometry().right(), form_->rect().right());
}

TEST_F(GestureRowTest, TitleIsShownWholeInLongerLanguagesToo) {
    const std::string text = aThirdLonger("Move between full-screen apps");
    platform_.bundle.texts["FullScreenApps"] = text;
    RowStandIn row;
    show(row);
    row.m_title.setStringValue(text);
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

/// A style that moves nothing.
class StillStyle : public QProxyStyle {
public:
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returned) const override {
        if (hint == SH_Widget_Animation_Duration) return 0;
        return QProxyStyle::styleHint(hint, option, widget, returned);
    }
};

/// Counts the timers that go off in the whole program.
class TimerCount : public QObject {
public:
    TimerCount() { qApp->installEventFilter(this); }
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Timer) ++count;
        return QObject::eventFilter(watched, event);
    }
    int count = 0;
};

class GestureRowPictureTest : public GestureRowTest {
protected:
    void SetUp() override {
        for (const char* name : {"SwipeUpWithThreeFingers", "SwipeUpWithFourFingers"}) {
            platform_.bundle.resourcePaths.push_back(KELVO_RESOURCES "/pictograms/" + std::string(name) + ".svg");
        }
        GestureRowTest::SetUp();
        for (const char* title : {"", "text of SwipeUpWithThreeFingers", "text of SwipeUpWithFourFingers"}) {
            row_.m_gestures.addItemWithTitle(title);
        }
        row_.m_gestures.selectItemAtIndex(1);
        row_.clickBtn.setState(1);
        // A window gives its first widget the focus, and the pointer may be anywhere.
        form_->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(form_));
        if (QWidget* focused = form_->focusWidget()) focused->clearFocus();
        pointElsewhere();
        ASSERT_TRUE(waitUntilStill());
    }

    PictogramView& picture() { return widget<PictogramView>(); }
    QAbstractAnimation& animation(const char* name) { return *picture().findChild<QAbstractAnimation*>(name); }
    bool isMoving() { return animation("motion").state() == QAbstractAnimation::Running; }

    void pointAtRow() {
        QEnterEvent enter({10.0, 10.0}, {10.0, 10.0}, {10.0, 10.0});
        QCoreApplication::sendEvent(form_, &enter);
    }
    void pointElsewhere() {
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(form_, &leave);
    }
    /// As when as much time has gone by.
    void finish(const char* name) {
        QAbstractAnimation& finished = animation(name);
        finished.setCurrentTime(finished.totalDuration());
    }
    bool waitUntilStill() {
        return QTest::qWaitFor([this] { return animation("growth").state() == QAbstractAnimation::Stopped; });
    }
    static int timersWhileIdle() {
        QTest::qWait(50); // What has ended is put away by the main loop.
        const TimerCount timers;
        QTest::qWait(200);
        return timers.count;
    }
    QImage shown() { return picture().grab().toImage(); }
    /// How wide and high what is drawn of a picture is.
    int extent() {
        const QImage image = shown();
        const QColor window = image.pixelColor(0, 0);
        QRect drawn;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixelColor(x, y) != window) drawn |= QRect(x, y, 1, 1);
            }
        }
        return qMax(drawn.width(), drawn.height());
    }
};

TEST_F(GestureRowPictureTest, PictureIsThatOfTheChosenAction) {
    EXPECT_EQ(picture().pictogram(), "SwipeUpWithThreeFingers");
    const QImage three = shown();
    row_.m_gestures.selectItemAtIndex(2);
    EXPECT_EQ(picture().pictogram(), "SwipeUpWithFourFingers");
    EXPECT_NE(shown(), three);
}

TEST_F(GestureRowPictureTest, ActionWithoutAPictureHasNone) {
    row_.m_gestures.selectItemAtIndex(0);
    EXPECT_EQ(picture().pictogram(), "");
    EXPECT_EQ(extent(), 0);
    row_.m_gestures.addItemWithTitle("Wave");
    row_.m_gestures.selectItemAtIndex(3);
    pointAtRow();
    EXPECT_EQ(extent(), 0);
}

TEST_F(GestureRowPictureTest, PictureIsGreyAndStillWhenTheRowIsOffAlsoWhereTheActionIsNot) {
    const QImage enabled = shown();
    row_.clickBtn.setState(0);
    ASSERT_TRUE(row_.m_gestures.isEnabled());
    EXPECT_NE(shown(), enabled);
    pointAtRow();
    EXPECT_FALSE(isMoving());
    row_.clickBtn.setState(1);
    pointElsewhere();
    ASSERT_TRUE(waitUntilStill());
    EXPECT_EQ(shown(), enabled);
}

TEST_F(GestureRowPictureTest, PictureStopsWhenTheRowGoesOff) {
    pointAtRow();
    ASSERT_TRUE(isMoving());
    row_.clickBtn.setState(0);
    EXPECT_FALSE(isMoving());
}

TEST_F(GestureRowPictureTest, PictureGrowsAndMovesWhileTheRowIsPointedAt) {
    const int usual = extent();
    EXPECT_FALSE(isMoving());
    pointAtRow();
    EXPECT_TRUE(isMoving());
    finish("growth");
    finish("motion");
    EXPECT_GT(extent(), usual);
    pointElsewhere();
    EXPECT_FALSE(isMoving());
    ASSERT_TRUE(waitUntilStill());
    EXPECT_EQ(extent(), usual);
}

TEST_F(GestureRowPictureTest, FingersAreElsewhereInTheMiddleOfTheMotion) {
    pointAtRow();
    finish("growth");
    animation("motion").pause();
    animation("motion").setCurrentTime(0);
    const QImage before = shown();
    animation("motion").resume();
    animation("motion").setCurrentTime(animation("motion").duration() / 4);
    EXPECT_NE(shown(), before);
}

TEST_F(GestureRowPictureTest, KeyboardFocusInTheRowCountsAsPointing) {
    widget<PullDown>().setFocus();
    EXPECT_TRUE(isMoving());
    widget<QCheckBox>().setFocus();
    EXPECT_TRUE(isMoving());
    widget<QCheckBox>().clearFocus();
    EXPECT_FALSE(isMoving());
}

TEST_F(GestureRowPictureTest, PictureStaysAwakeAsLongAsOneOfPointerAndFocusIsThere) {
    pointAtRow();
    widget<PullDown>().setFocus();
    pointElsewhere();
    EXPECT_TRUE(picture().isAwake());
    widget<PullDown>().clearFocus();
    EXPECT_FALSE(picture().isAwake());
}

TEST_F(GestureRowPictureTest, MotionEndsByItselfWithinFiveSecondsAndLeavesNoTimer) {
    pointAtRow();
    EXPECT_LE(animation("motion").totalDuration(), 5000);
    finish("growth");
    finish("motion");
    EXPECT_FALSE(isMoving());
    EXPECT_EQ(timersWhileIdle(), 0);
}

TEST_F(GestureRowPictureTest, PointerThatPassesLeavesNoTimer) {
    pointAtRow();
    pointElsewhere();
    EXPECT_TRUE(waitUntilStill());
    EXPECT_EQ(timersWhileIdle(), 0);
    pointAtRow();
    ASSERT_TRUE(QTest::qWaitFor([this] { return animation("growth").currentTime() > 0; }));
    pointElsewhere();
    EXPECT_TRUE(waitUntilStill());
    EXPECT_EQ(timersWhileIdle(), 0);
}

TEST_F(GestureRowPictureTest, AnotherChoiceMovesOnceMore) {
    pointAtRow();
    finish("growth");
    finish("motion");
    row_.m_gestures.selectItemAtIndex(2);
    EXPECT_TRUE(isMoving());
    EXPECT_EQ(animation("growth").state(), QAbstractAnimation::Stopped);
}

TEST_F(GestureRowPictureTest, RowThatIsHiddenStops) {
    pointAtRow();
    form_->hide();
    EXPECT_FALSE(isMoving());
    EXPECT_FALSE(picture().isAwake());
}

TEST_F(GestureRowPictureTest, PictureIsDrawnAnewInTheColoursOfAnotherTheme) {
    const auto colours = [this] {
        const QImage image = picture().grab().toImage();
        std::set<QRgb> found;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) found.insert(image.pixel(x, y));
        }
        return found;
    };
    QPalette dark = QApplication::palette();
    for (const auto& [role, colour] :
         {std::pair(QPalette::Window, 0x202326U), std::pair(QPalette::WindowText, 0xfcfcfcU),
          std::pair(QPalette::Highlight, 0x3daee9U)}) {
        dark.setColor(role, QColor(colour));
    }
    const QRgb ink = dark.color(QPalette::WindowText).rgb();
    const QRgb fingers = dark.color(QPalette::Highlight).rgb();
    ASSERT_FALSE(colours().contains(ink));
    const QPalette before = QApplication::palette();
    QApplication::setPalette(dark);
    QCoreApplication::processEvents();
    const std::set<QRgb> found = colours();
    QApplication::setPalette(before);
    EXPECT_TRUE(found.contains(ink));
    EXPECT_TRUE(found.contains(fingers));
    EXPECT_TRUE(found.contains(dark.color(QPalette::Window).rgb()));
}

TEST_F(GestureRowPictureTest, PictureGrowsButStaysStillWhereTheStyleMovesNothing) {
    const int usual = extent();
    StillStyle style;
    picture().setStyle(&style);
    pointAtRow();
    EXPECT_FALSE(isMoving());
    EXPECT_EQ(animation("growth").state(), QAbstractAnimation::Stopped);
    EXPECT_GT(extent(), usual);
    pointElsewhere();
    EXPECT_EQ(extent(), usual);
}

TEST_F(GestureRowPictureTest, DirectionIsTheSameFromRightToLeft) {
    const QImage before = shown();
    form_->setLayoutDirection(Qt::RightToLeft);
    EXPECT_EQ(shown(), before);
}

TEST_F(GestureRowPictureTest, AssistiveTechnologyPassesThePictureOver) {
    EXPECT_TRUE(QAccessible::queryAccessibleInterface(&picture())->state().invisible);
}

} // namespace

} // namespace kelvo
