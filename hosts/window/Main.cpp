#include "hosts/QtHostPlatform.h"
#include "hosts/window/Options.h"
#include "hosts/window/PaneWindow.h"
#include "hosts/window/PlaceMemory.h"
#include "hosts/window/SingleInstance.h"
#include "linux/StandardStreams.h"
#include "linux/TerminationSignals.h"
#include "qt/DesktopColours.h"
#include "qt/FormTexts.h"
#include "qt/MenuPlaceNote.h"
#include "qt/ShownDisplay.h"

#include <QApplication>
#include <QDBusConnection>
#include <QIcon>
#include <QLibraryInfo>
#include <QLocale>
#include <QThreadPool>
#include <QTranslator>

#include <exception>
#include <iostream>
#include <memory>

namespace {

constexpr char kProgramName[] = "kelvo-touch-display";
/// What a launcher on Wayland gives a program along.
constexpr char kActivationToken[] = "XDG_ACTIVATION_TOKEN";

constexpr int kFailure = 1;
constexpr int kUsageError = 2;

int fail(int status, const std::string& reason) {
    std::cerr << kProgramName << ": " << reason << '\n';
    return status;
}

int print(const std::string& text) {
    std::cout << text;
    return 0;
}

/// The icon that lies in the bundle; it is the desktop's only when the program is installed.
QIcon iconIn(platform::NSBundle& bundle) {
    const auto paths = bundle.pathsForResourcesOfTypeInDirectory("svg", "icons");
    return paths.empty() ? QIcon() : QIcon(QString::fromStdString(paths.front()));
}

void showIcon(platform::NSBundle& bundle) {
    QGuiApplication::setWindowIcon(QIcon::fromTheme(kProgramName, iconIn(bundle)));
}

/// The few texts that are the toolkit's own, as in the menu of a text field, where it brings the user's language.
void translateToolkit(QTranslator& texts) {
    const QString folder = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
    if (texts.load(QLocale(), QStringLiteral("qtbase"), QStringLiteral("_"), folder)) {
        QCoreApplication::installTranslator(&texts);
    }
}

/// The toolkit shares painting among threads and lets them linger for half a minute. Let them go while the processor is
/// still awake from what was painted, so that a window left alone does not wake it up again.
void letPaintersGoEarly() {
    constexpr int kMilliseconds = 500;
    QThreadPool::globalInstance()->setExpiryTimeout(kMilliseconds);
}

/// The bundle lies at the same place to the program in the build folder and where it is installed.
std::string installedPanePath() {
    return (QCoreApplication::applicationDirPath() + "/../" KELVO_PANE_DIRECTORY).toStdString();
}

/// The window is called after the display whose settings it shows, as far as it shows any.
void keepTitle(QWidget& window, const kelvo::ShownDisplay& display, const QString& product) {
    const auto show = [&window, product](const QString& name) {
        window.setWindowTitle(name.isEmpty() ? product : QStringLiteral("%1 – %2").arg(name, product));
    };
    show(display.name());
    QObject::connect(&display, &kelvo::ShownDisplay::named, &window, show);
}

int run(const kelvo::Options& options, int argc, char* argv[]) {
    const QApplication toolkit(argc, argv);
    letPaintersGoEarly();
    kelvo::DesktopColours colours;
    kelvo::QtHostPlatform host(kProgramName, options.panePath.value_or(installedPanePath()));
    QGuiApplication::setDesktopFileName(kProgramName);
    QTranslator toolkitTexts;
    translateToolkit(toolkitTexts);
    QGuiApplication::setLayoutDirection(kelvo::writingDirection(&host.bundle()));

    // Before anybody can find this process by its port. What is asked for sooner than the main loop runs waits for it.
    const kelvo::TerminationSignals termination(host.runLoop(), [] { QCoreApplication::quit(); });
    kelvo::SingleInstance instance(host.messagePorts(), host.runLoop(), [&](const std::string& token) {
        // The toolkit shows it to the compositor, which would not let the window come to the front without one.
        if (!token.empty()) qputenv(kActivationToken, token.c_str());
        host.application().activateIgnoringOtherApps();
    });
    switch (instance.claim(qgetenv(kActivationToken).toStdString())) {
    case kelvo::SingleInstance::Outcome::IsFirst:
        break;
    case kelvo::SingleInstance::Outcome::OtherWasTold:
        return 0;
    case kelvo::SingleInstance::Outcome::OtherIsHung:
        return fail(kFailure, "the open window does not answer; close it and try again");
    }

    const auto pane = host.loadPane();
    kelvo::PaneWindow window(*pane, host.nibs());
    if (QWidget* const form = window.form()) {
        const QString product =
            QString::fromStdString(host.bundle().localizedStringForKey("Window.Title", kProgramName));
        // The form owns it.
        auto display = std::make_unique<kelvo::ShownDisplay>(*form, kelvo::panePreferenceFolder(host.bundle()));
        keepTitle(window, *display.release(), product);
    }
    const std::string placeFile = kelvo::panePreferenceFolder(host.bundle()) + "/Window.ini";
    const kelvo::PlaceMemory place(window, QString::fromStdString(placeFile));
    kelvo::MenuPlaceNote menuPlace(window);
    // To look through the theme takes long, and nobody misses the icon before the window; a bus may not answer at all.
    window.callWhenPainted([&] {
        showIcon(host.bundle());
        colours.askPortal(QDBusConnection::sessionBus());
        menuPlace.ask(QDBusConnection::sessionBus());
    });
    host.application().setWindow(window);

    // Shown by the main loop, so that whatever ends the program finds the loop to end.
    QMetaObject::invokeMethod(
        &window, [&window] { window.show(); }, Qt::QueuedConnection);
    const int status = QApplication::exec();
    window.close();
    return status;
}

} // namespace

int main(int argc, char* argv[]) {
    kelvo::keepPlacesOfClosedStreams();
    const kelvo::Options options = kelvo::parseOptions({argv + 1, argv + argc});
    if (!options.error.empty()) return fail(kUsageError, options.error);
    if (options.help) return print(kelvo::helpText());
    if (options.version) return print(kelvo::versionText());
    try {
        return run(options, argc, argv);
    } catch (const std::exception& error) {
        return fail(kFailure, error.what());
    }
}
