#include "platform/Controls.h"
#include "platform/Subviews.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace platform;
using testing::ElementsAre;
using testing::IsEmpty;

/// Counts the notifications of one view.
class Observer {
public:
    explicit Observer(NSView& view) : subscription_(view.observeChanges([this] { ++count_; })) {}
    [[nodiscard]] int count() const { return count_; }

private:
    int count_ = 0;
    Subscription subscription_;
};

TEST(AView, NotifiesOfAChangeButNotOfAnUnchangedValue) {
    NSView view;
    const Observer observer(view);

    view.setHidden(false);
    EXPECT_EQ(observer.count(), 0);
    view.setHidden(true);
    view.setHidden(true);
    EXPECT_EQ(observer.count(), 1);
    view.setFrame({1, 2, 3, 4});
    EXPECT_EQ(observer.count(), 2);
}

TEST(AView, ForgetsAnObserverWhoseSubscriptionEnded) {
    NSView view;
    int count = 0;
    {
        const Subscription subscription = view.observeChanges([&] { ++count; });
        view.setHidden(true);
    }
    view.setHidden(false);

    EXPECT_EQ(count, 1);
}

TEST(AView, LetsAnObserverEndItsOwnSubscription) {
    NSView view;
    int count = 0;
    Subscription subscription;
    subscription = view.observeChanges([&] {
        ++count;
        subscription = Subscription();
    });

    view.setHidden(true);
    view.setHidden(false);

    EXPECT_EQ(count, 1);
}

TEST(AControl, FiresNothingWhenTheProgramSetsIt) {
    int fired = 0;
    NSButton button(NSButton::Type::Switch);
    NSPopUpButton popUp;
    button.setAction([&](NSControl&) { ++fired; });
    popUp.setAction([&](NSControl&) { ++fired; });

    button.setState(1);
    popUp.addItemWithTitle("a");
    popUp.selectItemAtIndex(0);

    EXPECT_EQ(fired, 0);
}

/// A view that is shown, which tells how often it was looked at.
struct ShownOnce {
    struct Looked {
        NSView* view;
        int* looks;
        bool operator==(const NSView* other) const {
            ++*looks;
            return view == other;
        }
    };
    Looked view;
};

TEST(ShownSubviews, OneMoreInFrontCostsTheSameHoweverManyThereAre) {
    std::vector<std::shared_ptr<NSView>> views;
    std::vector<ShownOnce> shown;
    int looks = 0;
    for (int i = 0; i < 1000; ++i) {
        views.push_back(std::make_shared<NSView>());
        const auto gone = platform::goneSubviews(shown, views);
        EXPECT_EQ(gone.first, gone.last);
        shown.push_back({{views.back().get(), &looks}});
    }
    EXPECT_LE(looks, 1000);
}

TEST(ShownSubviews, OnlyTheOneThatIsNoLongerThereHasGone) {
    for (std::size_t taken = 0; taken < 4; ++taken) {
        std::vector<std::shared_ptr<NSView>> views;
        std::vector<ShownOnce> shown;
        int looks = 0;
        for (int i = 0; i < 4; ++i) {
            views.push_back(std::make_shared<NSView>());
            shown.push_back({{views.back().get(), &looks}});
        }
        views.erase(views.begin() + static_cast<std::ptrdiff_t>(taken));
        const auto gone = platform::goneSubviews(shown, views);
        EXPECT_EQ(gone.first, taken);
        EXPECT_EQ(gone.last, taken + 1);
    }
}

TEST(APopUp, TakesManyItemsAsOneChange) {
    NSPopUpButton popUp;
    int changes = 0;
    const Subscription subscription = popUp.observeChanges([&] { ++changes; });

    popUp.addItemsWithTitles({"a", "b", "a"});
    EXPECT_THAT(popUp.itemTitles(), ElementsAre("a", "b", "a"));
    EXPECT_EQ(popUp.indexOfSelectedItem(), 0);
    popUp.addItemsWithTitles({"c"});
    popUp.addItemsWithTitles({});

    EXPECT_EQ(popUp.itemTitles().size(), 4U);
    EXPECT_EQ(changes, 2);
}

TEST(APopUp, CountsHowOftenItHasLostItsItems) {
    NSPopUpButton popUp;
    popUp.removeAllItems();
    EXPECT_EQ(popUp.timesEmptied(), 0U);
    popUp.addItemWithTitle("a");
    popUp.removeAllItems();
    EXPECT_EQ(popUp.timesEmptied(), 1U);
}

TEST(AControl, KeepsTheRunningActionAliveWhenItIsReplaced) {
    NSButton button;
    std::vector<int> fired;
    button.setAction([&, first = std::make_shared<int>(1)](NSControl& sender) {
        sender.setAction([&](NSControl&) { fired.push_back(2); });
        fired.push_back(*first);
    });

    button.performClick();
    button.performClick();

    EXPECT_THAT(fired, ElementsAre(1, 2));
}

