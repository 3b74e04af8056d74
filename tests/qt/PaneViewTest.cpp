#include "hosts/kde/PaneView.h"
#include "qt/ToolkitPlatform.h"

#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

namespace kelvo {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr double kLongSeconds = 30.0;

/// A pane that tells its story, under its name, in a place that outlives it.
class StoryPane : public platform::NSPreferencePane {
public:
    StoryPane(std::string name, std::vector<std::string>& story)
        : NSPreferencePane("Plain"), name_(std::move(name)), story_(story) {}
    ~StoryPane() override { tell("is gone"); }
    void mainViewDidLoad() override { tell("mainViewDidLoad"); }
    void willSelect() override {
        tell("willSelect");
        if (whenSelected) whenSelected();
    }
    void willUnselect() override { tell("willUnselect"); }

    std::function<void()> whenSelected;

private:
    void tell(const std::string& step) { story_.push_back(name_ + ' ' + step); }

    std::string name_;
    std::vector<std::string>& story_;
};

std::unique_ptr<QWidget> makePlain() {
    auto form = std::make_unique<QWidget>();
    form->resize(400, 300);
    return form;
}

std::unique_ptr<QWidget> makeMisfit() {
    auto form = makePlain();
    std::make_unique<QPushButton>(form.get()).release()->setObjectName("orphan_");
    return form;
}

class PaneViewTest : public testing::Test {
protected:
    /// A view of a new pane in the window, not yet shown.
    std::unique_ptr<PaneView> makeView(const std::string& name, std::function<void()> whenSelected = nullptr) {
        auto pane = std::make_shared<StoryPane>(name, story_);
        pane->whenSelected = std::move(whenSelected);
        auto view = std::make_unique<PaneView>(pane, platform_.nibs, platform_.runLoop, &window_);
        view->hide();
        return view;
    }

    /// Lets the event loop turn until all that is due has been done.
    static void turn() {
        bool isOver = false;
        QMetaObject::invokeMethod(
            qApp, [&] { isOver = true; }, Qt::QueuedConnection);
        EXPECT_TRUE(QTest::qWaitFor([&] { return isOver; }));
    }

    void openWindow() {
        window_.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window_));
        turn();
    }

    std::vector<std::string> takeStory() { return std::exchange(story_, {}); }

    ToolkitPlatform platform_{{{"Plain", makePlain}}};
    std::vector<std::string> story_;
    QWidget window_;
};

TEST_F(PaneViewTest, PaneIsLoadedWithTheViewAndSelectedWhenItIsShown) {
    const auto view = makeView("A");
    openWindow();
    EXPECT_THAT(takeStory(), ElementsAre("A mainViewDidLoad"));

    view->show();
    EXPECT_THAT(takeStory(), IsEmpty());
    turn();
    EXPECT_THAT(takeStory(), ElementsAre("A willSelect"));
}

TEST_F(PaneViewTest, WindowThatIsShownAndHiddenSelectsAndLeavesThePane) {
    const auto view = makeView("A");
    view->show();
    openWindow();
    window_.hide();
    turn();
    openWindow();
    EXPECT_THAT(takeStory(), ElementsAre("A mainViewDidLoad", "A willSelect", "A willUnselect", "A willSelect"));
}

TEST_F(PaneViewTest, OnlyTheLastOfWhatIsSaidInOneTurnCounts) {
    const auto view = makeView("A");
    openWindow();
    takeStory();

    view->show();
    view->hide();
    turn();
    EXPECT_THAT(takeStory(), IsEmpty());

    view->show();
    view->hide();
    view->show();
    turn();
    EXPECT_THAT(takeStory(), ElementsAre("A willSelect"));

    view->hide();
    view->show();
    turn();
    EXPECT_THAT(takeStory(), IsEmpty());
}

TEST_F(PaneViewTest, MinimisingAndRestoringIsNeither) {
    const auto older = makeView("A");
    older->show();
    openWindow();
    const auto newer = makeView("B");
    newer->show();
    turn();
    EXPECT_THAT(takeStory(), ElementsAre("A mainViewDidLoad", "A willSelect", "B mainViewDidLoad", "A willUnselect",
                                         "B willSelect"));

    window_.showMinimized();
    ASSERT_TRUE(QTest::qWaitFor([&] { return window_.isMinimized(); }));
    turn();
    window_.showNormal();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window_.isMinimized(); }));
    turn();
    EXPECT_THAT(takeStory(), IsEmpty());
}

TEST_F(PaneViewTest, DestroyedWithoutBeingHiddenItLeavesThePaneAndThatIsGone) {
    auto view = makeView("A");
    view->show();
    openWindow();
    takeStory();

    view.reset();
    EXPECT_THAT(takeStory(), ElementsAre("A willUnselect", "A is gone"));
}

TEST_F(PaneViewTest, DestroyedBeforeItSettledItSelectsNothing) {
    auto view = makeView("A");
    openWindow();
    view->show();
    view.reset();
    turn();
    EXPECT_THAT(takeStory(), ElementsAre("A mainViewDidLoad", "A is gone"));
}

TEST_F(PaneViewTest, NewerViewTakesItsTurnBeforeTheOlderOneIsGone) {
    auto older = makeView("old");
    older->show();
    openWindow();
    const auto newer = makeView("new");
    newer->show();
    turn();
    older.reset();
    turn();
    EXPECT_THAT(takeStory(), ElementsAre("old mainViewDidLoad", "old willSelect", "new mainViewDidLoad",
                                         "old willUnselect", "new willSelect", "old is gone"));
}

TEST_F(PaneViewTest, DestroyedWhileThePaneWaitsItLeavesPaneAndFormUntilThatIsDone) {
    std::unique_ptr<PaneView> view;
    QPointer<QWidget> form;
    view = makeView("A", [&] {
        bool isOver = false;
        platform_.runLoop.scheduleTimer(0.0, [&] {
            view.reset();
            isOver = true;
        });
        platform_.runLoop.runUntil([&] { return isOver; }, kLongSeconds);
        story_.emplace_back(form ? "A goes on with its form" : "A goes on without its form");
    });
    form = view->findChild<QWidget*>();
    ASSERT_TRUE(form);
    view->show();
    openWindow();
    turn();

    EXPECT_THAT(takeStory(), ElementsAre("A mainViewDidLoad", "A willSelect", "A willUnselect",
                                         "A goes on with its form", "A is gone"));
    EXPECT_FALSE(form);
}

TEST(PaneView, FormThatDoesNotFitItsPaneIsAnError) {
    ToolkitPlatform platform({{"Plain", makeMisfit}});
    std::vector<std::string> story;
    EXPECT_THROW(PaneView(std::make_shared<StoryPane>("A", story), platform.nibs, platform.runLoop),
                 std::runtime_error);
    EXPECT_THAT(story, ElementsAre("A is gone"));
}

} // namespace

} // namespace kelvo
