#include "hosts/window/PaneWindow.h"
#include "linux/BundleDirectory.h"
#include "linux/PlistCoder.h"
#include "linux/PosixFileManager.h"
#include "linux/SystemClock.h"
#include "platform/Platform.h"
#include "qt/CanvasView.h"
#include "qt/FormTexts.h"
#include "qt/Forms.h"
#include "qt/KnownFont.h"
#include "qt/PullDown.h"
#include "qt/QtApplication.h"
#include "qt/QtNibs.h"
#include "qt/QtRunLoop.h"
#include "qt/ToolkitPlatform.h"
#include "qt/TouchSize.h"
#include "support/EnvironmentVariable.h"
#include "support/TemporaryDirectory.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QScrollArea>
#include <QScrollBar>
#include <QSlider>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>

#include <gtest/gtest.h>

namespace kelvo {

namespace {

constexpr int kTabs = 4;
constexpr int kGestureTab = 1;
/// Before each row of gestures.
constexpr int kRowMargin = 10;

/// The smallest screen the window is meant for, less what the desktop takes of it.
constexpr QSize kSmallScreen(1024, 560);

/// What a home holds at the start.
struct State {
    std::string devices = "<string>Kelvo 24</string>";
    bool isDriverEnabled = true;
    std::string systemVersion = "1090";
};

std::string utilitiesOf(const State& state) {
    return "<plist version=\"1.0\"><dict><key>SelectedMenuItem</key><integer>0</integer><key>IsShowStatuMenu</key>"
           "<true/><key>DriverEnable</key><" +
           std::string(state.isDriverEnabled ? "true" : "false") + "/><key>CurrentDeviceType</key><array>" +
           state.devices + "</array></dict></plist>";
}

void setFontSize(int points) {
    QFont font = QApplication::font();
    font.setPointSize(points);
    QApplication::setFont(font);
}

/// A user with a home, a language and a font.
class User {
public:
    User(const std::string& locale, int points, const State& state)
        : utilities_(home_.write("Library/Preferences/KelvoTouchDisplay/Utilities.plist", utilitiesOf(state))),
          homeVariable_("HOME", home_.path()),
          library_("KELVO_LOCAL_LIBRARY", home_.path("machine")),
          version_("KELVO_SYSTEM_VERSION", state.systemVersion),
          language_("LANGUAGE", std::nullopt),
          all_("LC_ALL", std::nullopt),
          messages_("LC_MESSAGES", std::nullopt),
          lang_("LANG", locale + ".UTF-8") {
        QLocale::setDefault(QLocale(QString::fromStdString(locale)));
        setFontSize(points);
    }

private:
    TemporaryDirectory home_;
    std::string utilities_;
    EnvironmentVariable homeVariable_, library_, version_, language_, all_, messages_, lang_;
};

/// The window as that user gets it, with the pane of the build folder, but no peers.
class ShownPane {
public:
    ShownPane(const std::string& locale, int points, const State& state = {}) : user_(locale, points, state) {
        QGuiApplication::setLayoutDirection(writingDirection(bundle_.get()));
        application_.setWindow(window_);
        window_.resize(kSmallScreen);
        window_.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window_));
    }

    [[nodiscard]] PaneWindow& window() { return window_; }

    template <typename Widget>
    [[nodiscard]] Widget& widget(const char* name) const {
        return *window_.findChild<Widget*>(name);
    }

    /// As the user picks a tab.
    void pickTab(int index) const {
        auto& tabs = widget<QComboBox>("tabPopUp_");
        tabs.setCurrentIndex(index);
        emit tabs.activated(index);
    }

    void settle() const {
        // Layouts of what was just shown are worked out by events that cause further ones.
        for (int i = 0; i < 5; ++i) QCoreApplication::processEvents();
    }

private:
    User user_;
    RecordedLog log_;
    PosixFileManager fileManager_;
    PlistCoder propertyLists_;
    QtRunLoop runLoop_;
    EmptyWorld noPorts_;
    SystemClock clock_;
    QtApplication application_;
    std::unique_ptr<BundleDirectory> bundle_ = BundleDirectory::open(KELVO_PANE);
    QtNibs nibs_{bundle_->identifier(), paneForms()};
    platform::Platform platform_{.log = log_,
                                 .fileManager = fileManager_,
                                 .propertyLists = propertyLists_,
                                 .bundles = *bundle_,
                                 .messagePorts = noPorts_,
                                 .runLoop = runLoop_,
                                 .clock = clock_,
                                 .systemVersion = clock_,
                                 .application = &application_,
                                 .nibs = &nibs_};
    platform::PlatformInUse inUse_{platform_};
    std::unique_ptr<platform::NSPreferencePane> pane_ = bundle_->loadPane(platform_);
    PaneWindow window_{*pane_, nibs_};
};