TEST(ACheckBox, ChangesSidesBeforeItFires) {
    NSButton button(NSButton::Type::Switch);
    std::vector<int> states;
    button.setAction([&](NSControl&) { states.push_back(button.state()); });

    button.performClick();
    button.performClick();

    EXPECT_THAT(states, ElementsAre(1, 0));
}

TEST(APushButton, FiresWithoutAState) {
    NSButton button;
    int fired = 0;
    button.setAction([&](NSControl&) { ++fired; });

    button.performClick();

    EXPECT_EQ(fired, 1);
    EXPECT_EQ(button.state(), 0);
}

TEST(ADisabledControl, IsDeafToTheUser) {
    int fired = 0;
    NSButton button(NSButton::Type::Switch);
    button.setAction([&](NSControl&) { ++fired; });
    button.setEnabled(false);
    NSPopUpButton popUp;
    popUp.addItemWithTitle("a");
    popUp.addItemWithTitle("b");
    popUp.setAction([&](NSControl&) { ++fired; });
    popUp.setEnabled(false);

    button.performClick();
    popUp.performSelectItemAtIndex(1);

    EXPECT_EQ(fired, 0);
    EXPECT_EQ(button.state(), 0);
    EXPECT_EQ(popUp.indexOfSelectedItem(), 0);
}

TEST(APopUp, SelectsItsFirstItemByDefault) {
    NSPopUpButton popUp;
    EXPECT_EQ(popUp.indexOfSelectedItem(), -1);
    EXPECT_EQ(popUp.titleOfSelectedItem(), std::nullopt);

    popUp.addItemWithTitle("a");
    popUp.addItemWithTitle("b");

    EXPECT_EQ(popUp.indexOfSelectedItem(), 0);
    EXPECT_EQ(popUp.titleOfSelectedItem(), "a");
}

TEST(APopUp, IgnoresAnIndexItDoesNotHave) {
    NSPopUpButton popUp;
    popUp.addItemWithTitle("a");
    int fired = 0;
    popUp.setAction([&](NSControl&) { ++fired; });

    for (const int index : {-1, 1, 7}) {
        popUp.selectItemAtIndex(index);
        popUp.performSelectItemAtIndex(index);
    }

    EXPECT_EQ(popUp.indexOfSelectedItem(), 0);
    EXPECT_EQ(fired, 0);
}

TEST(APopUp, FiresWhenTheUserPicksTheSelectedItemAgain) {
    NSPopUpButton popUp;
    popUp.addItemWithTitle("a");
    int fired = 0;
    popUp.setAction([&](NSControl&) { ++fired; });

    popUp.performSelectItemAtIndex(0);

    EXPECT_EQ(fired, 1);
}

TEST(APopUp, IsEmptyAfterItsItemsAreRemoved) {
    NSPopUpButton popUp;
    popUp.addItemWithTitle("a");

    popUp.removeAllItems();

    EXPECT_THAT(popUp.itemTitles(), IsEmpty());
    EXPECT_EQ(popUp.indexOfSelectedItem(), -1);
    EXPECT_EQ(popUp.indexOfItemWithTitle("a"), -1);
}

class RecordedDelegate : public NSTabViewDelegate {
public:
    std::vector<std::pair<int, int>> selectedAndNext;

    void tabViewWillSelectTabViewItem(NSTabView& tabView, const NSTabViewItem& item) override {
        selectedAndNext.emplace_back(tabView.indexOfSelectedTabViewItem(), tabView.indexOfTabViewItem(item));
    }
};

TEST(ATabView, AsksItsDelegateBeforeAChangeOfTab) {
    RecordedDelegate delegate;
    NSTabView tabView;
    tabView.setDelegate(&delegate);
    for (const char* label : {"a", "b", "c"}) tabView.addTabViewItem(label);
    EXPECT_THAT(delegate.selectedAndNext, IsEmpty());

    tabView.selectTabViewItemAtIndex(2);

    EXPECT_THAT(delegate.selectedAndNext, ElementsAre(std::pair(0, 2)));
    EXPECT_EQ(tabView.indexOfSelectedTabViewItem(), 2);
}

TEST(ATabView, DoesNothingForTheSelectedTabOrOneItDoesNotHave) {
    RecordedDelegate delegate;
    NSTabView tabView;
    tabView.setDelegate(&delegate);
    tabView.addTabViewItem("a");

    for (const int index : {0, -1, 1, 7}) tabView.selectTabViewItemAtIndex(index);

    EXPECT_THAT(delegate.selectedAndNext, IsEmpty());
    EXPECT_EQ(tabView.indexOfSelectedTabViewItem(), 0);
}

TEST(ATabViewItem, OfAnotherTabViewHasNoPlace) {
    NSTabView tabView;
    tabView.addTabViewItem("a");

    EXPECT_EQ(tabView.indexOfTabViewItem(NSTabViewItem("a")), -1);
}

} // namespace
