#include "qt/FormFixture.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QScrollArea>
#include <QScrollBar>

#include <gmock/gmock.h>

#include <map>

namespace kelvo {

namespace {

using platform::NSRect;
using platform::NSView;
using testing::ElementsAre;
using testing::IsEmpty;

/// Counts what happens to a widget that moves it, shows it, or puts it elsewhere.
class Disturbances : public QObject {
public:
    explicit Disturbances(QWidget& watched) { watched.installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override {
        switch (event->type()) {
        case QEvent::Move:
        case QEvent::Resize:
        case QEvent::Show:
        case QEvent::Hide:
        case QEvent::ParentChange:
        case QEvent::ZOrderChange:
            ++count;
            break;
        default:
            break;
        }
        return false;
    }

    int count = 0;
};

/// What the program has changed is shown by the time that it has done with it.
void letProgramEnd() { QCoreApplication::sendPostedEvents(); }

/// An area of 400 by 300 in a scroll area between two fields. Its rows are views whose widget has a check box.
class SubviewsTest : public FormFixture {
protected:
    struct Row {
        std::shared_ptr<NSView> view = std::make_shared<NSView>();
        std::unique_ptr<QWidget> widget = std::make_unique<QWidget>();
        QCheckBox* box = std::make_unique<QCheckBox>(widget.get()).release();
    };

    void SetUp() override {
        owner_.published = {{"area_", &model_}};
        widgetOf_ = [this](const NSView& view) {
            const auto found = widgets_.find(&view);
            return found == widgets_.end() ? nullptr : found->second;
        };
        bind();
        form_.resize(500, 200);
        show();
        form_.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&form_));
    }

    void TearDown() override {
        // The rows own their widgets, which must leave the area before it goes.
        for (Row& row : rowsInOrder_) row.widget->setParent(nullptr);
        static_cast<void>(scroller_.takeWidget());
        area_.setParent(nullptr);
    }

    QScrollArea& addScroller() {
        auto& scroller = add<QScrollArea>("");
        area_.setObjectName("area_");
        area_.resize(400, 300);
        scroller.setFocusPolicy(Qt::NoFocus);
        scroller.setWidget(&area_);
        return scroller;
    }

    Row& put(NSRect frame) {
        Row& row = rowsInOrder_.emplace_back();
        widgets_[row.view.get()] = row.widget.get();
        row.view->setFrame(frame);
        model_.addSubview(row.view);
        return row;
    }

    /// The widgets that the Tab key leads to from the field before the area, in order, up to the field behind it.
    std::vector<QWidget*> tabStops() {
        std::vector<QWidget*> stops;
        before_.setFocus();
        while (QApplication::focusWidget() != &behind_ && stops.size() < 100) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            stops.push_back(QApplication::focusWidget());
        }
        stops.pop_back();
        return stops;
    }

    QWidget area_;
    NSView model_;
    QLineEdit& before_ = add<QLineEdit>("before");
    QScrollArea& scroller_ = addScroller();
    QLineEdit& behind_ = add<QLineEdit>("behind");
    std::list<Row> rowsInOrder_;
    std::map<const NSView*, QWidget*> widgets_;
};

TEST_F(SubviewsTest, AreasFrameComesFromTheForm) { EXPECT_EQ(model_.frame(), (NSRect{0.0, 0.0, 400.0, 300.0})); }

TEST_F(SubviewsTest, RowStandsWhereItsFrameSaysFromTheTop) {
    const Row& first = put({10.0, 270.0, 200.0, 30.0});
    const Row& second = put({210.0, 240.0, 180.0, 30.0});
    letProgramEnd();
    EXPECT_EQ(first.widget->parentWidget(), &area_);
    EXPECT_EQ(first.widget->geometry(), QRect(10, 0, 200, 30));
    EXPECT_EQ(second.widget->geometry(), QRect(210, 30, 180, 30));
    EXPECT_TRUE(first.widget->isVisible());
}

TEST_F(SubviewsTest, RowFollowsItsFrame) {
    const Row& row = put({10.0, 270.0, 200.0, 30.0});
    row.view->setFrame({20.0, 200.0, 210.0, 40.0});
    letProgramEnd();
    EXPECT_EQ(row.widget->geometry(), QRect(20, 60, 210, 40));
}

TEST_F(SubviewsTest, RowsKeepTheirDistanceFromTheTopWhenTheAreaGrows) {
    const Row& row = put({10.0, 270.0, 200.0, 30.0});
    model_.setFrame({0.0, 0.0, 400.0, 350.0});
    letProgramEnd();
    EXPECT_EQ(row.widget->geometry(), QRect(10, 50, 200, 30));
}

