#include "qt/CanvasView.h"
#include "platform/Drawing.h"
#include "qt/FormFixture.h"

#include <QImage>
#include <QLabel>

#include <gmock/gmock.h>

namespace kelvo {

namespace {

using platform::NSColor;
using platform::NSPoint;
using testing::ElementsAre;
using testing::IsEmpty;

/// Draws what a test tells it to, and records what it is told.
class RecordingView : public platform::NSView {
public:
    std::function<void()> draw = [] {};
    std::vector<std::string> events;
    std::vector<NSPoint> places;

    void drawRect(platform::NSRect) override {
        events.emplace_back("draw");
        draw();
    }
    void mouseDown(const platform::NSEvent& event) override { record("down", event); }
    void mouseUp(const platform::NSEvent& event) override { record("up", event); }

private:
    void record(const char* what, const platform::NSEvent& event) {
        events.emplace_back(what);
        places.push_back(convertPointFromContentView(event.locationInWindow));
    }
};

/// A view of 100 by 100 that stands somewhere in a larger window.
class CanvasViewTest : public FormFixture {
protected:
    void SetUp() override {
        add<QLabel>("").setText("above");
        rows_->addWidget(&widget_);
        widget_.setFixedSize(100, 100);
        rows_->setContentsMargins(17, 31, 5, 7);
        owner_.published = {{"area_", &model_}};
        bind();
        show();
        form_.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&form_));
        ASSERT_TRUE(QTest::qWaitFor([this] { return !model_.events.empty(); }));
        model_.events.clear();
    }

    QColor colourAt(int x, int y) { return widget_.grab().toImage().pixelColor(x, y); }

    RecordingView model_;
    CanvasView& widget_ = add<CanvasView>("area_");
};

TEST_F(CanvasViewTest, FrameFollowsTheWidgetsSize) {
    EXPECT_EQ(model_.bounds(), (platform::NSRect{0.0, 0.0, 100.0, 100.0}));
    widget_.setFixedSize(120, 120);
    EXPECT_TRUE(QTest::qWaitFor([this] { return model_.bounds() == platform::NSRect{0.0, 0.0, 120.0, 120.0}; }));
}

TEST_F(CanvasViewTest, DrawingHasItsOriginAtTheBottomLeft) {
    model_.draw = [this] {
        NSColor::greenColor().set();
        NSRectFill(model_.bounds());
        NSColor::redColor().set();
        platform::NSRectFill({10.0, 20.0, 10.0, 10.0});
    };
    EXPECT_EQ(colourAt(15, 75), QColor(255, 0, 0));
    EXPECT_EQ(colourAt(15, 25), QColor(0, 255, 0));
    EXPECT_EQ(colourAt(50, 50), QColor(0, 255, 0));
}

TEST_F(CanvasViewTest, OvalIsStrokedInItsLineWidthOnBothSidesOfItsOutline) {
    model_.draw = [this] {
        NSColor::whiteColor().set();
        NSRectFill(model_.bounds());
        auto oval = platform::NSBezierPath::bezierPathWithOvalInRect({30.0, 30.0, 40.0, 40.0});
        oval.setLineWidth(8.0);
        NSColor::greenColor().set();
        oval.stroke();
    };
    EXPECT_EQ(colourAt(27, 50), QColor(0, 255, 0));
    EXPECT_EQ(colourAt(32, 50), QColor(0, 255, 0));
    EXPECT_EQ(colourAt(22, 50), QColor(255, 255, 255));
    EXPECT_EQ(colourAt(50, 50), QColor(255, 255, 255));
}

TEST_F(CanvasViewTest, OvalFarLargerThanTheViewDoesNoHarm) {
    model_.draw = [this] {
        NSColor::whiteColor().set();
        NSRectFill(model_.bounds());
        for (const double size : {2147483647.0, -2147483648.0, 0.0}) {
            platform::NSBezierPath::bezierPathWithOvalInRect({(100.0 - size) / 2, (100.0 - size) / 2, size, size})
                .stroke();
        }
    };
    EXPECT_EQ(colourAt(70, 20), QColor(255, 255, 255));
}

