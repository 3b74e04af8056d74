#include "TDNames.h"
#include "TDUtilities.h"
#include "linux/BundleDirectory.h"
#include "linux/Launcher.h"
#include "linux/PosixFileManager.h"
#include "linux/StandardStreams.h"
#include "linux/TerminationSignals.h"
#include "peers/DriverCommand.h"
#include "peers/PeerPlatform.h"
#include "peers/PortProbe.h"
#include "peers/status-bar/GesturesWindow.h"
#include "peers/status-bar/PaneOpener.h"
#include "peers/status-bar/PortWatch.h"
#include "peers/status-bar/StatusBarUtility.h"
#include "peers/status-bar/StatusMenu.h"
#include "peers/status-bar/TrayIcon.h"
#include "platform/Guarded.h"
#include "platform/Log.h"
#include "qt/QtRunLoop.h"
#include "qt/StatusTray.h"

#include <QApplication>
#include <QDBusConnection>
#include <QProcess>
#include <QSessionManager>

#include <algorithm>
#include <exception>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

namespace {

using Start = kelvo::StatusBarUtility::Start;
using Occasion = kelvo::StatusBarUtility::Occasion;
using kelvo::PortAnswer;

constexpr char kProgramName[] = "KelvoTouchDisplaySettingUtility";

constexpr char kUsage[] = R"(Usage: KelvoTouchDisplaySettingUtility [--session-start]
Show a menu for the touch display in the system tray, with the settings pages and the state of the driver. If the program
is already running, show its icon.

  --session-start  show the icon only if the settings say so; otherwise run in the background
  -h, --help       show this help and exit
  --version        show the version and exit
)";

constexpr int kFailure = 1;
constexpr int kUsageError = 2;
/// More than a probe takes to tell.
constexpr double kProbeSeconds = 1.0;

int fail(int status, const std::string& reason) {
    std::cerr << kProgramName << ": " << reason << '\n';
    return status;
}

int print(const std::string& text) {
    std::cout << text;
    return 0;
}

/// Starts the settings' window: that of the folder in which this program was built, else the installed one, else
/// whatever has its name.
bool startPane() {
    // From <build>/Library/Application Support/KelvoTouchDisplay/StatusBarApp/<name>.app.
    const QString built = QCoreApplication::applicationDirPath() + "/../../../../../bin/kelvo-touch-display";
    for (const QString& program :
         {built, QStringLiteral(KELVO_INSTALLED_PANE), QStringLiteral("kelvo-touch-display")}) {
        if (QProcess::startDetached(program, {})) return true;
    }
    return false;
}

/// A session that restores what ran when it ended would start this program as a person does, who wants to see the
/// icon. It has its own entry among those that start with the session.
void declineToBeRestored(const QApplication& toolkit) {
    const auto decline = [](QSessionManager& session) { session.setRestartHint(QSessionManager::RestartNever); };
    QObject::connect(&toolkit, &QGuiApplication::commitDataRequest, &toolkit, decline, Qt::DirectConnection);
    QObject::connect(&toolkit, &QGuiApplication::saveStateRequest, &toolkit, decline, Qt::DirectConnection);
}

/// Set for a process that this program became for a tray that is there.
constexpr char kStartedAnew[] = "KELVO_STARTED_ANEW";

/// Becomes a new process of this program. Returns only when that cannot be done.
void startAnew() {
    qputenv(kStartedAnew, "1");
    std::string program = QCoreApplication::applicationFilePath().toStdString();
    char* const arguments[] = {program.data(), nullptr};
    execv(program.c_str(), arguments);
    qunsetenv(kStartedAnew);
}

/// The pane's bundle, for its texts: that of the folder in which this program was built, else the installed one. None
/// where neither is to be read; the texts are then English.
std::unique_ptr<kelvo::BundleDirectory> paneBundle() {
    const std::string built =
        (QCoreApplication::applicationDirPath() + "/../../../../../" KELVO_PANE_DIRECTORY).toStdString();
    for (const std::string& path : {built, std::string(KELVO_INSTALLED_BUNDLE)}) {
        try {
            return kelvo::BundleDirectory::open(path);
        } catch (const std::runtime_error&) {
            continue;
        }
    }
    return nullptr;
}

/// What the one that has the utility's port does.
PortAnswer askOther(platform::CFRunLoop& runLoop) {
    kelvo::PortProbe other(kStatusBarPortName);
    std::optional<PortAnswer> answer;
    other.ask([&](PortAnswer told) { answer = told; });
    runLoop.runUntil([&] { return answer.has_value(); }, kProbeSeconds);
    return answer.value_or(PortAnswer::NotAnswering);
}