/// "NAME "TEXT"" for a complaint.
std::string described(const QWidget& widget) {
    return widget.objectName().toStdString() + " \"" + widget.property("text").toString().toStdString() + '"';
}

std::string sizeText(QSize size) { return std::to_string(size.width()) + 'x' + std::to_string(size.height()); }

/// Whether a row of the list is as wide as the list can make it.
bool fillsList(const QWidget& row) {
    const auto* area = qobject_cast<const QScrollArea*>(row.parentWidget()->parentWidget()->parentWidget());
    return area && row.width() + kRowMargin == area->viewport()->width();
}

/// The title of a row is set smaller where there is no room for it, and only there.
int widthNeededBy(const PullDown& pullDown, const QString& title) {
    return fillsList(*pullDown.parentWidget()) ? pullDown.leastWidthFor(title) : pullDown.widthFor(title);
}

/// What a widget needs to show all it says; nothing for one that says nothing.
QSize neededSize(const QWidget& widget) {
    if (const auto* label = qobject_cast<const QLabel*>(&widget)) {
        if (label->text().isEmpty()) return {};
        if (!label->wordWrap()) return label->sizeHint();
        return {label->minimumSizeHint().width(), label->heightForWidth(label->width())};
    }
    if (const auto* pullDown = qobject_cast<const PullDown*>(&widget)) {
        return {widthNeededBy(*pullDown, pullDown->title()), pullDown->sizeHint().height()};
    }
    if (qobject_cast<const QAbstractButton*>(&widget) || qobject_cast<const QComboBox*>(&widget) ||
        qobject_cast<const QSlider*>(&widget)) {
        return {widget.minimumSizeHint().width(), widget.sizeHint().height()};
    }
    if (qobject_cast<const QGroupBox*>(&widget) || qobject_cast<const QLineEdit*>(&widget)) {
        return widget.minimumSizeHint();
    }
    return {};
}

/// Buttons and check boxes shrink their hints where they may elide, which these may not.
QSize neededSizeOfWhole(const QWidget& widget) {
    const bool isButton = qobject_cast<const QAbstractButton*>(&widget) != nullptr;
    return isButton ? widget.sizeHint() : neededSize(widget);
}

bool isScrolled(const QWidget& widget) {
    const QWidget* viewport = widget.parentWidget();
    const auto* area = viewport ? qobject_cast<const QScrollArea*>(viewport->parentWidget()) : nullptr;
    return area && area->widget() == &widget;
}

/// What styles put together out of parts of their own.
bool isPartOfToolkitWidget(const QWidget& widget) {
    for (const QWidget* each = widget.parentWidget(); each; each = each->parentWidget()) {
        if (qobject_cast<const QTabBar*>(each) || qobject_cast<const QComboBox*>(each)) return true;
    }
    return qobject_cast<const QScrollBar*>(&widget) != nullptr;
}

bool isTouched(const QWidget& widget) {
    if (const auto* canvas = qobject_cast<const CanvasView*>(&widget)) return canvas->focusPolicy() != Qt::NoFocus;
    return qobject_cast<const QAbstractButton*>(&widget) || qobject_cast<const QComboBox*>(&widget) ||
           qobject_cast<const QLineEdit*>(&widget) || qobject_cast<const QSlider*>(&widget);
}

