#include "qt/ToolkitPlatform.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QComboBox>
#include <QFile>
#include <QRegularExpression>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>

namespace kelvo {

namespace {

using testing::IsSupersetOf;
using testing::Not;

/// An owner for each form of the pane, with the outlets and actions of its controller.
const std::map<std::string, std::function<std::unique_ptr<platform::NSNibOwner>()>> owners = {
    {"KelvoTouchDisplayPref", [] { return std::make_unique<PaneStandIn>(); }},
};

/// A form that is bound for as long as this lives.
struct BoundForm {
    explicit BoundForm(const std::string& name)
        : owner(owners.at(name)()), nib(platform.nibs.instantiate(name, *owner, view)) {}

    [[nodiscard]] QWidget& widget() const { return *platform.nibs.widgetFor(view); }

    ToolkitPlatform platform;
    platform::NSView view;
    std::unique_ptr<platform::NSNibOwner> owner;
    std::unique_ptr<platform::NSNib> nib;
};

std::set<std::string> keysOfEnglishStrings() {
    QFile file(KELVO_STRINGS);
    if (!file.open(QFile::ReadOnly)) return {};
    static const QRegularExpression entry(R"re(^"([^"]+)"\s*=\s*".+";$)re", QRegularExpression::MultilineOption);
    std::set<std::string> keys;
    for (auto match = entry.globalMatch(QString::fromUtf8(file.readAll())); match.hasNext();) {
        keys.insert(match.next().captured(1).toStdString());
    }
    return keys;
}

class PaneFormsTest : public testing::TestWithParam<std::string> {};

TEST(PaneForms, EachHasAnOwnerHere) {
    for (const auto& [name, make] : paneForms()) EXPECT_TRUE(owners.contains(name)) << name;
}

TEST(PaneForms, EnglishHasTheTextsThatTheLogicAsksFor) {
    EXPECT_THAT(keysOfEnglishStrings(),
                IsSupersetOf({"Alert.disconnect", "Alert.driverDisable", "Alert.Rotate", "Alert.Button.YES",
                              "Alert.Button.NO", "Alert.HotKey.Title", "PreferenceFolderName", "Window.Title"}));
}

TEST_P(PaneFormsTest, FitsItsOwner) { EXPECT_NO_THROW(BoundForm{GetParam()}); }

TEST_P(PaneFormsTest, EveryTextItAsksForExistsInEnglish) {
    const BoundForm form(GetParam());
    EXPECT_FALSE(form.platform.bundle.keysAskedFor.empty());
    EXPECT_THAT(keysOfEnglishStrings(), IsSupersetOf(form.platform.bundle.keysAskedFor));
}

TEST_P(PaneFormsTest, EveryControlHasAnAccessibleNameAndIsLargeEnoughToTouch) {
    const BoundForm form(GetParam());
    for (QWidget* widget : form.widget().findChildren<QWidget*>()) {
        if (!qobject_cast<QAbstractButton*>(widget) && !qobject_cast<QComboBox*>(widget)) continue;
        const std::string name = widget->objectName().toStdString();
        EXPECT_FALSE(QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name).isEmpty()) << name;
        EXPECT_GE(widget->minimumHeight(), 40) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(Forms, PaneFormsTest, testing::Values("KelvoTouchDisplayPref"),
                         [](const auto& form) { return form.param; });

} // namespace

} // namespace kelvo
