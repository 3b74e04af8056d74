#include "qt/UserAct.h"
#include "qt/PullDown.h"
#include "qt/ShownSubviews.h"
#include "qt/ToolkitPlatform.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QPointer>
#include <QTest>
#include <QVBoxLayout>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace kelvo {

namespace {

/// Longer than anything here takes; reaching it is a failure.
constexpr double kLongSeconds = 20.0;

/// A controller of the form "Row", whose check box and pull-down do what a test says.
class RowController : public platform::NSViewController {
public:
    explicit RowController(std::function<void()> act) : NSViewController("Row"), act_(std::move(act)) {
        for (const char* title : {"", "one", "two"}) choice_.addItemWithTitle(title);
        choice_.selectItemAtIndex(1);
    }
    [[nodiscard]] std::vector<platform::NSOutlet> outlets() override {
        return {{"check_", &check_}, {"choice_", &choice_}};
    }
    [[nodiscard]] std::vector<platform::NSNibAction> actions() override {
        // A copy, since the action may end the controller.
        return {{"act:", [act = act_](platform::NSControl&) { act(); }}};
    }

private:
    std::function<void()> act_;
    platform::NSButton check_{platform::NSButton::Type::Switch};
    platform::NSPopUpButton choice_{true};
};

std::unique_ptr<QWidget> makeRow() {
    auto form = std::make_unique<QWidget>();
    auto layout = std::make_unique<QVBoxLayout>(form.get());
    auto check = std::make_unique<QCheckBox>();
    check->setObjectName("check_");
    check->setProperty("action", "act:");
    layout->addWidget(check.release());
    auto choice = std::make_unique<PullDown>();
    choice->setObjectName("choice_");
    choice->setProperty("action", "act:");
    layout->addWidget(choice.release());
    static_cast<void>(layout.release());
    return form;
}

class UserActTest : public testing::Test {
protected:
    void SetUp() override {
        controller_ = std::make_unique<RowController>([this] { act_(); });
        form_ = platform_.nibs.widgetFor(controller_->view());
        form_->setParent(&window_);
        form_->resize(200, 100);
        window_.resize(200, 100);
        window_.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    }

    void click() {
        auto& check = *form_->findChild<QCheckBox*>();
        QTest::mouseClick(&check, Qt::LeftButton, {}, {8, check.height() / 2});
    }
    void pressSpace() { QTest::keyClick(form_->findChild<QCheckBox*>(), Qt::Key_Space); }
    void chooseNext() { QTest::keyClick(form_->findChild<PullDown*>(), Qt::Key_Down); }
    void chooseInMenu() {
        auto& pullDown = *form_->findChild<PullDown*>();
        pullDown.showPopup();
        QTest::keyClick(pullDown.view(), Qt::Key_Down);
        QTest::keyClick(pullDown.view(), Qt::Key_Return);
    }

    /// What a message does that arrives while a row waits for an answer: its form goes, and the loop runs on.
    void endFormInNestedLoop() {
        platform_.runLoop.scheduleTimer(0.0, [this] { controller_.reset(); });
        platform_.runLoop.runUntil([this] { return !controller_; }, kLongSeconds);
        bool ranOn = false;
        platform_.runLoop.scheduleTimer(0.0, [&] { ranOn = true; });
        platform_.runLoop.runUntil([&] { return ranOn; }, kLongSeconds);
        wasThereAfterLoop_ = !form_.isNull();
        wasSeenAfterLoop_ = form_ && (form_->isVisible() || form_->parentWidget());
    }

    void expectFormHasGone() {
        EXPECT_FALSE(controller_);
        EXPECT_TRUE(QTest::qWaitFor([this] { return form_.isNull(); }));
        EXPECT_TRUE(window_.findChildren<QCheckBox*>().isEmpty());
    }

    ToolkitPlatform platform_{{{"Row", makeRow}}};
    QWidget window_;
    std::function<void()> act_ = [this] { controller_.reset(); };
    std::unique_ptr<RowController> controller_;
    QPointer<QWidget> form_;
    bool wasThereAfterLoop_ = false;
    bool wasSeenAfterLoop_ = false;
};

TEST_F(UserActTest, ClickMayEndTheFormOfItsCheckBox) {
    click();
    expectFormHasGone();
}

TEST_F(UserActTest, KeyMayEndTheFormOfItsCheckBox) {
    pressSpace();
    expectFormHasGone();
}

TEST_F(UserActTest, KeyMayEndTheFormOfItsPullDown) {
    chooseNext();
    expectFormHasGone();
}

TEST_F(UserActTest, ChoiceInAMenuMayEndTheFormOfThatMenu) {
    chooseInMenu();
    expectFormHasGone();
}

TEST_F(UserActTest, FormThatGoesInANestedLoopIsOffTheScreenAtOnceAndThereUntilTheActIsOver) {
    act_ = [this] { endFormInNestedLoop(); };
    const std::vector<std::function<void()>> acts = {[this] { click(); }, [this] { chooseNext(); },
                                                     [this] { chooseInMenu(); }};
    for (const auto& act : acts) {
        if (!controller_) SetUp();
        act();
        EXPECT_TRUE(wasThereAfterLoop_);
        EXPECT_FALSE(wasSeenAfterLoop_);
        expectFormHasGone();
    }
}

TEST_F(UserActTest, ActWithinAnActIsNotTheEndOfTheOuterOne) {
    bool wasThere = false;
    act_ = [&] {
        userActed([this] { controller_.reset(); });
        bool ran = false;
        platform_.runLoop.scheduleTimer(0.0, [&] { ran = true; });
        platform_.runLoop.runUntil([&] { return ran; }, kLongSeconds);
        wasThere = !form_.isNull();
    };
    click();
    EXPECT_TRUE(wasThere);
    expectFormHasGone();
}

TEST_F(UserActTest, RowMayBeTakenOffItsListInTheMiddleOfItsOwnAct) {
    QWidget area(&window_);
    area.resize(200, 100);
    area.show();
    platform::NSView list;
    const ShownSubviews shown(area, list,
                              [this](const platform::NSView& view) { return platform_.nibs.widgetFor(view); });
    std::shared_ptr<RowController> row = std::move(controller_);
    const std::weak_ptr<RowController> kept = row;
    platform::NSView* const view = &row->view();
    list.addSubview(std::shared_ptr<platform::NSView>(std::move(row), view));
    act_ = [&] {
        platform_.runLoop.scheduleTimer(0.0, [&] { list.subviews().front()->removeFromSuperview(); });
        platform_.runLoop.runUntil([&] { return kept.expired(); }, kLongSeconds);
        wasThereAfterLoop_ = !form_.isNull();
    };

    pressSpace();

    EXPECT_TRUE(kept.expired());
    EXPECT_TRUE(wasThereAfterLoop_);
    expectFormHasGone();
}

TEST_F(UserActTest, FormThatGoesWhileTheUserDoesNothingGoesAtOnce) {
    controller_.reset();
    EXPECT_TRUE(form_.isNull());
}

TEST_F(UserActTest, ActThatThrowsIsOverAsWell) {
    userActed([] { throw std::runtime_error("bad luck"); });
    EXPECT_THAT(platform_.log.lines, testing::ElementsAre("Unexpected error: bad luck"));
    controller_.reset();
    EXPECT_TRUE(form_.isNull());
}

} // namespace

} // namespace kelvo
