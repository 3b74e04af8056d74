#include "qt/FingerScrolling.h"

#include "qt/CanvasView.h"
#include "qt/TouchDevice.h"
#include "qt/TouchSlider.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QScroller>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include <memory>

namespace kelvo {

namespace {

constexpr QSize kRow(280, 60);
constexpr int kRows = 40;
/// All the others are buttons.
constexpr int kCanvasRow = 2;
constexpr int kMenuRow = 3;
constexpr int kSliderRow = 4;
constexpr int kFieldRow = 5;
constexpr int kLowButtonRow = 6;

/// A long page of buttons and other controls, in a window that shows a few of them.
class FingerScrollingTest : public testing::Test {
protected:
    void SetUp() override {
        auto page = std::make_unique<QWidget>();
        auto rows = std::make_unique<QVBoxLayout>(page.get());
        rows->setContentsMargins({});
        rows->setSpacing(0);
        for (int row = 0; row < kRows; ++row) {
            auto widget = rowNumber(row);
            widget->setFixedSize(kRow);
            rows->addWidget(widget.release());
        }
        static_cast<void>(rows.release());
        area_.setWidget(page.release());
        area_.resize(300, 400);
        area_.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&area_));
        ASSERT_GT(bar().maximum(), 1000);
    }

    std::unique_ptr<QWidget> rowNumber(int row) {
        if (row == kMenuRow) {
            auto menu = std::make_unique<QComboBox>();
            menu->addItems({"one", "two", "three"});
            menu_ = menu.get();
            return menu;
        }
        if (row == kSliderRow) {
            auto slider = std::make_unique<TouchSlider>(Qt::Horizontal);
            slider_ = slider.get();
            return slider;
        }
        if (row == kCanvasRow) {
            auto canvas = std::make_unique<CanvasView>();
            canvas_ = canvas.get();
            return canvas;
        }
        if (row == kFieldRow) {
            auto field = std::make_unique<QLineEdit>();
            field_ = field.get();
            return field;
        }
        auto button = std::make_unique<QPushButton>();
        QObject::connect(button.get(), &QPushButton::pressed, button.get(), [this] { ++presses_; });
        QObject::connect(button.get(), &QPushButton::clicked, button.get(), [this] { ++clicks_; });
        return button;
    }

    [[nodiscard]] QScrollBar& bar() const { return *area_.verticalScrollBar(); }

    static QPoint inRow(int row) { return {100, row * kRow.height() + kRow.height() / 2}; }

    QScrollArea area_;
    QWidget* viewport_ = area_.viewport();
    FingerScrolling fingers_{[this](const QWidget& widget) { return isOurs_ && area_.isAncestorOf(&widget); }};
    Finger finger_;
    bool isOurs_ = true;
    QComboBox* menu_ = nullptr;
    QSlider* slider_ = nullptr;
    CanvasView* canvas_ = nullptr;
    QLineEdit* field_ = nullptr;
    int presses_ = 0;
    int clicks_ = 0;
};

TEST_F(FingerScrollingTest, PageFollowsTheFinger) {
    finger_.push(*viewport_, {100, 390}, {0, -300});
    // What decides that the finger scrolls is not scrolled.
    EXPECT_TRUE(QTest::qWaitFor([&] { return bar().value() >= 260; })) << bar().value();
    EXPECT_LE(bar().value(), 300);
    finger_.lift(*viewport_, {100, 90});
}

TEST_F(FingerScrollingTest, FlickGoesOnWhenTheFingerIsUp) {
    finger_.flick(*viewport_, {100, 390}, {0, -300});
    const int whenLifted = bar().value();
    EXPECT_TRUE(QTest::qWaitFor([&] { return bar().value() > whenLifted + 50; }));
}

TEST_F(FingerScrollingTest, FingerStopsAFlickAndPressesNothing) {
    finger_.flick(*viewport_, {100, 390}, {0, -300});
    ASSERT_EQ(QScroller::scroller(viewport_)->state(), QScroller::Scrolling);
    finger_.tap(*viewport_, {100, 200});
    EXPECT_NE(QScroller::scroller(viewport_)->state(), QScroller::Scrolling);
    EXPECT_EQ(presses_, 0);
    EXPECT_TRUE(QTest::qWaitFor([] { return QScroller::activeScrollers().isEmpty(); }));
    finger_.tap(*viewport_, {100, 200});
    EXPECT_EQ(clicks_, 1);
}