/// Tells of every widget on the screen that does not show all it says, sticks out of what it stands in, or is too small
/// to be touched.
void expectAllFits(const QWidget& window) {
    int looked = 0;
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        if (!widget->isVisible() || isPartOfToolkitWidget(*widget)) continue;
        const QSize needed = neededSizeOfWhole(*widget);
        if (!needed.isEmpty()) ++looked;
        EXPECT_TRUE(needed.width() <= widget->width() && needed.height() <= widget->height())
            << described(*widget) << " has " << sizeText(widget->size()) << " of " << sizeText(needed);
        if (!isScrolled(*widget)) {
            EXPECT_TRUE(widget->parentWidget()->rect().contains(widget->geometry()))
                << described(*widget) << " of " << sizeText(widget->size()) << " at " << widget->x() << ','
                << widget->y() << " sticks out of " << described(*widget->parentWidget()) << " of "
                << sizeText(widget->parentWidget()->size());
        }
        if (isTouched(*widget)) {
            EXPECT_GE(widget->height(), kTouchHeight) << described(*widget);
        }
    }
    EXPECT_GT(looked, 0);
}

void expectTabsFit(const QTabWidget& tabs) {
    const QTabBar& bar = *tabs.tabBar();
    // There is nothing to choose where there is but one.
    if (bar.count() == 1) {
        EXPECT_TRUE(bar.isHidden());
        return;
    }
    for (int i = 0; i < bar.count(); ++i) {
        EXPECT_LT(bar.fontMetrics().horizontalAdvance(bar.tabText(i)), bar.tabRect(i).width());
        EXPECT_GE(bar.tabRect(i).height(), kTouchHeight);
        EXPECT_TRUE(bar.rect().contains(bar.tabRect(i))) << bar.tabText(i).toStdString();
    }
}

/// Whatever action is picked in a row, it has to fit.
void expectEveryActionFits(const QWidget& window) {
    int rows = 0;
    for (const PullDown* pullDown : window.findChildren<PullDown*>()) {
        if (!pullDown->isVisible()) continue;
        ++rows;
        const int room = pullDown->isRightToLeft() ? pullDown->geometry().right()
                                                   : pullDown->parentWidget()->width() - pullDown->x();
        for (int i = 0; i < pullDown->count(); ++i) {
            EXPECT_LE(widthNeededBy(*pullDown, pullDown->itemText(i)), room) << pullDown->itemText(i).toStdString();
        }
    }
    EXPECT_GT(rows, 0);
}

/// Leaves a picture for people where they ask for some.
void picture(QWidget& window, const std::string& name) {
    const QString folder = qEnvironmentVariable("KELVO_PICTURES");
    if (folder.isEmpty()) return;
    EXPECT_TRUE(window.grab().save(folder + '/' + QString::fromStdString(name) + ".png"));
}

void expectEveryTabFits(ShownPane& pane, const std::string& name) {
    for (int tab = 0; tab < kTabs; ++tab) {
        SCOPED_TRACE("tab " + std::to_string(tab));
        pane.pickTab(tab);
        pane.settle();
        expectAllFits(pane.window());
        picture(pane.window(), name + "-tab" + std::to_string(tab));
        if (tab != kGestureTab) continue;
        auto& pages = pane.widget<QTabWidget>("settingTabView_");
        expectTabsFit(pages);
        pages.setCurrentIndex(1);
        pane.settle();
        expectAllFits(pane.window());
        expectEveryActionFits(pane.window());
        picture(pane.window(), name + "-gestures");
        pages.setCurrentIndex(0);
    }
    expectTabsFit(pane.widget<QTabWidget>("hardwareInfoTabView_"));
}

/// Whether what is not in a page is seen without scrolling.
void expectFormFits(ShownPane& pane) {
    EXPECT_EQ(qobject_cast<QScrollArea*>(pane.window().centralWidget())->verticalScrollBar()->maximum(), 0);
    EXPECT_EQ(pane.widget<QWidget>("statusBarState_").visibleRegion().boundingRect(),
              pane.widget<QWidget>("statusBarState_").rect());
}

const auto kLanguages = testing::Values("ar_EG", "de_DE", "en_GB", "es_ES", "fr_FR", "it_IT", "ja_JP", "ko_KR", "nl_NL",
                                        "pl_PL", "pt_BR", "ru_RU", "zh_CN", "zh_TW");

/// A language by the name of a locale in which it is spoken.
class FormsFitTest : public testing::TestWithParam<std::string> {};

