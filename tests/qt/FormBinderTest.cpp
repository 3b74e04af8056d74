#include "qt/CanvasView.h"
#include "qt/FormFixture.h"
#include "qt/PullDown.h"

#include <QAbstractItemModel>
#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDial>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>

namespace kelvo {

namespace {

using platform::NSButton;
using platform::NSPopUpButton;
using platform::NSTabView;
using platform::NSTextField;
using platform::NSView;
using platform::NSViewController;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class FormBinderTest : public FormFixture {};

TEST_F(FormBinderTest, OutletWithoutAWidgetIsAnErrorThatNamesFormAndOutlet) {
    NSButton button;
    owner_.published = {{"lonely_", &button}};
    EXPECT_EQ(misfit(), "form TestForm does not fit its owner: outlet lonely_ has no widget");
}

TEST_F(FormBinderTest, NamedWidgetWithoutAnOutletIsAnErrorThatNamesFormAndWidget) {
    add<QCheckBox>("orphan_");
    EXPECT_EQ(misfit(), "form TestForm does not fit its owner: widget orphan_ has no outlet");
}

TEST_F(FormBinderTest, UnknownActionIsAnErrorThatNamesFormWidgetAndSelector) {
    add<QPushButton>("button", "explode:");
    EXPECT_EQ(misfit(), "form TestForm does not fit its owner: widget button fires explode:, which is no action");
}

TEST_F(FormBinderTest, WidgetOfAnotherTypeThanItsOutletIsAnErrorThatNamesBoth) {
    NSPopUpButton popUp;
    add<QLabel>("choice_");
    owner_.published = {{"choice_", &popUp}};
    EXPECT_EQ(misfit(), "form TestForm does not fit its owner: widget choice_ cannot show its outlet");
}

TEST_F(FormBinderTest, ControlCannotBeShownByAWidgetThatOnlyHoldsOthers) {
    NSButton button;
    add<QWidget>("button_");
    owner_.published = {{"button_", &button}};
    EXPECT_THAT(misfit(), HasSubstr("widget button_ cannot show its outlet"));
}

TEST_F(FormBinderTest, WidgetThatNoPairingKnowsCannotShowAControl) {
    NSButton button;
    add<QDial>("dial_");
    owner_.published = {{"dial_", &button}};
    EXPECT_THAT(misfit(), HasSubstr("widget dial_ cannot show its outlet"));
}

TEST_F(FormBinderTest, WidgetThatTheUserCannotActOnCannotFire) {
    add<QLabel>("label", "explode:");
    owner_.selectors = {"explode:"};
    EXPECT_EQ(misfit(), "form TestForm does not fit its owner: widget label cannot fire explode:");
}

TEST_F(FormBinderTest, PageWithoutALayoutCannotHoldAForm) {
    NSViewController controller("");
    add<QWidget>("page_");
    owner_.published = {{"page_", &controller}};
    EXPECT_THAT(misfit(), HasSubstr("widget page_ cannot show its outlet"));
}

TEST_F(FormBinderTest, OutletThatPointsNowhereIsAnError) {
    add<QCheckBox>("nothing_");
    owner_.published = {{"nothing_", static_cast<NSView*>(nullptr)}};
    EXPECT_THAT(misfit(), HasSubstr("widget nothing_ cannot show its outlet"));
}

TEST_F(FormBinderTest, EveryMisfitIsNamedAtOnceAndNothingIsTied) {
    NSPopUpButton popUp;
    NSButton button;
    add<QComboBox>("choice_").addItem("item");
    add<QCheckBox>("orphan_");
    owner_.published = {{"choice_", &popUp}, {"lonely_", &button}};

    const std::string message = misfit();

    EXPECT_THAT(message, HasSubstr("orphan_"));
    EXPECT_THAT(message, HasSubstr("lonely_"));
    EXPECT_THAT(popUp.itemTitles(), IsEmpty());
}

TEST_F(FormBinderTest, NamesOfTheLayoutNeedNoOutlet) {
    add<QLabel>("heading");
    add<QWidget>("");
    EXPECT_EQ(misfit(), "");
}

TEST_F(FormBinderTest, OutletMayHaveANameThatDoesNotEndInAnUnderscore) {
    NSTextField text;
    text.setStringValue("shown");
    QLabel& label = add<QLabel>("m_title");
    owner_.published = {{"m_title", &text}};
    bind();
    EXPECT_EQ(label.text(), "shown");
}

TEST_F(FormBinderTest, BindingFiresNothing) {
    NSPopUpButton popUp;
    NSButton button(NSButton::Type::Switch);
    button.setState(1);
    NSTabView tabView;
    QComboBox& comboBox = add<QComboBox>("choice_", "choose:");
    comboBox.addItems({"first", "second"});
    add<QCheckBox>("check_", "check:");
    QTabWidget& tabs = add<QTabWidget>("tabs_");
    tabs.addTab(std::make_unique<QWidget>().release(), "one");
    tabs.addTab(std::make_unique<QWidget>().release(), "two");
    tabs.setCurrentIndex(1);
    owner_.published = {{"choice_", &popUp}, {"check_", &button}, {"tabs_", &tabView}};
    owner_.selectors = {"choose:", "check:"};

    bind();

    EXPECT_THAT(owner_.fired, IsEmpty());
    EXPECT_EQ(button.state(), 1);
    EXPECT_EQ(tabView.indexOfSelectedTabViewItem(), 0);
    EXPECT_EQ(tabs.currentIndex(), 0);
}

TEST_F(FormBinderTest, ItemsOfTheFormGoIntoAnEmptyPopUp) {
    NSPopUpButton popUp;
    add<QComboBox>("choice_").addItems({"first", "second"});
    owner_.published = {{"choice_", &popUp}};
    bind();
    EXPECT_THAT(popUp.itemTitles(), ElementsAre("first", "second"));
    EXPECT_EQ(popUp.indexOfSelectedItem(), 0);
}

TEST_F(FormBinderTest, PopUpThatHasItemsKeepsThem) {
    NSPopUpButton popUp;
    popUp.addItemWithTitle("own");
    QComboBox& comboBox = add<QComboBox>("choice_");
    comboBox.addItem("of the form");
    owner_.published = {{"choice_", &popUp}};
    bind();
    EXPECT_THAT(popUp.itemTitles(), ElementsAre("own"));
    EXPECT_EQ(comboBox.count(), 1);
    EXPECT_EQ(comboBox.itemText(0), "own");
}

/// A pop-up of either kind, bound to a widget of the form, and how often an item was put into the widget.
template <typename Widget>
class BoundPopUp {
public:
    BoundPopUp(NSPopUpButton& model, Widget& widget) : model_(model) {
        QObject::connect(widget.model(), &QAbstractItemModel::rowsInserted, &context_,
                         [this](const QModelIndex&, int first, int last) { inserted += last - first + 1; });
    }

