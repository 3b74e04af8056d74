#include "qt/MenuPlaceNote.h"

#include "qt/FakeTray.h"
#include "support/PrivateBus.h"

#include <QCheckBox>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <optional>

namespace kelvo {

namespace {

class MenuPlaceNoteTest : public testing::Test {
protected:
    MenuPlaceNoteTest() {
        menuSwitch_.setObjectName(QStringLiteral("statusBarState_"));
        noteLabel_.setObjectName(QStringLiteral("noPlaceForMenu"));
        noteLabel_.hide();
    }

    void TearDown() override {
        QDBusConnection::disconnectFromBus(QStringLiteral("tray"));
        QDBusConnection::disconnectFromBus(QStringLiteral("asking"));
    }

    QDBusConnection connectionNamed(const char* name) {
        return QDBusConnection::connectToBus(QString::fromStdString(bus_.address()), QLatin1String(name));
    }

    void openTray(bool hasHost = true) {
        tray_.hasHost = hasHost;
        auto connection = connectionNamed("tray");
        ASSERT_TRUE(
            connection.registerObject(QStringLiteral("/StatusNotifierWatcher"), &tray_,
                                      QDBusConnection::ExportAllProperties | QDBusConnection::ExportAllSignals));
        ASSERT_TRUE(connection.registerService(QStringLiteral("org.kde.StatusNotifierWatcher")));
    }

    void ask() {
        note_.emplace(window_);
        note_->ask(connectionNamed("asking"));
    }

    [[nodiscard]] bool becomes(bool isSaid) {
        return QTest::qWaitFor([&] { return noteLabel_.isHidden() != isSaid; });
    }

    PrivateBus bus_;
    FakeTray tray_;
    QWidget window_;
    QCheckBox menuSwitch_{&window_};
    QLabel noteLabel_{&window_};
    std::optional<MenuPlaceNote> note_;
};

TEST_F(MenuPlaceNoteTest, DesktopWithoutPlaceIsToldOf) {
    ask();
    EXPECT_TRUE(noteLabel_.isHidden());
    EXPECT_TRUE(becomes(true));
}

TEST_F(MenuPlaceNoteTest, NobodyWhoShowsIconsIsNoPlace) {
    openTray(false);
    ask();
    EXPECT_TRUE(becomes(true));

    tray_.hasHost = true;
    emit tray_.StatusNotifierHostRegistered();
    EXPECT_TRUE(becomes(false));
}

TEST_F(MenuPlaceNoteTest, PlaceThatComesAndGoesIsFollowed) {
    ask();
    ASSERT_TRUE(becomes(true));
    openTray();
    EXPECT_TRUE(becomes(false));

    QDBusConnection::disconnectFromBus(QStringLiteral("tray"));
    EXPECT_TRUE(becomes(true));
}

TEST_F(MenuPlaceNoteTest, NothingIsSaidWhereThereIsNoSwitch) {
    menuSwitch_.hide();
    ask();
    StatusTray toldLater;
    QSignalSpy answers(&toldLater, &StatusTray::told);
    toldLater.ask(connectionNamed("asking"));
    ASSERT_TRUE(answers.wait());
    EXPECT_TRUE(noteLabel_.isHidden());

    menuSwitch_.show();
    EXPECT_FALSE(noteLabel_.isHidden());
    menuSwitch_.hide();
    EXPECT_TRUE(noteLabel_.isHidden());
}

TEST_F(MenuPlaceNoteTest, WindowsWithoutSwitchOrNoteStayAsTheyAre) {
    QWidget empty;
    MenuPlaceNote note(empty);
    note.ask(connectionNamed("asking"));
    openTray();
    EXPECT_TRUE(QTest::qWaitFor([this] { return tray_.readings > 0; }));
}

} // namespace

} // namespace kelvo
