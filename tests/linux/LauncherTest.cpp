#include "linux/Launcher.h"

#include "linux/PosixFileManager.h"
#include "support/EnvironmentVariable.h"
#include "support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <string>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

namespace {

using kelvo::Launcher;
namespace fs = std::filesystem;

constexpr int kDescriptorOfTest = 77;

/// Tells where it was started and how, in a file "report" beside the folder of the application, whole at once.
constexpr char kReportingProgram[] = R"sh(#!/bin/sh
report="${0%/*}/../report"
{
    echo "program ${0##*/} $#"
    echo "folder $PWD"
    echo "variable $LAUNCHER_TEST"
    test -e /proc/$$/fd/77 && echo "inherited 77"
    test "$(cut -d' ' -f6 /proc/$$/stat)" = $$ && echo "own session"
    while read -r name value; do
        case $name$value in
        SigBlk:*[1-9a-f]*) echo "blocks signals" ;;
        SigIgn:*[13579bdf]???) echo "ignores SIGPIPE" ;;
        esac
    done </proc/$$/status
    echo "process $$"
} >"$report.part"
mv "$report.part" "$report"
)sh";

/// Waits, for ten seconds at most, until `condition` holds.
template <typename Condition>
bool holdsInTime(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

class LauncherTest : public testing::Test {
protected:
    void writeProgram(std::string_view name, std::string_view contents = kReportingProgram) const {
        fs::permissions(directory_.write(name, contents), fs::perms::owner_all);
    }

    /// What the started program told, after it has ended and left no zombie.
    [[nodiscard]] std::string report(std::string_view name) const {
        if (!holdsInTime([&] { return fs::exists(directory_.path(name)); })) return "none in time";
        std::string text = directory_.read(name);
        const std::size_t process = text.find("process ");
        const std::string folder = "/proc/" + text.substr(process + 8, text.size() - process - 9);
        if (!holdsInTime([&] { return !fs::exists(folder); })) return "still there: " + folder;
        return text.substr(0, process);
    }

    TemporaryDirectory directory_;
    kelvo::PosixFileManager files_;
    Launcher launcher_{files_};
};

TEST_F(LauncherTest, ApplicationStartsDetachedInTheRootFolderWithTheEnvironment) {
    const EnvironmentVariable variable("LAUNCHER_TEST", "handed on");
    writeProgram("Status.app/AppRun");
    ASSERT_EQ(::dup2(STDERR_FILENO, kDescriptorOfTest), kDescriptorOfTest);
    sigset_t blocked;
    sigset_t previous;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &previous);
    const auto previousAction = std::signal(SIGPIPE, SIG_IGN);

    const bool launched = launcher_.launchApplication(directory_.path("Status.app"));

    (void)std::signal(SIGPIPE, previousAction);
    ::pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    ::close(kDescriptorOfTest);
    EXPECT_TRUE(launched);
    EXPECT_EQ(report("report"), "program AppRun 0\nfolder /\nvariable handed on\nown session\n");
}

TEST_F(LauncherTest, StandardDescriptorsLeadNowhere) {
    writeProgram("Status.app/AppRun", R"(#!/bin/sh
report="${0%/*}/../report"
input=$(readlink /proc/$$/fd/0)
output=$(readlink /proc/$$/fd/1)
error=$(readlink /proc/$$/fd/2)
printf '%s %s %s\nprocess %s\n' "$input" "$output" "$error" $$ >"$report.part"
mv "$report.part" "$report"
)");
    EXPECT_TRUE(launcher_.launchApplication(directory_.path("Status.app")));
    EXPECT_EQ(report("report"), "/dev/null /dev/null /dev/null\n");
}

TEST_F(LauncherTest, WithoutAppRunTheFileOfTheBundlesNameStarts) {
    writeProgram("Status Bar.app/Status Bar");
    directory_.write("Status Bar.app/AppRun", "no program");
    EXPECT_TRUE(launcher_.launchApplication(directory_.path("Status Bar.app/")));
    EXPECT_TRUE(report("report").starts_with("program Status Bar 0\n"));
}

TEST_F(LauncherTest, PathUnderLibraryLiesInTheMachineWideLibrary) {
    const EnvironmentVariable library("KELVO_LOCAL_LIBRARY", directory_.path("local"));
    writeProgram("local/PreferencePanes/Status.app/AppRun");
    EXPECT_TRUE(launcher_.launchApplication("/Library//PreferencePanes/./Status.app"));
    EXPECT_TRUE(report("local/PreferencePanes/report").starts_with("program AppRun 0\n"));
}

TEST_F(LauncherTest, NothingStartsWhereThereIsNoProgram) {
    directory_.write("Empty.app/readme", "");
    directory_.write("Plain.app/AppRun", "no program");
    fs::create_directories(directory_.path("Folder.app/AppRun"));
    writeProgram("Damaged.app/AppRun", "#!/no/such/interpreter\n");
    for (const char* application : {"Empty.app", "Plain.app", "Folder.app", "Damaged.app", "Missing.app"}) {
        EXPECT_FALSE(launcher_.launchApplication(directory_.path(application))) << application;
    }
    EXPECT_FALSE(launcher_.launchApplication(""));
    EXPECT_FALSE(launcher_.launchApplication(directory_.path("Empty.app") + std::string("\0x", 2)));
}

} // namespace