TEST_F(SubviewsTest, RowsBelowTheBottomMakeTheAreaTallerAndScroll) {
    put({10.0, -60.0, 200.0, 30.0});
    letProgramEnd();
    EXPECT_EQ(area_.size(), QSize(400, 360));
    EXPECT_GT(scroller_.verticalScrollBar()->maximum(), 0);
    EXPECT_EQ(model_.frame().height, 300.0);
}

TEST_F(SubviewsTest, AreaShrinksAgainWhenTheyGo) {
    const Row& row = put({10.0, -60.0, 500.0, 30.0});
    letProgramEnd();
    row.view->removeFromSuperview();
    letProgramEnd();
    EXPECT_EQ(area_.size(), QSize(400, 300));
}

TEST_F(SubviewsTest, RowThatIsTakenOutLeavesTheArea) {
    const Row& row = put({10.0, 270.0, 200.0, 30.0});
    letProgramEnd();
    row.view->removeFromSuperview();
    letProgramEnd();
    EXPECT_EQ(row.widget->parentWidget(), nullptr);
    EXPECT_FALSE(row.widget->isVisible());
}

TEST_F(SubviewsTest, ViewWithoutAWidgetIsNotShown) {
    const auto bare = std::make_shared<NSView>();
    model_.addSubview(bare);
    const Row& row = put({10.0, 270.0, 200.0, 30.0});
    letProgramEnd();
    EXPECT_EQ(row.widget->geometry(), QRect(10, 0, 200, 30));
    bare->removeFromSuperview();
    letProgramEnd();
    EXPECT_TRUE(row.widget->isVisible());
}

TEST_F(SubviewsTest, ComingGoingAndMovingOfOneRowLeavesTheOthersAlone) {
    const Row& first = put({10.0, 270.0, 200.0, 30.0});
    const Row& middle = put({10.0, 240.0, 200.0, 30.0});
    const Row& last = put({10.0, 210.0, 200.0, 30.0});
    letProgramEnd();
    const Disturbances ofFirst(*first.widget);
    const Disturbances ofLast(*last.widget);

    put({10.0, 180.0, 200.0, 30.0});
    letProgramEnd();
    middle.view->setFrame({10.0, 240.0, 220.0, 30.0});
    letProgramEnd();
    middle.view->removeFromSuperview();
    letProgramEnd();

    EXPECT_EQ(ofFirst.count, 0);
    EXPECT_EQ(ofLast.count, 0);
}

TEST_F(SubviewsTest, OfRowsAtOnePlaceOnlyTheFrontOneIsSeenAndReached) {
    const Row& older = put({10.0, 270.0, 270.0, 30.0});
    const Row& newer = put({10.0, 270.0, 200.0, 30.0});
    letProgramEnd();
    EXPECT_FALSE(older.widget->isVisible());
    EXPECT_TRUE(newer.widget->isVisible());
    EXPECT_THAT(tabStops(), ElementsAre(newer.box));

    newer.view->removeFromSuperview();
    letProgramEnd();
    EXPECT_TRUE(older.widget->isVisible());
}

TEST_F(SubviewsTest, HiddenRowIsNotShownByComingOrMoving) {
    Row& row = put({10.0, 270.0, 200.0, 30.0});
    row.view->setHidden(true);
    letProgramEnd();
    EXPECT_FALSE(row.widget->isVisible());
    row.view->setFrame({10.0, 200.0, 200.0, 30.0});
    letProgramEnd();
    EXPECT_FALSE(row.widget->isVisible());
}

TEST_F(SubviewsTest, OverlappingRowThatCameLaterIsInFront) {
    put({10.0, 270.0, 200.0, 30.0});
    const Row& newer = put({50.0, 260.0, 200.0, 30.0});
    letProgramEnd();
    EXPECT_EQ(area_.childAt(60, 20)->parentWidget() == newer.widget.get() ||
                  area_.childAt(60, 20) == newer.widget.get(),
              true);
}

TEST_F(SubviewsTest, TabKeyGoesThroughTheRowsInTheirOrderAndOn) {
    const Row& first = put({10.0, 270.0, 200.0, 30.0});
    const Row& second = put({210.0, 270.0, 180.0, 30.0});
    const Row& third = put({10.0, 240.0, 200.0, 30.0});
    letProgramEnd();
    EXPECT_THAT(tabStops(), ElementsAre(first.box, second.box, third.box));

    second.view->removeFromSuperview();
    const Row& fourth = put({10.0, 210.0, 200.0, 30.0});
    letProgramEnd();
    EXPECT_THAT(tabStops(), ElementsAre(first.box, third.box, fourth.box));
}