TEST_P(FormsFitTest, EveryTextIsShownWholeInFontsOfEverySize) {
    for (const int points : {8, 10, 12, 16, 24}) {
        SCOPED_TRACE(std::to_string(points) + " points");
        ShownPane pane(GetParam(), points);
        expectEveryTabFits(pane, GetParam() + '-' + std::to_string(points));
    }
}

TEST_P(FormsFitTest, EveryTextOfTheOtherSystemsGesturesIsShownWhole) {
    for (const char* version : {"1068", "1074"}) {
        SCOPED_TRACE(version);
        State state;
        state.systemVersion = version;
        ShownPane pane(GetParam(), 10, state);
        expectEveryTabFits(pane, GetParam() + "-of-" + version);
    }
}

TEST_P(FormsFitTest, WhatIsShownInsteadOfTheSettingsIsShownWhole) {
    const State disconnected{.devices = ""};
    const State disabled{.isDriverEnabled = false};
    const State severalDevices{.devices = "<string>Kelvo 24</string><string>Kelvo 32</string>"};
    int number = 0;
    for (const State& state : {disconnected, disabled, severalDevices}) {
        SCOPED_TRACE(++number);
        for (const int points : {10, 24}) {
            ShownPane pane(GetParam(), points, state);
            pane.settle();
            expectAllFits(pane.window());
            picture(pane.window(), GetParam() + "-state" + std::to_string(number) + '-' + std::to_string(points));
        }
    }
}

TEST_P(FormsFitTest, SmallScreenShowsAllButTheLengthOfPagesWithoutScrolling) {
    ShownPane pane(GetParam(), 9);
    EXPECT_TRUE(pane.window().size() == kSmallScreen);
    for (int tab = 0; tab < kTabs; ++tab) {
        SCOPED_TRACE("tab " + std::to_string(tab));
        pane.pickTab(tab);
        pane.settle();
        for (const QScrollArea* area : pane.window().findChildren<QScrollArea*>()) {
            if (area->isVisible()) {
                EXPECT_EQ(area->horizontalScrollBar()->maximum(), 0) << described(*area);
            }
        }
        expectFormFits(pane);
    }
    pane.pickTab(kGestureTab);
    pane.widget<QTabWidget>("settingTabView_").setCurrentIndex(1);
    pane.settle();
    expectFormFits(pane);
    EXPECT_EQ(pane.widget<QScrollArea>("gestureScroller").horizontalScrollBar()->maximum(), 0);
}

TEST_P(FormsFitTest, AreasForDoubleClicksStandInLineHoweverLongTheirTexts) {
    ShownPane pane(GetParam(), 10);
    pane.pickTab(kGestureTab);
    pane.settle();
    const auto top = [&](const char* name) { return pane.widget<QWidget>(name).mapTo(&pane.window(), QPoint()).y(); };
    EXPECT_EQ(top("rangeView_"), top("rateView_"));
    EXPECT_EQ(top("testView_"), top("rateView_"));
}

TEST_P(FormsFitTest, FontMayChangeWhileThePaneIsShown) {
    ShownPane pane(GetParam(), 9);
    pane.pickTab(kGestureTab);
    auto& pages = pane.widget<QTabWidget>("settingTabView_");
    for (const int page : {0, 1}) {
        SCOPED_TRACE("page " + std::to_string(page));
        pages.setCurrentIndex(page);
        for (const int points : {18, 8}) {
            SCOPED_TRACE(std::to_string(points) + " points");
            setFontSize(points);
            pane.settle();
            expectAllFits(pane.window());
            picture(pane.window(), GetParam() + "-page" + std::to_string(page) + "-then-" + std::to_string(points));
        }
    }

    setFontSize(18);
    pane.pickTab(0);
    pane.pickTab(kGestureTab);
    pane.settle();
    expectAllFits(pane.window());
    EXPECT_EQ(pane.widget<QLabel>("m_title").font().pointSize(), 18);
}