    /// Adds items one at a time, and changes everything else meanwhile.
    void fill(const std::string& prefix, int count) {
        for (int i = 0; i < count; ++i) {
            model_.addItemWithTitle(prefix + std::to_string(i));
            model_.setHidden(i % 2 == 0);
            model_.setEnabled(i % 3 == 0);
            model_.selectItemAtIndex(i);
            model_.setTitle(std::to_string(i));
        }
    }

    int inserted = 0;

private:
    NSPopUpButton& model_;
    QObject context_;
};

TEST_F(FormBinderTest, EachItemOfAPopUpIsPutIntoItsWidgetOnceHoweverMuchChanges) {
    NSPopUpButton model;
    auto& widget = add<QComboBox>("choice_");
    owner_.published = {{"choice_", &model}};
    bind();
    BoundPopUp bound(model, widget);

    bound.fill("a", 300);
    EXPECT_EQ(bound.inserted, 300);
    EXPECT_EQ(widget.currentText(), "a299");

    model.removeAllItems();
    EXPECT_EQ(widget.count(), 0);
    bound.fill("b", 300);
    EXPECT_EQ(bound.inserted, 600);
    EXPECT_EQ(widget.itemText(0), "b0");
    EXPECT_EQ(widget.itemText(299), "b299");
}

TEST_F(FormBinderTest, EachChoiceOfAPullDownIsPutIntoItsWidgetOnceHoweverMuchChanges) {
    NSPopUpButton model(true);
    auto& widget = add<PullDown>("choice_");
    owner_.published = {{"choice_", &model}};
    bind();
    BoundPopUp bound(model, widget);

    bound.fill("a", 300);

    EXPECT_EQ(bound.inserted, 299);
    EXPECT_EQ(widget.itemText(0), "a1");
    EXPECT_EQ(widget.currentText(), "a299");
}

TEST_F(FormBinderTest, TextOfTheFormGoesIntoAnEmptyTextField) {
    NSTextField text;
    add<QLabel>("text_").setText("of the form");
    owner_.published = {{"text_", &text}};
    bind();
    EXPECT_EQ(text.stringValue(), "of the form");
}

TEST_F(FormBinderTest, PagesOfAStackBecomeTabsNamedAsThePagesAre) {
    NSTabView tabView;
    QStackedWidget& stack = add<QStackedWidget>("tabs_");
    for (const char* name : {"one", "two"}) {
        stack.addWidget(std::make_unique<QWidget>().release());
        stack.widget(stack.count() - 1)->setAccessibleName(name);
    }
    owner_.published = {{"tabs_", &tabView}};

    bind();
    tabView.selectTabViewItemAtIndex(1);

    EXPECT_EQ(tabView.numberOfTabViewItems(), 2);
    EXPECT_EQ(stack.currentIndex(), 1);
}

TEST_F(FormBinderTest, ChangesByTheProgramAreShownAndFireNothing) {
    NSPopUpButton popUp;
    NSButton button(NSButton::Type::Switch);
    NSTextField text;
    QComboBox& comboBox = add<QComboBox>("choice_", "choose:");
    comboBox.addItems({"first", "second"});
    QCheckBox& checkBox = add<QCheckBox>("check_", "check:");
    QLabel& label = add<QLabel>("text_");
    owner_.published = {{"choice_", &popUp}, {"check_", &button}, {"text_", &text}};
    owner_.selectors = {"choose:", "check:"};
    bind();

    popUp.removeAllItems();
    popUp.addItemWithTitle("KD-55");
    popUp.addItemWithTitle("KD-65");
    popUp.selectItemAtIndex(1);
    button.setState(1);
    text.setStringValue("an alert");

    EXPECT_EQ(comboBox.currentText(), "KD-65");
    EXPECT_EQ(comboBox.count(), 2);
    EXPECT_TRUE(checkBox.isChecked());
    EXPECT_EQ(label.text(), "an alert");
    EXPECT_THAT(owner_.fired, IsEmpty());
}

TEST_F(FormBinderTest, MixedStateIsShownAsPartlyChecked) {
    NSButton button(NSButton::Type::Switch);
    QCheckBox& checkBox = add<QCheckBox>("check_");
    owner_.published = {{"check_", &button}};
    bind();
    button.setState(-1);
    EXPECT_EQ(checkBox.checkState(), Qt::PartiallyChecked);
}

TEST_F(FormBinderTest, HiddenControlTakesTheLabelThatNamesItAlong) {
    NSPopUpButton popUp;
    QLabel& label = add<QLabel>("label");
    QComboBox& comboBox = add<QComboBox>("choice_");
    label.setBuddy(&comboBox);
    owner_.published = {{"choice_", &popUp}};
    bind();

    popUp.setHidden(true);
    EXPECT_TRUE(comboBox.isHidden());
    EXPECT_TRUE(label.isHidden());

    popUp.setHidden(false);
    EXPECT_FALSE(comboBox.isHidden());
    EXPECT_FALSE(label.isHidden());
}

TEST_F(FormBinderTest, LabelWithAnOutletOfItsOwnIsHiddenByThatAlone) {
    NSButton button(NSButton::Type::Switch);
    NSTextField title;
    QCheckBox& checkBox = add<QCheckBox>("check_");
    QLabel& label = add<QLabel>("title_");
    label.setBuddy(&checkBox);
    owner_.published = {{"check_", &button}, {"title_", &title}};
    bind();

    title.setHidden(true);
    button.setState(1);

    EXPECT_TRUE(label.isHidden());
    EXPECT_FALSE(checkBox.isHidden());
}

TEST_F(FormBinderTest, HidingAViewMovesNothingElse) {
    NSButton upper;
    add<QPushButton>("upper_");
    QLabel& lower = add<QLabel>("lower");
    lower.setText("stays");
    owner_.published = {{"upper_", &upper}};
    bind();
    show();
    const QRect before = lower.geometry();

    upper.setHidden(true);
    rows_->activate();

    EXPECT_EQ(lower.geometry(), before);
}

TEST_F(FormBinderTest, HidingTheViewHidesTheForm) {
    bind();
    view_.setHidden(true);
    EXPECT_TRUE(form_.isHidden());
}

TEST_F(FormBinderTest, BoundFormDoesNotBecomeAWindowByItself) {
    bind();
    view_.setHidden(false);
    EXPECT_FALSE(form_.isVisible());
}

TEST_F(FormBinderTest, ClickOnACheckBoxChangesTheControlAndFires) {
    NSButton button(NSButton::Type::Switch);
    QCheckBox& checkBox = add<QCheckBox>("check_", "check:");
    owner_.published = {{"check_", &button}};
    owner_.selectors = {"check:"};
    bind();
    show();

    QTest::mouseClick(&checkBox, Qt::LeftButton, {}, {8, checkBox.height() / 2});

    EXPECT_EQ(button.state(), 1);
    EXPECT_TRUE(checkBox.isChecked());
    EXPECT_THAT(owner_.fired, ElementsAre("check:"));
}

TEST_F(FormBinderTest, SpaceKeyOnACheckBoxChangesTheControlAndFires) {
    NSButton button(NSButton::Type::Switch);
    QCheckBox& checkBox = add<QCheckBox>("check_", "check:");
    owner_.published = {{"check_", &button}};
    owner_.selectors = {"check:"};
    bind();
    show();

    QTest::keyClick(&checkBox, Qt::Key_Space);

    EXPECT_EQ(button.state(), 1);
    EXPECT_THAT(owner_.fired, ElementsAre("check:"));
}

TEST_F(FormBinderTest, ButtonsThatOnlyFireNeedNoOutlet) {
    QPushButton& pushButton = add<QPushButton>("", "push:");
    QToolButton& toolButton = add<QToolButton>("", "use:");
    owner_.selectors = {"push:", "use:"};
    bind();
    show();

    QTest::mouseClick(&pushButton, Qt::LeftButton);
    QTest::mouseClick(&toolButton, Qt::LeftButton);

    EXPECT_THAT(owner_.fired, ElementsAre("push:", "use:"));
}

TEST_F(FormBinderTest, DisabledControlsAreDeafToMouseAndKeys) {
    NSButton button(NSButton::Type::Switch);
    NSPopUpButton popUp;
    QCheckBox& checkBox = add<QCheckBox>("check_", "check:");
    QComboBox& comboBox = add<QComboBox>("choice_", "choose:");
    comboBox.addItems({"first", "second"});
    owner_.published = {{"check_", &button}, {"choice_", &popUp}};
    owner_.selectors = {"check:", "choose:"};
    bind();
    show();
    button.setEnabled(false);
    popUp.setEnabled(false);

    QTest::mouseClick(&checkBox, Qt::LeftButton, {}, {8, checkBox.height() / 2});
    QTest::keyClick(&comboBox, Qt::Key_Down);

    EXPECT_EQ(button.state(), 0);
    EXPECT_EQ(popUp.indexOfSelectedItem(), 0);
    EXPECT_THAT(owner_.fired, IsEmpty());
}

TEST_F(FormBinderTest, DownKeyOnAPopUpSelectsTheNextItemAndFires) {
    NSPopUpButton popUp;
    QComboBox& comboBox = add<QComboBox>("choice_", "choose:");
    comboBox.addItems({"first", "second"});
    owner_.published = {{"choice_", &popUp}};
    owner_.selectors = {"choose:"};
    bind();
    show();

    QTest::keyClick(&comboBox, Qt::Key_Down);

    EXPECT_EQ(popUp.indexOfSelectedItem(), 1);
    EXPECT_THAT(owner_.fired, ElementsAre("choose:"));
}

TEST_F(FormBinderTest, PickingTheSelectedItemAgainFiresAgain) {
    NSPopUpButton popUp;
    QComboBox& comboBox = add<QComboBox>("choice_", "choose:");
    comboBox.addItems({"first", "second"});
    owner_.published = {{"choice_", &popUp}};
    owner_.selectors = {"choose:"};
    bind();
    show();

    comboBox.showPopup();
    QTest::keyClick(comboBox.view(), Qt::Key_Enter);

    EXPECT_EQ(popUp.indexOfSelectedItem(), 0);
    EXPECT_THAT(owner_.fired, ElementsAre("choose:"));
}

TEST_F(FormBinderTest, ClickOnATabSelectsIt) {
    NSTabView tabView;
    QTabWidget& tabs = add<QTabWidget>("tabs_");
    tabs.addTab(std::make_unique<QWidget>().release(), "one");
    tabs.addTab(std::make_unique<QWidget>().release(), "two");
    owner_.published = {{"tabs_", &tabView}};
    bind();
    show();

    QTest::mouseClick(tabs.tabBar(), Qt::LeftButton, {}, tabs.tabBar()->tabRect(1).center());

    EXPECT_EQ(tabView.indexOfSelectedTabViewItem(), 1);
}

TEST_F(FormBinderTest, WidgetShowsTheControlAgainAfterAnActThatTheControlRefused) {
    NSPopUpButton popUp;
    QComboBox& comboBox = add<QComboBox>("choice_", "choose:");
    owner_.published = {{"choice_", &popUp}};
    owner_.selectors = {"choose:"};
    popUp.addItemWithTitle("first");
    bind();
    show();
    // An item that only the widget knows stands for a menu that is open while the program takes items away.
    comboBox.addItem("no longer there");

    QTest::keyClick(&comboBox, Qt::Key_Down);

    EXPECT_EQ(comboBox.count(), 1);
    EXPECT_EQ(comboBox.currentText(), "first");
    EXPECT_THAT(owner_.fired, IsEmpty());
}

TEST_F(FormBinderTest, ActionThatTakesItsChangeBackIsShown) {
    NSButton button(NSButton::Type::Switch);
    QCheckBox& checkBox = add<QCheckBox>("check_");
    owner_.published = {{"check_", &button}};
    bind();
    button.setAction([&](platform::NSControl&) { button.setState(0); });
    show();

    QTest::keyClick(&checkBox, Qt::Key_Space);

    EXPECT_FALSE(checkBox.isChecked());
}

TEST_F(FormBinderTest, ActionThatThrowsIsLoggedAndTheToolkitGoesOn) {
    NSButton button(NSButton::Type::Switch);
    QCheckBox& checkBox = add<QCheckBox>("check_");
    owner_.published = {{"check_", &button}};
    bind();
    button.setAction([](platform::NSControl&) { throw std::runtime_error("bad luck"); });
    show();

    QTest::keyClick(&checkBox, Qt::Key_Space);

    EXPECT_THAT(platform_.log.lines, ElementsAre("Unexpected error: bad luck"));
}

TEST_F(FormBinderTest, EmbeddedControllersWidgetComesToStandInItsPage) {
    NSViewController controller("");
    QWidget& page = add<QWidget>("page_");
    page.setLayout(std::make_unique<QVBoxLayout>().release());
    QLabel content;
    widgetOf_ = [&](const NSView& view) { return &view == &controller.view() ? &content : nullptr; };
    owner_.published = {{"page_", &controller}};

    bind();

    EXPECT_EQ(content.parentWidget(), &page);
    content.setParent(nullptr);
}

TEST_F(FormBinderTest, TabKeyGoesThroughAnEmbeddedFormWhereItStands) {
    NSViewController controller("");
    QCheckBox& before = add<QCheckBox>("");
    QWidget& page = add<QWidget>("page_");
    page.setLayout(std::make_unique<QVBoxLayout>().release());
    QCheckBox& behind = add<QCheckBox>("");
    QWidget content;
    auto* const first = std::make_unique<QCheckBox>(&content).release();
    auto* const second = std::make_unique<QCheckBox>(&content).release();
    widgetOf_ = [&](const NSView& view) { return &view == &controller.view() ? &content : nullptr; };
    owner_.published = {{"page_", &controller}};
    bind();
    show();
    form_.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form_));