TEST_F(FingerScrollingTest, PushPressesNothingThatItBeginsOn) {
    for (const int row : {kLowButtonRow, kMenuRow, kSliderRow, kFieldRow}) {
        SCOPED_TRACE(row);
        bar().setValue(0);
        finger_.push(*viewport_, inRow(row), {0, -200});
        EXPECT_TRUE(QTest::qWaitFor([&] { return bar().value() >= 150; })) << bar().value();
        finger_.lift(*viewport_, inRow(row) - QPoint(0, 200));
        EXPECT_TRUE(QTest::qWaitFor([] { return QScroller::activeScrollers().isEmpty(); }, 20000));
    }
    EXPECT_EQ(presses_, 0);
    EXPECT_EQ(slider_->value(), 0);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    EXPECT_NE(area_.focusWidget(), field_);
}

TEST_F(FingerScrollingTest, TapPresses) {
    finger_.tap(*viewport_, inRow(0));
    EXPECT_EQ(presses_, 1);
    EXPECT_EQ(clicks_, 1);
    finger_.tap(*viewport_, inRow(kFieldRow));
    EXPECT_EQ(area_.focusWidget(), field_);
    EXPECT_EQ(bar().value(), 0);
}

TEST_F(FingerScrollingTest, FingerMayTrembleInATap) {
    finger_.press(*viewport_, inRow(0));
    finger_.moveTo(*viewport_, inRow(0) + QPoint(2, 3));
    finger_.lift(*viewport_, inRow(0) + QPoint(2, 3));
    EXPECT_EQ(clicks_, 1);
    EXPECT_EQ(bar().value(), 0);
}

TEST_F(FingerScrollingTest, TapOpensAMenuThatStaysOpenAndOneInItChooses) {
    finger_.tap(*viewport_, inRow(kMenuRow));
    QWidget* const popup = QApplication::activePopupWidget();
    ASSERT_NE(popup, nullptr);
    auto* const list = popup->findChild<QListView*>();
    ASSERT_NE(list, nullptr);
    // The toolkit takes what comes too soon for the end of the tap that opened the menu.
    QTest::qWait(QApplication::doubleClickInterval() + 1);
    ASSERT_EQ(QApplication::activePopupWidget(), popup);
    finger_.tap(*list->viewport(), list->visualRect(list->model()->index(2, 0)).center());
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    EXPECT_EQ(menu_->currentIndex(), 2);
}

TEST_F(FingerScrollingTest, FingerDragsASliderAlongAndDoesNotScroll) {
    finger_.push(*viewport_, inRow(kSliderRow), {80, 0});
    finger_.lift(*viewport_, inRow(kSliderRow) + QPoint(80, 0));
    EXPECT_NEAR(slider_->value(), 66, 6);
    EXPECT_EQ(bar().value(), 0);
}

TEST_F(FingerScrollingTest, AreaThatMeasuresHearsOfTheFingerAtOnce) {
    int presses = 0;
    QObject::connect(canvas_, &CanvasView::pressed, canvas_, [&] { ++presses; });
    finger_.press(*viewport_, inRow(kCanvasRow));
    EXPECT_EQ(presses, 1);
    finger_.lift(*viewport_, inRow(kCanvasRow));
}

TEST_F(FingerScrollingTest, PageThatFitsHasNothingToWaitFor) {
    area_.setWidgetResizable(false);
    area_.resize(300, kRows * kRow.height() + 10);
    QCoreApplication::processEvents();
    ASSERT_EQ(bar().maximum(), 0);
    finger_.press(*viewport_, inRow(0));
    EXPECT_EQ(presses_, 1);
    finger_.lift(*viewport_, inRow(0));
}

TEST_F(FingerScrollingTest, WhatIsNotOursStaysAsItIs) {
    isOurs_ = false;
    finger_.press(*viewport_, inRow(0));
    EXPECT_EQ(presses_, 1);
    finger_.lift(*viewport_, inRow(0));
    EXPECT_EQ(bar().value(), 0);
}

TEST_F(FingerScrollingTest, MousePressesAtOnceAndDoesNotScroll) {
    QWidget& button = *area_.widget()->childAt(inRow(0));
    QTest::mousePress(&button, Qt::LeftButton);
    EXPECT_EQ(presses_, 1);
    QTest::mouseMove(&button, {100, -100});
    QTest::mouseRelease(&button, Qt::LeftButton, {}, {100, -100});
    EXPECT_EQ(bar().value(), 0);
}

TEST_F(FingerScrollingTest, WidgetMayGoWhileTheFingerIsOnIt) {
    QWidget* const button = area_.widget()->childAt(inRow(0));
    finger_.press(*viewport_, inRow(0));
    delete button;
    finger_.lift(*viewport_, inRow(0));
    EXPECT_EQ(clicks_, 0);
    finger_.push(*viewport_, {100, 390}, {0, -300});
    EXPECT_TRUE(QTest::qWaitFor([&] { return bar().value() >= 260; })) << bar().value();
    finger_.lift(*viewport_, {100, 90});
}

} // namespace

} // namespace kelvo
