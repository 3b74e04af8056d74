#include "TDNames.h"
#include "TDUtilities.h"
#include "linux/BundleDirectory.h"
#include "linux/StandardStreams.h"
#include "linux/TerminationSignals.h"
#include "peers/PeerPlatform.h"
#include "peers/calibration/CalibrationWindow.h"
#include "qt/QtRunLoop.h"

#include <QApplication>

#include <algorithm>
#include <exception>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr char kProgramName[] = "CalibrationTool";

constexpr char kUsage[] = R"(Usage: CalibrationTool [--precise] [--] [DISPLAY]
Calibrate a touch display by touching the crosses that it shows. Without DISPLAY, calibrate the first connected display.

  --precise        show nine crosses instead of four
  -h, --help       show this help and exit
  --version        show the version and exit
)";

constexpr int kFailure = 1;
constexpr int kUsageError = 2;

struct Wanted {
    bool isPrecise = false;
    std::string display;
};

int fail(int status, const std::string& reason) {
    std::cerr << kProgramName << ": " << reason << '\n';
    return status;
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

std::string firstConnected() {
    const auto utilities = platform::NSMutableDictionary::dictionaryWithContentsOfFile(getUilitiesFilePath());
    return utilities.objectForKey(keys::currentDeviceType).array().objectAtIndex(0).string().value_or("");
}

int run(const Wanted& wanted, int argc, char* argv[]) {
    const QApplication toolkit(argc, argv);
    kelvo::QtRunLoop runLoop;
    const kelvo::PeerPlatform services(kProgramName, runLoop, paneBundle());
    const std::string display = wanted.display.empty() ? firstConnected() : wanted.display;
    if (localizedString("Layout.Direction") == "RTL") QApplication::setLayoutDirection(Qt::RightToLeft);
    kelvo::CalibrationWindow window(runLoop, display, wanted.isPrecise);
    const kelvo::TerminationSignals termination(runLoop, [] { QCoreApplication::quit(); });
    window.begin();
    QApplication::exec();
    return window.isSaved() ? 0 : kFailure;
}

} // namespace

int main(int argc, char* argv[]) {
    kelvo::keepPlacesOfClosedStreams();
    const std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
    Wanted wanted;
    bool takesOptions = true;
    for (const std::string& argument : arguments) {
        if (takesOptions && argument == "--") {
            takesOptions = false;
            continue;
        }
        if (!takesOptions && wanted.display.empty()) {
            wanted.display = argument;
            continue;
        }
        if (argument == "--help" || argument == "-h") {
            std::cout << kUsage;
            return 0;
        }
        if (argument == "--version") {
            std::cout << kProgramName << " " KELVO_VERSION "\n";
            return 0;
        }
        if (argument == "--precise") {
            wanted.isPrecise = true;
        } else if (argument.starts_with("--") || !wanted.display.empty()) {
            return fail(kUsageError, "unknown argument " + argument + "\nSee --help for the available options.");
        } else {
            wanted.display = argument;
        }
    }
    try {
        return run(wanted, argc, argv);
    } catch (const std::exception& error) {
        return fail(kFailure, error.what());
    }
}
