#include "hosts/window/PaneWindow.h"
#include "qt/ToolkitPlatform.h"

#include <QLabel>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace kelvo {

namespace {

using testing::ElementsAre;

/// A pane that records the calls of its host.
class RecordingPane : public platform::NSPreferencePane {
public:
    RecordingPane() : NSPreferencePane("Plain") {}
    void awakeFromNib() override { calls.emplace_back("awakeFromNib"); }
    void mainViewDidLoad() override { calls.emplace_back("mainViewDidLoad"); }
    void willSelect() override {
        calls.emplace_back("willSelect");
        if (throwsOnSelect) throw std::runtime_error("bad luck");
    }
    void willUnselect() override { calls.emplace_back("willUnselect"); }

    std::vector<std::string> calls;
    bool throwsOnSelect = false;
};

std::unique_ptr<QWidget> makeMisfit() {
    auto form = std::make_unique<QWidget>();
    auto label = std::make_unique<QLabel>(form.get());
    label->setObjectName("orphan_");
    static_cast<void>(label.release());
    return form;
}

class PaneWindowTest : public testing::Test {
protected:
    PaneWindow& openWindow() {
        window_.emplace(pane_, platform_.nibs);
        window_->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&*window_));
        return *window_;
    }

    [[nodiscard]] std::unique_ptr<QWidget> makePlain() const {
        auto form = std::make_unique<QWidget>();
        form->resize(plainSize_);
        return form;
    }

    QSize plainSize_{400, 300};
    ToolkitPlatform platform_{{{"Plain", [this] { return makePlain(); }}}};
    RecordingPane pane_;
    std::optional<PaneWindow> window_;
};

TEST_F(PaneWindowTest, PaneIsLoadedBeforeItIsFirstShown) {
    window_.emplace(pane_, platform_.nibs);
    EXPECT_THAT(pane_.calls, ElementsAre("awakeFromNib", "mainViewDidLoad"));
}

TEST_F(PaneWindowTest, WindowShowsThePanesFormInItsSize) {
    const PaneWindow& window = openWindow();
    const QWidget* form = platform_.nibs.widgetFor(pane_.loadMainView());
    EXPECT_TRUE(form->isVisible());
    EXPECT_EQ(form->size(), QSize(400, 300));
    EXPECT_EQ(window.size(), QSize(400, 300));
}

TEST_F(PaneWindowTest, WindowOpensNoLargerThanTheScreen) {
    plainSize_ = {5000, 5000};
    const PaneWindow& window = openWindow();
    const QSize screen = window.screen()->availableSize();
    EXPECT_LE(window.width(), screen.width());
    EXPECT_LT(window.height(), screen.height());
}

TEST_F(PaneWindowTest, WindowMayBeSmallerThanTheFormWhichIsScrolledThen) {
    PaneWindow& window = openWindow();
    QWidget* form = platform_.nibs.widgetFor(pane_.loadMainView());
    form->setMinimumSize(400, 300);
    window.resize(200, 100);
    QCoreApplication::processEvents();
    EXPECT_EQ(window.size(), QSize(200, 100));
    EXPECT_EQ(form->size(), QSize(400, 300));
    const auto& scroller = dynamic_cast<QScrollArea&>(*window.centralWidget());
    EXPECT_TRUE(scroller.verticalScrollBar()->isVisible());
    EXPECT_TRUE(scroller.horizontalScrollBar()->isVisible());
    window.resize(500, 400);
    QCoreApplication::processEvents();
    EXPECT_EQ(form->size(), QSize(500, 400));
}

TEST_F(PaneWindowTest, AnotherFontOrStyleIsNoReasonToLeaveThePane) {
    PaneWindow& window = openWindow();
    QFont larger = window.font();
    larger.setPointSize(larger.pointSize() + 4);
    window.setFont(larger);
    QEvent style(QEvent::StyleChange);
    QCoreApplication::sendEvent(&window, &style);
    QCoreApplication::processEvents();
    EXPECT_THAT(pane_.calls, ElementsAre("awakeFromNib", "mainViewDidLoad", "willSelect"));
}

TEST_F(PaneWindowTest, ShowingSelectsThePaneOnce) {
    PaneWindow& window = openWindow();
    window.show();
    EXPECT_THAT(pane_.calls, ElementsAre("awakeFromNib", "mainViewDidLoad", "willSelect"));
}

TEST_F(PaneWindowTest, HidingAndShowingLeavesThePaneAndSelectsItAgain) {
    PaneWindow& window = openWindow();
    window.hide();
    window.show();
    EXPECT_THAT(pane_.calls,
                ElementsAre("awakeFromNib", "mainViewDidLoad", "willSelect", "willUnselect", "willSelect"));
}

TEST_F(PaneWindowTest, MinimisingAndRestoringIsNeither) {
    PaneWindow& window = openWindow();
    window.showMinimized();
    ASSERT_TRUE(QTest::qWaitFor([&] { return window.isMinimized(); }));
    window.showNormal();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window.isMinimized(); }));
    EXPECT_THAT(pane_.calls, ElementsAre("awakeFromNib", "mainViewDidLoad", "willSelect"));
}

TEST_F(PaneWindowTest, ClosingLeavesThePane) {
    openWindow().close();
    EXPECT_THAT(pane_.calls, ElementsAre("awakeFromNib", "mainViewDidLoad", "willSelect", "willUnselect"));
}

TEST_F(PaneWindowTest, ClosingWhileMinimisedLeavesThePane) {
    PaneWindow& window = openWindow();
    window.showMinimized();
    window.close();
    EXPECT_THAT(pane_.calls, ElementsAre("awakeFromNib", "mainViewDidLoad", "willSelect", "willUnselect"));
}

TEST_F(PaneWindowTest, ClosingWhatIsHiddenLeavesThePaneOnce) {
    PaneWindow& window = openWindow();
    window.hide();
    window.close();
    EXPECT_THAT(pane_.calls, ElementsAre("awakeFromNib", "mainViewDidLoad", "willSelect", "willUnselect"));
}

TEST_F(PaneWindowTest, DestroyingTheOpenWindowLeavesThePane) {
    openWindow();
    window_.reset();
    EXPECT_THAT(pane_.calls, ElementsAre("awakeFromNib", "mainViewDidLoad", "willSelect", "willUnselect"));
}

TEST_F(PaneWindowTest, EachCallIsLoggedBeforeItIsMade) {
    pane_.throwsOnSelect = true;
    openWindow().close();
    EXPECT_THAT(platform_.log.lines,
                ElementsAre("kelvo-touch-display: mainViewDidLoad", "kelvo-touch-display: willSelect",
                            "Unexpected error: bad luck", "kelvo-touch-display: willUnselect"));
}

TEST(PaneWindow, FormThatDoesNotFitItsPaneIsAnError) {
    const ToolkitPlatform platform({{"Plain", makeMisfit}});
    RecordingPane pane;
    EXPECT_THROW(PaneWindow(pane, platform.nibs), std::runtime_error);
    EXPECT_TRUE(pane.calls.empty());
}

} // namespace

} // namespace kelvo