    before.setFocus();
    std::vector<QWidget*> stops;
    for (int i = 0; i < 3; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        stops.push_back(QApplication::focusWidget());
    }

    EXPECT_THAT(stops, ElementsAre(first, second, &behind));
    content.setParent(nullptr);
}

TEST_F(FormBinderTest, TabKeyComesToAnEmbeddedFormFirstWhereNothingStandsBeforeIt) {
    NSViewController controller("");
    QWidget& page = add<QWidget>("page_");
    page.setLayout(std::make_unique<QVBoxLayout>().release());
    QCheckBox& behind = add<QCheckBox>("");
    QCheckBox& last = add<QCheckBox>("");
    QWidget content;
    auto* const only = std::make_unique<QCheckBox>(&content).release();
    widgetOf_ = [&](const NSView& view) { return &view == &controller.view() ? &content : nullptr; };
    owner_.published = {{"page_", &controller}};
    bind();
    show();
    form_.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form_));

    only->setFocus();
    std::vector<QWidget*> stops;
    for (int i = 0; i < 3; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        stops.push_back(QApplication::focusWidget());
    }

    EXPECT_THAT(stops, ElementsAre(&behind, &last, only));
    content.setParent(nullptr);
}

/// A matrix of three radio buttons.
class MatrixTest : public FormFixture {
protected:
    MatrixTest() {
        for (const char* text : {"one", "two", "three"}) {
            radios_.push_back(std::make_unique<QRadioButton>(text, &box_).release());
        }
        owner_.published = {{"matrix_", &model_}};
        owner_.selectors = {"turn:"};
        box_.setLayout(std::make_unique<QVBoxLayout>().release());
        for (QRadioButton* radio : radios_) box_.layout()->addWidget(radio);
        bind();
        show();
    }