TEST_P(FormsFitTest, WindowIsLaidOutTheWayItsLanguageIsWritten) {
    ShownPane pane(GetParam(), 10);
    const bool isFromTheRight = GetParam().starts_with("ar");
    pane.pickTab(kGestureTab);
    pane.widget<QTabWidget>("settingTabView_").setCurrentIndex(1);
    pane.settle();

    EXPECT_EQ(pane.widget<QWidget>("KelvoTouchDisplayPref").isRightToLeft(), isFromTheRight);
    const QWidget& popUp = pane.widget<QWidget>("tabPopUp_");
    EXPECT_EQ(popUp.x() < pane.widget<QLabel>("tabPopUpLabel").x(), isFromTheRight);
    // The check box of a row stands before its title, and the second column of rows behind the first.
    const QWidget& row = pane.widget<QWidget>("TDGesturesCellView");
    const int checkBox = row.findChild<QWidget*>("clickBtn")->x();
    EXPECT_EQ(row.findChild<QWidget*>("m_title")->x() < checkBox, isFromTheRight);
    const auto rows = pane.widget<QWidget>("gestureView_").findChildren<QWidget*>("TDGesturesCellView");
    EXPECT_EQ(rows.last()->x() < rows.first()->x(), isFromTheRight);
}

/// What System Settings leaves of its window for a page when it is opened for the first time.
constexpr QSize kSystemSettingsPage(660, 600);

void expectNothingIsScrolledSideways(const QWidget& window) {
    for (const QScrollArea* area : window.findChildren<QScrollArea*>()) {
        if (area->isVisible()) {
            EXPECT_EQ(area->horizontalScrollBar()->maximum(), 0) << described(*area);
        }
    }
}

class FormsInSystemSettingsTest : public testing::TestWithParam<std::string> {
protected:
    /// Every page of a user who reads a font in that size.
    void expectNothingIsScrolledSidewaysIn(const char* family, int points) const {
        SCOPED_TRACE(std::string(family) + ' ' + std::to_string(points));
        ASSERT_TRUE(hasFont(family)) << "It is not installed.";
        const FontInUse font(family);
        ShownPane pane(GetParam(), points);
        pane.window().resize(kSystemSettingsPage);
        for (int tab = 0; tab < kTabs; ++tab) {
            SCOPED_TRACE("tab " + std::to_string(tab));
            pane.pickTab(tab);
            auto& pages = pane.widget<QTabWidget>("settingTabView_");
            for (const int page : {0, 1}) {
                SCOPED_TRACE("page " + std::to_string(page));
                pages.setCurrentIndex(page);
                pane.settle();
                EXPECT_LE(pane.widget<QWidget>("KelvoTouchDisplayPref").minimumSizeHint().width(),
                          kSystemSettingsPage.width());
                expectFormFits(pane);
                expectNothingIsScrolledSideways(pane.window());
                expectAllFits(pane.window());
                picture(pane.window(), GetParam() + "-narrow-" + std::to_string(points) + "-tab" + std::to_string(tab) +
                                           "-page" + std::to_string(page));
                if (tab != kGestureTab) break;
            }
        }
    }
};

TEST_P(FormsInSystemSettingsTest, NothingIsScrolledSidewaysWhereSystemSettingsOpens) {
    for (const int points : {8, 9, 10, 11, 12, 14}) expectNothingIsScrolledSidewaysIn(kPlasmaFont, points);
    for (const int points : {9, 11, 14}) expectNothingIsScrolledSidewaysIn(kWideFont, points);
}

TEST_P(FormsInSystemSettingsTest, ColumnsStandSideBySideAgainWhereThereIsRoom) {
    ASSERT_TRUE(hasFont(kPlasmaFont)) << "It is not installed.";
    const FontInUse font(kPlasmaFont);
    ShownPane pane(GetParam(), 10);
    pane.pickTab(kGestureTab);
    const auto stand = [&](int width) {
        pane.window().resize(width, 560);
        pane.settle();
        return pane.widget<QWidget>("testGroup").y() == pane.widget<QWidget>("speedGroup").y();
    };
    EXPECT_TRUE(stand(1024));
    EXPECT_FALSE(stand(480));
    EXPECT_TRUE(stand(1024));
}

INSTANTIATE_TEST_SUITE_P(Languages, FormsInSystemSettingsTest, kLanguages,
                         [](const auto& language) { return language.param; });

INSTANTIATE_TEST_SUITE_P(Languages, FormsFitTest, kLanguages, [](const auto& language) { return language.param; });

} // namespace

} // namespace kelvo