/// The port could not be had, so another one has it, or there is no bus to have it on.
int leaveToOther(PortAnswer other) {
    switch (other) {
    case PortAnswer::Answering:
        return 0;
    case PortAnswer::NotAnswering:
        return fail(kFailure, "the running instance does not answer; quit it and try again");
    case PortAnswer::NotRunning:
        break;
    }
    return fail(kFailure, "there is no session bus; set DBUS_SESSION_BUS_ADDRESS to the bus of the session");
}

int run(Occasion occasion, int argc, char* argv[]) {
    // A tray that even a new process does not see for one would have it become the next without end.
    bool isForTray = qEnvironmentVariableIsSet(kStartedAnew);
    qunsetenv(kStartedAnew);
    const QApplication toolkit(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    declineToBeRestored(toolkit);

    kelvo::QtRunLoop runLoop;
    const kelvo::PeerPlatform services(kProgramName, runLoop, paneBundle());

    kelvo::PaneOpener pane(startPane);
    kelvo::DriverCommand driverSwitch(runLoop);
    kelvo::PortProbe driver(kTouchDisplayDriverPortName);
    std::function<void()> driverHasChanged;
    std::function<void()> switchOff;
    kelvo::PortWatch driverWatch(kTouchDisplayDriverPortName, [&] { driverHasChanged(); });
    std::unique_ptr<kelvo::GesturesWindow> gestures;
    kelvo::PosixFileManager files;
    kelvo::Launcher launcher(files);
    kelvo::StatusMenu menu({.openPaneAtTab = [&](std::int32_t tab) { pane.openAtTab(tab); },
                            .showGestures =
                                [&] {
                                    if (!gestures) gestures = std::make_unique<kelvo::GesturesWindow>();
                                    gestures->showAnew();
                                },
                            .calibrate =
                                [&] {
                                    if (launcher.launchApplication(calibrationToolFullPath())) return;
                                    platform::NSLog("the calibration tool cannot be started; is it installed?");
                                },
                            .quit =
                                [&] {
                                    switchOff();
                                    QCoreApplication::quit();
                                },
                            .askDriver = [&](auto tell) { driver.ask(std::move(tell)); },
                            .switchDriver =
                                [&](bool isOn, std::function<void()> done) {
                                    driverSwitch.perform({isOn ? "enable" : "disable"},
                                                         [done = std::move(done)](const auto&) { done(); });
                                },
                            .watchDriver = [&] { driverWatch.start(); }});
    driverHasChanged = [&] { menu.refresh(); };
    kelvo::TrayIcon icon(menu);
    kelvo::StatusBarUtility utility(icon, startAnew);
    switchOff = [&] { utility.switchOff(); };
    // Before anybody can find it, so that whoever does can also end it in order.
    bool isToEnd = false;
    const kelvo::TerminationSignals termination(runLoop, [&] {
        isToEnd = true;
        QCoreApplication::quit();
    });
    switch (utility.start(occasion)) {
    case Start::IsFirst: {
        if (isToEnd) return 0;
        kelvo::StatusTray tray;
        QObject::connect(&tray, &kelvo::StatusTray::told, &tray, [&](bool isThere) {
            const bool isNews = !std::exchange(isForTray, false);
            if (isThere && isNews) platform::guarded([&] { utility.takePlace(); });
        });
        tray.ask(QDBusConnection::sessionBus());
        return QApplication::exec();
    }
    case Start::OtherRuns:
        return utility.hasHeardFromOther() ? 0 : leaveToOther(askOther(runLoop));
    case Start::OtherIsHung:
        return leaveToOther(PortAnswer::NotAnswering);
    case Start::NoPort:
        break;
    }
    return leaveToOther(PortAnswer::NotRunning);
}

} // namespace

int main(int argc, char* argv[]) {
    kelvo::keepPlacesOfClosedStreams();
    const std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
    Occasion occasion = Occasion::Launch;
    for (const std::string& argument : arguments) {
        if (argument == "--help" || argument == "-h") return print(kUsage);
        if (argument == "--version") return print(std::string(kProgramName) + " " KELVO_VERSION "\n");
        if (argument != "--session-start") {
            return fail(kUsageError, "unknown argument " + argument + "\nSee --help for the available options.");
        }
        occasion = Occasion::SessionStart;
    }
    try {
        return run(occasion, argc, argv);
    } catch (const std::exception& error) {
        return fail(kFailure, error.what());
    }
}