    platform::NSMatrix model_;
    QGroupBox& box_ = add<QGroupBox>("matrix_", "turn:");
    std::vector<QRadioButton*> radios_;
};

TEST_F(MatrixTest, RowsComeFromTheFormAndTheFirstIsSelected) {
    EXPECT_EQ(model_.numberOfRows(), 3);
    EXPECT_EQ(model_.selectedRow(), 0);
    EXPECT_TRUE(radios_[0]->isChecked());
    EXPECT_THAT(owner_.fired, IsEmpty());
}

TEST_F(MatrixTest, RowSelectedByTheProgramIsShownAndFiresNothing) {
    model_.selectCellAtRowColumn(2, 0);
    EXPECT_TRUE(radios_[2]->isChecked());
    EXPECT_THAT(owner_.fired, IsEmpty());
}

TEST_F(MatrixTest, ClickSelectsARowAndFiresEachTime) {
    QTest::mouseClick(radios_[1], Qt::LeftButton, {}, {8, radios_[1]->height() / 2});
    QTest::mouseClick(radios_[1], Qt::LeftButton, {}, {8, radios_[1]->height() / 2});
    EXPECT_EQ(model_.selectedRow(), 1);
    EXPECT_THAT(owner_.fired, ElementsAre("turn:", "turn:"));
}

