#include "qt/DesktopColours.h"
#include "qt/FakePortal.h"
#include "support/EnvironmentVariable.h"
#include "support/PrivateBus.h"

#include <QApplication>
#include <QDBusMessage>
#include <QPalette>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace kelvo {

namespace {

constexpr char kScheme[] = "org.freedesktop.appearance color-scheme";
constexpr unsigned kNoPreference = 0;
constexpr unsigned kDark = 1;
constexpr unsigned kLight = 2;

bool isDark() {
    const QPalette palette = QApplication::palette();
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

class DesktopColoursTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_FALSE(isDark());
        auto connection = connectionNamed("portal");
        ASSERT_TRUE(connection.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), &portal_,
                                              QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals));
        ASSERT_TRUE(connection.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
    }

    void TearDown() override {
        QDBusConnection::disconnectFromBus(QStringLiteral("portal"));
        QDBusConnection::disconnectFromBus(QStringLiteral("asking"));
        QApplication::setPalette(QPalette());
    }

    QDBusConnection connectionNamed(const char* name) {
        return QDBusConnection::connectToBus(QString::fromStdString(bus_.address()), QLatin1String(name));
    }

    void ask(unsigned scheme) {
        portal_.settings = {{kScheme, scheme}};
        colours_.askPortal(connectionNamed("asking"));
    }

    void change(const char* group, const char* key, const QVariant& value) {
        emit portal_.SettingChanged(QLatin1String(group), QLatin1String(key), QDBusVariant(value));
    }

    static bool becomes(bool dark) {
        return QTest::qWaitFor([dark] { return isDark() == dark; });
    }

    PrivateBus bus_;
    FakePortal portal_;
    EnvironmentVariable desktop_{"XDG_CURRENT_DESKTOP", "ubuntu:GNOME"};
    DesktopColours colours_;
};

TEST_F(DesktopColoursTest, DarkDesktopIsFollowedAtTheStart) {
    ask(kDark);
    EXPECT_TRUE(becomes(true));
}

TEST_F(DesktopColoursTest, ChangesAreFollowedBothWays) {
    const QPalette before = QApplication::palette();
    ask(kLight);
    ASSERT_TRUE(QTest::qWaitFor([this] { return portal_.readings == 1; }));
    for (const unsigned light : {kNoPreference, kLight}) {
        change("org.freedesktop.appearance", "color-scheme", kDark);
        EXPECT_TRUE(becomes(true));
        change("org.freedesktop.appearance", "accent-color", 0);
        change("org.freedesktop.appearance", "color-scheme", light);
        EXPECT_TRUE(becomes(false));
    }
    EXPECT_EQ(QApplication::palette(), before);
}

TEST_F(DesktopColoursTest, ColoursThatAreDarkAlreadyAreLeftAlone) {
    const QPalette own(QColor(60, 0, 0), QColor(40, 0, 0));
    QApplication::setPalette(own);
    ask(kDark);
    PortalSettings portal;
    const QSignalSpy told(&portal, &PortalSettings::told);
    portal.ask(connectionNamed("asking"), {{"org.freedesktop.appearance", "color-scheme"}});
    ASSERT_TRUE(QTest::qWaitFor([&] { return told.count() == 1; }));
    change("org.freedesktop.appearance", "color-scheme", kDark);
    change("org.freedesktop.appearance", "color-scheme", kLight);
    ASSERT_TRUE(QTest::qWaitFor([&] { return told.count() == 3; }));
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), QColor(40, 0, 0));
}

TEST_F(DesktopColoursTest, PlasmaBringsItsOwn) {
    const EnvironmentVariable plasma("XDG_CURRENT_DESKTOP", "KDE");
    ask(kDark);
    const QDBusMessage ping =
        QDBusMessage::createMethodCall("org.freedesktop.DBus", "/", "org.freedesktop.DBus.Peer", "Ping");
    EXPECT_EQ(connectionNamed("asking").call(ping, QDBus::BlockWithGui).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(portal_.readings, 0);
    EXPECT_FALSE(isDark());
}

} // namespace

} // namespace kelvo
