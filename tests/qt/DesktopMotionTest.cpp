#include "qt/DesktopMotion.h"
#include "qt/FakePortal.h"
#include "support/PrivateBus.h"

#include <QDBusContext>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>
#include <QVariantMap>

#include <gtest/gtest.h>

namespace kelvo {

namespace {

constexpr char kGnome[] = "org.gnome.desktop.interface enable-animations";
constexpr char kPlasma[] = "org.kde.kdeglobals.KDE AnimationDurationFactor";

class DesktopMotionTest : public testing::Test {
protected:
    void TearDown() override {
        QDBusConnection::disconnectFromBus(QStringLiteral("portal"));
        QDBusConnection::disconnectFromBus(QStringLiteral("asking"));
    }

    void startPortal() {
        auto connection = connectionNamed("portal");
        ASSERT_TRUE(connection.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), &portal_,
                                              QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals));
        ASSERT_TRUE(connection.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
    }

    QDBusConnection connectionNamed(const char* name) {
        return QDBusConnection::connectToBus(QString::fromStdString(bus_.address()), QLatin1String(name));
    }

    /// Asks, and waits until the portal has answered for both desktops.
    void ask() {
        motion_.askPortal(connectionNamed("asking"));
        ASSERT_TRUE(QTest::qWaitFor([this] { return portal_.readings == 2; }));
    }

    bool becomes(bool isWanted) {
        return QTest::qWaitFor([&] { return motion_.isWantedOn(widget_) == isWanted; });
    }

    PrivateBus bus_;
    FakePortal portal_;
    DesktopMotion motion_;
    QWidget widget_;
};

TEST_F(DesktopMotionTest, MotionIsWantedWhereNobodySaysOtherwise) { EXPECT_TRUE(motion_.isWantedOn(widget_)); }

TEST_F(DesktopMotionTest, SettingOfEitherDesktopStopsIt) {
    for (const auto& [key, value] :
         {std::pair(kGnome, QVariant(false)), std::pair(kPlasma, QVariant("0")), std::pair(kPlasma, QVariant(0.0))}) {
        SCOPED_TRACE(key);
        portal_.settings = {{key, value}};
        portal_.readings = 0;
        startPortal();
        DesktopMotion motion;
        motion.askPortal(connectionNamed("asking"));
        EXPECT_TRUE(QTest::qWaitFor([&] { return !motion.isWantedOn(widget_); }));
        TearDown();
    }
}

TEST_F(DesktopMotionTest, SettingsThatAllowItAndThoseOfAnotherKindDoNot) {
    portal_.settings = {{kGnome, true}, {kPlasma, "quickly"}};
    startPortal();
    QSignalSpy answers(&motion_, &DesktopMotion::changed);
    ask();
    ASSERT_TRUE(QTest::qWaitFor([&] { return answers.count() == 2; }));
    EXPECT_TRUE(motion_.isWantedOn(widget_));
}

TEST_F(DesktopMotionTest, ChangeOfTheSettingIsFollowed) {
    portal_.settings = {{kGnome, true}, {kPlasma, "1"}};
    startPortal();
    QSignalSpy answers(&motion_, &DesktopMotion::changed);
    ask();
    ASSERT_TRUE(QTest::qWaitFor([&] { return answers.count() == 2; }));
    emit portal_.SettingChanged("org.gnome.desktop.interface", "enable-animations", QDBusVariant(false));
    EXPECT_TRUE(becomes(false));
    emit portal_.SettingChanged("org.gnome.desktop.interface", "font-name", QDBusVariant("Sans"));
    emit portal_.SettingChanged("org.gnome.desktop.interface", "enable-animations", QDBusVariant(true));
    EXPECT_TRUE(becomes(true));
}

TEST_F(DesktopMotionTest, PortalThatDoesNotRunIsNotStarted) {
    const std::string mark = (bus_.folder() / "started").string();
    bus_.addActivatableService("org.freedesktop.portal.Desktop", "/bin/touch " + mark);
    motion_.askPortal(connectionNamed("asking"));
    // The bus answers in turn, so that with this answer the others are there.
    const QDBusMessage ping =
        QDBusMessage::createMethodCall("org.freedesktop.DBus", "/", "org.freedesktop.DBus.Peer", "Ping");
    EXPECT_EQ(connectionNamed("asking").call(ping, QDBus::BlockWithGui).type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(motion_.isWantedOn(widget_));
    EXPECT_FALSE(std::filesystem::exists(mark));
}

TEST_F(DesktopMotionTest, HungBusIsNotWaitedFor) {
    const QDBusConnection connection = connectionNamed("asking");
    bus_.hang();
    motion_.askPortal(connection);
    EXPECT_TRUE(motion_.isWantedOn(widget_));
    bus_.resume();
}

} // namespace

} // namespace kelvo