TEST_F(MatrixTest, ArrowKeySelectsTheNextRow) {
    QTest::keyClick(radios_[0], Qt::Key_Down);
    EXPECT_EQ(model_.selectedRow(), 1);
}

TEST_F(MatrixTest, ActionThatGoesBackIsShown) {
    model_.setAction([this](platform::NSControl&) { model_.selectCellAtRowColumn(0, 0); });
    QTest::keyClick(radios_[0], Qt::Key_Down);
    EXPECT_TRUE(radios_[0]->isChecked());
    EXPECT_FALSE(radios_[1]->isChecked());
}

TEST_F(FormBinderTest, UntiedWidgetsNoLongerReachTheModelNorFollowIt) {
    NSButton button(NSButton::Type::Switch);
    QCheckBox& checkBox = add<QCheckBox>("check_", "check:");
    owner_.published = {{"check_", &button}};
    owner_.selectors = {"check:"};
    bind();
    show();

    binding_.reset();
    QTest::keyClick(&checkBox, Qt::Key_Space);
    EXPECT_EQ(button.state(), 0);
    EXPECT_TRUE(checkBox.isChecked());

    button.setState(1);
    button.setState(0);
    EXPECT_TRUE(checkBox.isChecked());
}

/// A field in which the Return key presses a button of the owner's.
class ReturnKeyTest : public FormFixture {
protected:
    ReturnKeyTest() {
        widget_.setProperty("returnPresses", "apply_");
        add<QPushButton>("apply_", "apply:");
        owner_.published = {{"field_", &field_}, {"apply_", &button_}};
        owner_.selectors = {"apply:"};
        bind();
    }