TEST_F(SubviewsTest, RowsThatReplaceAllOthersAreReachedAtTheSamePlace) {
    put({10.0, 270.0, 200.0, 30.0}).view->removeFromSuperview();
    const Row& row = put({10.0, 270.0, 200.0, 30.0});
    letProgramEnd();
    EXPECT_THAT(tabStops(), ElementsAre(row.box));
}

TEST_F(SubviewsTest, ColumnsStandBelowEachOtherWhereTheyDoNotFitSideBySide) {
    const Row& first = put({10.0, 270.0, 200.0, 30.0});
    const Row& below = put({10.0, 220.0, 200.0, 50.0});
    const Row& beside = put({210.0, 270.0, 220.0, 30.0});
    letProgramEnd();
    EXPECT_EQ(beside.widget->geometry(), QRect(210, 0, 220, 30));

    form_.resize(400, 200);
    QCoreApplication::processEvents();
    EXPECT_EQ(first.widget->geometry(), QRect(10, 0, 200, 30));
    EXPECT_EQ(below.widget->geometry(), QRect(10, 30, 200, 50));
    EXPECT_EQ(beside.widget->geometry(), QRect(10, 80, 220, 30));
    EXPECT_EQ(scroller_.horizontalScrollBar()->maximum(), 0);
    const Row& last = put({210.0, 240.0, 180.0, 30.0});
    letProgramEnd();
    EXPECT_EQ(last.widget->geometry(), QRect(10, 110, 180, 30));
    const Row& third = put({10.0, 190.0, 200.0, 30.0});
    letProgramEnd();
    EXPECT_EQ(third.widget->geometry(), QRect(10, 80, 200, 30));
    EXPECT_EQ(beside.widget->geometry(), QRect(10, 110, 220, 30));

    third.view->removeFromSuperview();
    letProgramEnd();
    EXPECT_EQ(beside.widget->geometry(), QRect(10, 80, 220, 30));
    form_.resize(500, 200);
    QCoreApplication::processEvents();
    EXPECT_EQ(beside.widget->geometry(), QRect(210, 0, 220, 30));
    EXPECT_EQ(area_.width(), 430);
}

TEST_F(SubviewsTest, RowThatIsWiderThanTheAreaGetsWhatThereIsDownToItsLeast) {
    const Row& row = put({10.0, 270.0, 800.0, 30.0});
    const Row& demanding = put({10.0, 240.0, 800.0, 30.0});
    demanding.widget->setMinimumWidth(700);
    letProgramEnd();
    EXPECT_EQ(row.widget->geometry(), QRect(10, 0, scroller_.viewport()->width() - 10, 30));
    EXPECT_EQ(demanding.widget->width(), 700);

    form_.resize(1000, 200);
    QCoreApplication::processEvents();
    EXPECT_EQ(row.widget->geometry(), QRect(10, 0, 800, 30));
    EXPECT_EQ(demanding.widget->width(), 800);
}

TEST_F(SubviewsTest, HoweverManyRowsComeChangeAndGoAtOnceTheAreaGrowsAndShrinksOnce) {
    constexpr int kRows = 200;
    const Disturbances ofArea(area_);
    for (int row = 0; row < kRows; ++row) put({10.0, 270.0 - 30.0 * row, 200.0, 30.0});
    for (const Row& row : rowsInOrder_) row.view->setNeedsDisplay(true);
    letProgramEnd();
    EXPECT_EQ(area_.height(), 30 * kRows);
    EXPECT_EQ(ofArea.count, 1);

    for (const Row& row : rowsInOrder_) row.view->removeFromSuperview();
    letProgramEnd();
    EXPECT_EQ(area_.height(), 300);
    EXPECT_EQ(ofArea.count, 2);
}

TEST_F(SubviewsTest, RowsOfColumnsThatStandBelowEachOtherArePutInPlaceOnceEach) {
    put({210.0, 270.0, 400.0, 30.0});
    letProgramEnd();
    std::list<Disturbances> ofRows;
    for (int row = 0; row < 100; ++row) {
        for (const double left : {10.0, 210.0}) {
            ofRows.emplace_back(*put({left, 240.0 - 30.0 * row, 180.0, 30.0}).widget);
        }
    }
    letProgramEnd();
    EXPECT_EQ(rowsInOrder_.back().widget->geometry(), QRect(10, 30 * (101 + 100), 180, 30));
    // It is moved to its place, takes its size and is shown.
    for (const Disturbances& each : ofRows) EXPECT_LE(each.count, 3);
}

