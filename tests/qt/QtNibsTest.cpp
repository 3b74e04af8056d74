#include "qt/ToolkitPlatform.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QTabWidget>
#include <QVBoxLayout>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace kelvo {

namespace {

using platform::NSViewController;
using testing::HasSubstr;

/// A controller of the form "Box", which has one check box and nothing else.
class BoxController : public NSViewController {
public:
    explicit BoxController(std::string form = "Box") : NSViewController(std::move(form)) {}
    [[nodiscard]] std::vector<platform::NSOutlet> outlets() override { return {{"box_", &box_}}; }
    void awakeFromNib() override { ++awakenings; }

    platform::NSButton box_{platform::NSButton::Type::Switch};
    int awakenings = 0;
};

/// A controller of the form "Outer", which has a page for a BoxController.
class OuterController : public NSViewController {
public:
    OuterController() : NSViewController("Outer") {}
    [[nodiscard]] std::vector<platform::NSOutlet> outlets() override { return {{"innerVC_", &innerVC_}}; }

    BoxController innerVC_;
};

std::unique_ptr<QWidget> makeBox() {
    auto form = std::make_unique<QWidget>();
    auto box = std::make_unique<QCheckBox>("Box.Text", form.get());
    box->setObjectName("box_");
    box->setToolTip("Box.Help");
    static_cast<void>(box.release());
    return form;
}

std::unique_ptr<QWidget> makeOuter() {
    auto form = std::make_unique<QWidget>();
    auto page = std::make_unique<QWidget>(form.get());
    page->setObjectName("innerVC_");
    page->setLayout(std::make_unique<QVBoxLayout>().release());
    static_cast<void>(page.release());
    return form;
}

std::unique_ptr<QWidget> makeTexts() {
    auto form = std::make_unique<QWidget>();
    form->setWindowTitle("Form.Title");
    auto choice = std::make_unique<QComboBox>(form.get());
    choice->addItems({"Item.One", "Item.Two"});
    choice->setAccessibleName("Choice.Name");
    choice->setAccessibleDescription("Choice.Description");
    static_cast<void>(choice.release());
    auto tabs = std::make_unique<QTabWidget>(form.get());
    tabs->addTab(std::make_unique<QWidget>().release(), "Tab.One");
    static_cast<void>(tabs.release());
    return form;
}

class QtNibsTest : public testing::Test {
protected:
    QWidget& widgetOf(NSViewController& controller) { return *platform_.nibs.widgetFor(controller.view()); }
    QCheckBox& boxOf(BoxController& controller) { return *widgetOf(controller).findChild<QCheckBox*>("box_"); }

    ToolkitPlatform platform_{{{"Box", makeBox}, {"Outer", makeOuter}, {"Texts", makeTexts}}};
};

TEST_F(QtNibsTest, UnknownFormIsAnErrorThatNamesIt) {
    BoxController controller("Missing");
    try {
        controller.view();
        FAIL() << "the form cannot have been found";
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), HasSubstr("Missing"));
    }
}

TEST_F(QtNibsTest, ViewWithoutAFormHasNoWidget) {
    const platform::NSView view;
    EXPECT_EQ(platform_.nibs.widgetFor(view), nullptr);
}

TEST_F(QtNibsTest, ControllerIsAwakenedOnceItsFormMirrorsIt) {
    BoxController controller;
    controller.box_.setState(1);
    EXPECT_TRUE(boxOf(controller).isChecked());
    EXPECT_EQ(controller.awakenings, 1);
}

TEST_F(QtNibsTest, TextsOfTheFormComeFromTheBundle) {
    NSViewController controller("Texts");
    QWidget& form = widgetOf(controller);
    const auto& choice = *form.findChild<QComboBox*>();
    EXPECT_EQ(form.windowTitle(), "text of Form.Title");
    EXPECT_EQ(choice.itemText(0), "text of Item.One");
    EXPECT_EQ(choice.itemText(1), "text of Item.Two");
    EXPECT_EQ(choice.accessibleName(), "text of Choice.Name");
    EXPECT_EQ(choice.accessibleDescription(), "text of Choice.Description");
    EXPECT_EQ(form.findChild<QTabWidget*>()->tabText(0), "text of Tab.One");
}

TEST_F(QtNibsTest, KeyWithoutATextIsEmpty) {
    platform_.bundle.missingKeys = {"Box.Text"};
    BoxController controller;
    EXPECT_EQ(boxOf(controller).text(), "");
    EXPECT_EQ(boxOf(controller).toolTip(), "text of Box.Help");
}

TEST_F(QtNibsTest, TextsAreEmptyWithoutABundle) {
    platform_.bundle.isLoaded = false;
    BoxController controller;
    EXPECT_EQ(boxOf(controller).text(), "");
    EXPECT_EQ(boxOf(controller).toolTip(), "");
}

TEST_F(QtNibsTest, EmbeddedControllersFormIsLoadedIntoItsPage) {
    OuterController controller;
    QWidget& outer = widgetOf(controller);
    QWidget* inner = platform_.nibs.widgetFor(controller.innerVC_.view());
    ASSERT_NE(inner, nullptr);
    EXPECT_EQ(inner->parentWidget(), outer.findChild<QWidget*>("innerVC_"));
    EXPECT_EQ(controller.innerVC_.awakenings, 1);
}

TEST_F(QtNibsTest, FormLeavesTheWindowItStoodInWhenItsControllerGoes) {
    QWidget window;
    {
        BoxController controller;
        widgetOf(controller).setParent(&window);
        EXPECT_EQ(window.findChildren<QCheckBox*>().size(), 1);
    }
    EXPECT_TRUE(window.findChildren<QCheckBox*>().isEmpty());
}

TEST_F(QtNibsTest, WindowMayGoBeforeTheControllersOfItsForms) {
    OuterController controller;
    auto window = std::make_unique<QWidget>();
    widgetOf(controller).setParent(window.get());

    window.reset();
    controller.innerVC_.box_.setState(1);

    EXPECT_EQ(platform_.nibs.widgetFor(controller.view()), nullptr);
    EXPECT_EQ(platform_.nibs.widgetFor(controller.innerVC_.view()), nullptr);
}

} // namespace

} // namespace kelvo