    NSTextField field_;
    NSButton button_;
    QLineEdit& widget_ = add<QLineEdit>("field_");
};

TEST_F(ReturnKeyTest, PressesTheButtonOnceWithWhatWasTyped) {
    QTest::keyClicks(&widget_, "1280");
    QTest::keyClick(&widget_, Qt::Key_Return);
    EXPECT_THAT(owner_.fired, ElementsAre("apply:"));
    EXPECT_EQ(field_.stringValue(), "1280");
}

TEST_F(ReturnKeyTest, PressesNoButtonThatIsSwitchedOff) {
    button_.setEnabled(false);
    QTest::keyClick(&widget_, Qt::Key_Return);
    EXPECT_THAT(owner_.fired, IsEmpty());
}

TEST_F(FormBinderTest, ReturnKeyInAFieldThatNamesNoButtonPressesNone) {
    NSTextField field;
    auto& widget = add<QLineEdit>("field_");
    add<QPushButton>("apply", "apply:");
    owner_.published = {{"field_", &field}};
    owner_.selectors = {"apply:"};
    bind();
    QTest::keyClick(&widget, Qt::Key_Return);
    EXPECT_THAT(owner_.fired, IsEmpty());
}

TEST_F(FormBinderTest, LabelIsGreyedWithItsControl) {
    platform::NSSlider slider;
    add<QSlider>("slider_");
    auto& label = add<QLabel>("end");
    label.setProperty("enabledWith", "slider_");
    owner_.published = {{"slider_", &slider}};
    slider.setEnabled(false);
    bind();
    EXPECT_FALSE(label.isEnabled());
    slider.setEnabled(true);
    EXPECT_TRUE(label.isEnabled());
}