TEST_F(CanvasViewTest, NoContextIsLeftBehindByADrawing) {
    widget_.grab();
    EXPECT_EQ(platform::NSGraphicsContext::currentContext(), nullptr);
}

TEST_F(CanvasViewTest, DrawingThatThrowsIsLogged) {
    model_.draw = [] { throw std::runtime_error("bad luck"); };
    widget_.grab();
    EXPECT_THAT(platform_.log.lines, ElementsAre("Unexpected error: bad luck"));
    EXPECT_EQ(platform::NSGraphicsContext::currentContext(), nullptr);
}

TEST_F(CanvasViewTest, NeedForDisplayIsMet) {
    model_.setNeedsDisplay(true);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !model_.events.empty(); }));
    EXPECT_EQ(model_.events.front(), "draw");
}

TEST_F(CanvasViewTest, PressAndReleaseComeInTheViewsOwnCoordinates) {
    QTest::mousePress(&widget_, Qt::LeftButton, {}, {3, 10});
    QTest::mouseRelease(&widget_, Qt::LeftButton, {}, {60, 99});
    EXPECT_THAT(model_.events, testing::IsSupersetOf({"down", "up"}));
    EXPECT_THAT(model_.places, ElementsAre(NSPoint{3.0, 90.0}, NSPoint{60.0, 1.0}));
}

TEST_F(CanvasViewTest, DoubleClickIsTwoPressesAndTwoReleases) {
    QTest::mouseClick(&widget_, Qt::LeftButton);
    QTest::mouseDClick(&widget_, Qt::LeftButton);
    QTest::mouseRelease(&widget_, Qt::LeftButton);
    std::erase(model_.events, "draw");
    EXPECT_THAT(model_.events, ElementsAre("down", "up", "down", "up"));
}

TEST_F(CanvasViewTest, TapOfAFingerIsAPressAndARelease) {
    const std::unique_ptr<QPointingDevice> screen(QTest::createTouchDevice());
    const QPoint place(50, 50);
    QTest::touchEvent(&widget_, screen.get()).press(1, place, &widget_);
    QTest::touchEvent(&widget_, screen.get()).release(1, place, &widget_);
    std::erase(model_.events, "draw");
    EXPECT_THAT(model_.events, ElementsAre("down", "up"));
}

TEST_F(CanvasViewTest, OtherButtonsAreNoPresses) {
    QTest::mouseClick(&widget_, Qt::RightButton);
    EXPECT_THAT(model_.places, IsEmpty());
}

TEST_F(CanvasViewTest, SpaceKeyPressesTheMiddleAndLetsItGo) {
    widget_.setFocus();
    QTest::keyPress(&widget_, Qt::Key_Space);
    QTest::keyRelease(&widget_, Qt::Key_Space);
    std::erase(model_.events, "draw");
    EXPECT_THAT(model_.events, ElementsAre("down", "up"));
    EXPECT_NEAR(model_.places.front().x, 50.0, 1.0);
    EXPECT_NEAR(model_.places.front().y, 50.0, 1.0);
}

TEST_F(CanvasViewTest, HeldSpaceKeyIsOnePress) {
    for (const bool isRepeat : {false, true, true}) {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, " ", isRepeat);
        QApplication::sendEvent(&widget_, &press);
    }
    EXPECT_EQ(model_.places.size(), 1U);
}

TEST_F(CanvasViewTest, FocusIsSeen) {
    widget_.clearFocus();
    const QColor without = colourAt(1, 50);
    widget_.setFocus();
    EXPECT_EQ(colourAt(1, 50), widget_.palette().color(QPalette::Highlight));
    EXPECT_NE(colourAt(1, 50), without);
}

TEST_F(CanvasViewTest, ControlsAreNotDrawnOnACanvas) {
    platform::NSButton button;
    owner_.published = {{"area_", &button}};
    EXPECT_THAT(misfit(), testing::HasSubstr("widget area_ cannot show its outlet"));
}

} // namespace

} // namespace kelvo