TEST_F(SubviewsTest, FocusThatComesBeforeTheProgramHasEndedScrollsToWhereItsRowWillStand) {
    const Row& far = put({10.0, -600.0, 200.0, 30.0});
    far.widget->show();
    far.box->setFocus();
    const QRect seen(QPoint(0, 0), scroller_.viewport()->size());
    EXPECT_TRUE(seen.contains(QRect(far.widget->mapTo(scroller_.viewport(), QPoint(0, 0)), far.widget->size())));
}

TEST_F(SubviewsTest, KeyboardFocusScrollsItsRowIntoView) {
    put({10.0, 270.0, 200.0, 30.0});
    const Row& far = put({10.0, -600.0, 200.0, 30.0});
    letProgramEnd();
    behind_.setFocus();
    QTest::keyClick(&behind_, Qt::Key_Backtab);
    ASSERT_EQ(QApplication::focusWidget(), far.box);
    const QRect seen(QPoint(0, 0), scroller_.viewport()->size());
    EXPECT_TRUE(seen.contains(QRect(far.widget->mapTo(scroller_.viewport(), QPoint(0, 0)), far.widget->size())));
}

TEST_F(SubviewsTest, ViewsThatWereThereBeforeTheFormAreShown) {
    binding_.reset();
    const Row& row = put({10.0, 270.0, 200.0, 30.0});
    EXPECT_EQ(row.widget->parentWidget(), nullptr);
    bind();
    EXPECT_EQ(row.widget->parentWidget(), &area_);
}

TEST_F(SubviewsTest, UntiedAreaFollowsNothing) {
    const Row& row = put({10.0, 270.0, 200.0, 30.0});
    letProgramEnd();
    binding_.reset();
    row.view->setFrame({0.0, 0.0, 1.0, 1.0});
    model_.setFrame({0.0, 0.0, 1.0, 1.0});
    letProgramEnd();
    EXPECT_EQ(row.widget->geometry(), QRect(10, 0, 200, 30));
}

/// A box of 200 by 100 that lays nothing out.
class FrameTest : public FormFixture {
protected:
    FrameTest() {
        box_.setFixedSize(200, 100);
        check_.setObjectName("check_");
        check_.setParent(&box_);
        check_.setGeometry(20, 10, 80, 40);
        owner_.published = {{"check_", &model_}};
    }
    ~FrameTest() override { check_.setParent(nullptr); }

    QCheckBox check_;
    platform::NSButton model_{platform::NSButton::Type::Switch};
    QWidget& box_ = add<QWidget>("");
};

TEST_F(FrameTest, ComesFromTheFormAndThenFollowsTheProgram) {
    box_.resize(200, 100);
    bind();
    EXPECT_EQ(model_.frame(), (NSRect{20.0, 50.0, 80.0, 40.0}));

    model_.setFrame({18.0, 50.0, 90.5, 40.0});
    EXPECT_EQ(check_.geometry(), QRect(18, 10, 91, 40));
}

TEST_F(FrameTest, IsNotShownBeyondWhatItStandsIn) {
    bind();
    show();
    box_.setFixedSize(70, 100);
    QCoreApplication::processEvents();
    EXPECT_EQ(check_.geometry(), QRect(20, 10, 50, 40));
    EXPECT_EQ(model_.frame().width, 80.0);
}

TEST_F(FrameTest, OfAWidgetInALayoutIsTheLayouts) {
    platform::NSButton inLayout;
    QCheckBox& widget = add<QCheckBox>("laidOut_");
    owner_.published.push_back({"laidOut_", &inLayout});
    bind();
    show();
    const QRect before = widget.geometry();
    EXPECT_EQ(inLayout.frame(), NSRect{});
    inLayout.setFrame({0.0, 0.0, 5.0, 5.0});
    EXPECT_EQ(widget.geometry(), before);
}

TEST_F(FrameTest, OfTheViewIsTheFormsSize) {
    form_.resize(420, 86);
    bind();
    EXPECT_EQ(view_.frame(), (NSRect{0.0, 0.0, 420.0, 86.0}));
}

} // namespace

} // namespace kelvo