TEST_F(FormBinderTest, LabelShowsTheWordsOfACanvas) {
    class Tried : public NSView {
    public:
        std::optional<double> outcome;
        [[nodiscard]] std::optional<double> accessibilityValue() const override { return outcome; }
        void tell(double value) {
            outcome = value;
            setNeedsDisplay(true);
        }
    } view;
    add<CanvasView>("area_").setProperty("valueTexts", QStringList{"missed", "counted"});
    auto& label = add<QLabel>("words");
    label.setProperty("tells", "area_");
    owner_.published = {{"area_", &view}};
    bind();
    EXPECT_EQ(label.text(), "");
    view.tell(0.0);
    EXPECT_EQ(label.text(), "missed");
    view.tell(1.0);
    EXPECT_EQ(label.text(), "counted");
}

TEST_F(FormBinderTest, SignShowsOnceItsButtonWasPressedAndTakesNoRoom) {
    auto& button = add<QPushButton>("apply", "apply:");
    auto& sign = add<QLabel>("sign");
    sign.setText("Done");
    sign.setProperty("confirms", "apply");
    auto& below = add<QLabel>("below");
    owner_.selectors = {"apply:"};
    bind();
    show();
    const int place = below.y();
    EXPECT_FALSE(sign.isVisible());
    button.click();
    EXPECT_TRUE(sign.isVisible());
    EXPECT_EQ(below.y(), place);
}

TEST_F(FormBinderTest, ButtonHasThePictogramThatTheFormNames) {
    platform_.bundle.resourcePaths = {KELVO_RESOURCES "/pictograms/DisplayTurned.svg"};
    auto& pictured = add<QRadioButton>("pictured");
    pictured.setProperty("pictogram", "DisplayTurned");
    const auto& plain = add<QRadioButton>("plain");
    const FormBinder binder("TestForm", form_, owner_, widgetOf_, std::make_shared<Pictograms>(kTestBundleIdentifier));
    binding_.emplace(binder.bind(view_));
    EXPECT_FALSE(pictured.icon().pixmap(24, 24).isNull());
    EXPECT_TRUE(plain.icon().isNull());
}

} // namespace

} // namespace kelvo
