#include "linux/PosixFileManager.h"

#include "support/EnvironmentVariable.h"
#include "support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <latch>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using kelvo::PosixFileManager;
namespace fs = std::filesystem;

platform::NSData bytes(std::string_view text) { return {text.begin(), text.end()}; }

mode_t modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777U;
}

/// The names in a folder, hidden ones included.
std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

/// The names that a visit of the folder meets, in its order; none when it cannot be listed.
std::optional<std::vector<std::string>> namesVisitedIn(const std::string& folder) {
    std::vector<std::string> names;
    const bool wasListed = PosixFileManager().visitDirectoryAtPath(folder, [&](std::string_view name) {
        names.emplace_back(name);
        return true;
    });
    return wasListed ? std::optional(names) : std::nullopt;
}

/// Of the entry itself, not of what it may link to.
void setModificationTime(const std::string& path, timespec time) {
    const std::array<timespec, 2> times{time, time};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times.data(), AT_SYMLINK_NOFOLLOW), 0) << path;
}

class Umask {
public:
    explicit Umask(mode_t mask) : previous_(::umask(mask)) {}
    Umask(const Umask&) = delete;
    Umask& operator=(const Umask&) = delete;
    ~Umask() { ::umask(previous_); }

private:
    mode_t previous_;
};

/// Makes every file of this process end at so many bytes, as a full disk would.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t size) : previousAction_(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &previous_);
        const rlimit limit{size, previous_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &previous_);
        (void)std::signal(SIGXFSZ, previousAction_);
    }

private:
    rlimit previous_{};
    void (*previousAction_)(int);
};

/// A disk of 64 KiB.
class SmallDisk {
public:
    explicit SmallDisk(std::string path)
        : path_(std::move(path)),
          isMounted_(fs::create_directory(path_) &&
                     ::mount("none", path_.c_str(), "tmpfs", MS_NOSUID | MS_NODEV, "size=64k") == 0) {}
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    ~SmallDisk() {
        if (isMounted_) ::umount(path_.c_str());
    }
    [[nodiscard]] bool isMounted() const { return isMounted_; }

private:
    std::string path_;
    bool isMounted_;
};

TEST(PosixFileManager, HomeIsTheVariableWithoutTrailingSlashes) {
    const EnvironmentVariable home("HOME", "/home/somebody//");
    EXPECT_EQ(PosixFileManager().homeDirectory(), "/home/somebody");
}

TEST(PosixFileManager, HomeAtTheRootStaysTheRoot) {
    const EnvironmentVariable home("HOME", "/");
    EXPECT_EQ(PosixFileManager().homeDirectory(), "/");
}

TEST(PosixFileManager, HomeComesFromThePasswordDatabaseWhenTheVariableIsMissingOrEmpty) {
    const passwd* user = ::getpwuid(::getuid());
    if (!user) GTEST_SKIP() << "this user is not in the password database";
    const std::string expected = user->pw_dir;
    {
        const EnvironmentVariable missing("HOME", std::nullopt);
        EXPECT_EQ(PosixFileManager().homeDirectory(), expected);
    }
    const EnvironmentVariable empty("HOME", "");
    EXPECT_EQ(PosixFileManager().homeDirectory(), expected);
}

TEST(PosixFileManager, LocalLibraryIsTheVariableElseTheBuildSetting) {
    {
        const EnvironmentVariable library("KELVO_LOCAL_LIBRARY", "/somewhere/Library/");
        EXPECT_EQ(PosixFileManager().localLibraryDirectory(), "/somewhere/Library");
    }
    std::string setting;
    {
        const EnvironmentVariable missing("KELVO_LOCAL_LIBRARY", std::nullopt);
        setting = PosixFileManager().localLibraryDirectory();
    }
    EXPECT_TRUE(setting.starts_with('/'));
    const EnvironmentVariable empty("KELVO_LOCAL_LIBRARY", "");
    EXPECT_EQ(PosixFileManager().localLibraryDirectory(), setting);
}

TEST(PosixFileManager, FilesFoldersAndLinksToThemExistAndDanglingLinksDoNot) {
    const TemporaryDirectory directory;
    const std::string file = directory.write("file", "x");
    fs::create_symlink(file, directory.path("link"));
    fs::create_symlink("nothing", directory.path("dangling"));
    PosixFileManager files;
    EXPECT_TRUE(files.fileExistsAtPath(file));
    EXPECT_TRUE(files.fileExistsAtPath(directory.path()));
    EXPECT_TRUE(files.fileExistsAtPath(directory.path("link")));
    EXPECT_FALSE(files.fileExistsAtPath(directory.path("dangling")));
    EXPECT_FALSE(files.fileExistsAtPath(directory.path("missing")));
    EXPECT_FALSE(files.fileExistsAtPath(""));
}

TEST(PosixFileManager, FoldersAreMadeWithTheirParentsAndNobodyElseMayWriteInThem) {
    const TemporaryDirectory directory;
    const Umask open(0);
    PosixFileManager().createDirectoryAtPath(directory.path("a//b/c/"));
    EXPECT_EQ(modeOf(directory.path("a")), 0755U);
    EXPECT_EQ(modeOf(directory.path("a/b/c")), 0755U);
}

TEST(PosixFileManager, TheUmaskTakesAwayFromNewFolders) {
    const TemporaryDirectory directory;
    const Umask strict(077);
    PosixFileManager().createDirectoryAtPath(directory.path("a/b"));
    EXPECT_EQ(modeOf(directory.path("a/b")), 0700U);
}

TEST(PosixFileManager, FolderUnderAFileStaysMissing) {
    const TemporaryDirectory directory;
    directory.write("file", "x");
    PosixFileManager files;
    files.createDirectoryAtPath(directory.path("file/folder"));
    EXPECT_FALSE(files.fileExistsAtPath(directory.path("file/folder")));
    EXPECT_EQ(directory.read("file"), "x");
}

TEST(PosixFileManager, FolderIsVisitedInTheOrderOfTheFileSystem) {
    const TemporaryDirectory directory;
    for (const char* name : {"c", "a", ".hidden", "b", "...", "longer name"}) directory.write(name, "");
    directory.write("folder/inner", "");
    fs::create_symlink("nothing", directory.path("dangling"));
    std::vector<std::string> listed;
    for (const auto& entry : fs::directory_iterator(directory.path())) listed.push_back(entry.path().filename());

    EXPECT_EQ(namesVisitedIn(directory.path()), listed);
    EXPECT_EQ(listed.size(), 8U);
    EXPECT_EQ(namesVisitedIn(directory.path() + "/"), listed);
    EXPECT_EQ(namesVisitedIn(directory.path("folder")), std::vector<std::string>{"inner"});
}

TEST(PosixFileManager, EmptyFolderIsListedWithoutAVisit) {
    const TemporaryDirectory directory;
    EXPECT_EQ(namesVisitedIn(directory.path()), std::vector<std::string>());
}

TEST(PosixFileManager, VisitEndsWhereItIsToldTo) {
    const TemporaryDirectory directory;
    for (const char* name : {"a", "b", "c"}) directory.write(name, "");
    int visits = 0;
    EXPECT_TRUE(
        PosixFileManager().visitDirectoryAtPath(directory.path(), [&](std::string_view) { return ++visits < 2; }));
    EXPECT_EQ(visits, 2);
}

TEST(PosixFileManager, WhatAVisitDoesToTheErrorNumberIsNoFailureOfTheListing) {
    const TemporaryDirectory directory;
    directory.write("file", "");
    EXPECT_TRUE(PosixFileManager().visitDirectoryAtPath(directory.path(), [](std::string_view) {
        errno = EIO;
        return true;
    }));
}

TEST(PosixFileManager, ExceptionOfAVisitPassesAndClosesTheFolder) {
    const TemporaryDirectory directory;
    directory.write("file", "");
    PosixFileManager files;
    const std::vector<std::string> open = namesIn("/proc/self/fd");
    EXPECT_THROW((void)files.visitDirectoryAtPath(
                     directory.path(), [](std::string_view) -> bool { throw std::runtime_error("no more"); }),
                 std::runtime_error);
    EXPECT_EQ(namesIn("/proc/self/fd"), open);
}

TEST(PosixFileManager, WhatIsNoFolderCannotBeListed) {
    const TemporaryDirectory directory;
    directory.write("file", "");
    fs::create_symlink(directory.path(), directory.path("link"));
    EXPECT_EQ(namesVisitedIn(directory.path("file")), std::nullopt);
    EXPECT_EQ(namesVisitedIn(directory.path("missing")), std::nullopt);
    EXPECT_EQ(namesVisitedIn(""), std::nullopt);
    EXPECT_TRUE(namesVisitedIn(directory.path("link")));
}

TEST(PosixFileManager, ModificationDateIsTheEntrysOwnToTheNanosecond) {
    const TemporaryDirectory directory;
    const std::string file = directory.write("file", "");
    fs::create_symlink(file, directory.path("link"));
    fs::create_symlink("nothing", directory.path("dangling"));
    setModificationTime(file, {978'307'203, 250'000'001});
    setModificationTime(directory.path("link"), {978'307'300, 0});
    setModificationTime(directory.path("dangling"), {978'307'000, 0});
    setModificationTime(directory.path(), {978'307'400, 0});
    PosixFileManager files;
    EXPECT_EQ(files.modificationDateAtPath(file), platform::NSDate{3.250000001});
    EXPECT_EQ(files.modificationDateAtPath(directory.path("link")), platform::NSDate{100.0});
    EXPECT_EQ(files.modificationDateAtPath(directory.path("dangling")), platform::NSDate{-200.0});
    EXPECT_EQ(files.modificationDateAtPath(directory.path()), platform::NSDate{200.0});
}

TEST(PosixFileManager, WhatIsMissingHasNoModificationDate) {
    const TemporaryDirectory directory;
    EXPECT_EQ(PosixFileManager().modificationDateAtPath(directory.path("missing")), std::nullopt);
    EXPECT_EQ(PosixFileManager().modificationDateAtPath(""), std::nullopt);
}

TEST(PosixFileManager, ContentsAreWhole) {
    const TemporaryDirectory directory;
    const std::string large(200'001, 'x');
    PosixFileManager files;
    EXPECT_EQ(files.contentsAtPath(directory.write("large", large)), bytes(large));
    EXPECT_EQ(files.contentsAtPath(directory.write("empty", "")), platform::NSData());
}

TEST(PosixFileManager, WhatIsNoRegularFileHasNoContents) {
    const TemporaryDirectory directory;
    ASSERT_EQ(::mkfifo(directory.path("pipe").c_str(), 0600), 0);
    PosixFileManager files;
    EXPECT_EQ(files.contentsAtPath(directory.path("pipe")), std::nullopt);
    EXPECT_EQ(files.contentsAtPath(directory.path()), std::nullopt);
    EXPECT_EQ(files.contentsAtPath("/dev/zero"), std::nullopt);
    EXPECT_EQ(files.contentsAtPath(directory.path("missing")), std::nullopt);
}

TEST(PosixFileManager, SparseFileBeyondTheLimitHasNoContents) {
    const TemporaryDirectory directory;
    const std::string file = directory.write("huge", "");
    fs::resize_file(file, (std::uintmax_t{256} << 20U) + 1);
    EXPECT_EQ(PosixFileManager().contentsAtPath(file), std::nullopt);
}

TEST(PosixFileManager, NewFileIsItsOwnersAlone) {
    const TemporaryDirectory directory;
    const Umask open(0);
    EXPECT_TRUE(PosixFileManager().writeAtomically(directory.path("new"), bytes("text")));
    EXPECT_EQ(directory.read("new"), "text");
    EXPECT_EQ(modeOf(directory.path("new")), 0600U);
}

TEST(PosixFileManager, ReplacedFileKeepsItsModeWhateverTheUmask) {
    const TemporaryDirectory directory;
    const std::string file = directory.write("file", "old");
    ASSERT_EQ(::chmod(file.c_str(), 0664), 0);
    const Umask strict(077);
    EXPECT_TRUE(PosixFileManager().writeAtomically(file, bytes("new")));
    EXPECT_EQ(directory.read("file"), "new");
    EXPECT_EQ(modeOf(file), 0664U);
}

TEST(PosixFileManager, WriteLeavesNothingBesideTheFile) {
    const TemporaryDirectory directory;
    EXPECT_TRUE(PosixFileManager().writeAtomically(directory.path("file"), {}));
    EXPECT_EQ(namesIn(directory.path()), std::vector<std::string>{"file"});
}

TEST(PosixFileManager, ReaderOfTheOldFileKeepsReadingTheOldFile) {
    const TemporaryDirectory directory;
    std::ifstream reader(directory.write("file", "old text"));
    ASSERT_TRUE(PosixFileManager().writeAtomically(directory.path("file"), bytes("new")));
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(reader), {}), "old text");
}

TEST(PosixFileManager, FileThatHoldsTheContentsAlreadyStaysAsItIs) {
    const TemporaryDirectory directory;
    const std::string path = directory.write("file", "text");
    struct stat before {};
    ASSERT_EQ(::stat(path.c_str(), &before), 0);
    EXPECT_TRUE(PosixFileManager().writeAtomically(path, bytes("text")));
    struct stat after {};
    ASSERT_EQ(::stat(path.c_str(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino);

    EXPECT_TRUE(PosixFileManager().writeAtomically(path, bytes("tent")));
    EXPECT_EQ(PosixFileManager().contentsAtPath(path), bytes("tent"));
}

TEST(PosixFileManager, LinkStaysAndItsTargetIsReplaced) {
    const TemporaryDirectory directory;
    directory.write("real/file", "old");
    fs::create_symlink("real/file", directory.path("inner"));
    fs::create_symlink(directory.path("inner"), directory.path("outer"));
    EXPECT_TRUE(PosixFileManager().writeAtomically(directory.path("outer"), bytes("new")));
    EXPECT_TRUE(fs::is_symlink(directory.path("outer")));
    EXPECT_TRUE(fs::is_symlink(directory.path("inner")));
    EXPECT_EQ(directory.read("real/file"), "new");
    EXPECT_EQ(namesIn(directory.path("real")), std::vector<std::string>{"file"});
}

TEST(PosixFileManager, TargetOfADanglingLinkIsCreated) {
    const TemporaryDirectory directory;
    fs::create_symlink("target", directory.path("link"));
    EXPECT_TRUE(PosixFileManager().writeAtomically(directory.path("link"), bytes("text")));
    EXPECT_TRUE(fs::is_symlink(directory.path("link")));
    EXPECT_EQ(directory.read("target"), "text");
}

TEST(PosixFileManager, LinksInACircleCannotBeWritten) {
    const TemporaryDirectory directory;
    fs::create_symlink("b", directory.path("a"));
    fs::create_symlink("a", directory.path("b"));
    EXPECT_FALSE(PosixFileManager().writeAtomically(directory.path("a"), bytes("text")));
    EXPECT_EQ(namesIn(directory.path()), (std::vector<std::string>{"a", "b"}));
}

TEST(PosixFileManager, FileIsCreatedWholeAndItsOwnersAloneOnlyWhereNothingIs) {
    const TemporaryDirectory directory;
    fs::create_directory(directory.path("folder"));
    fs::create_symlink("target", directory.path("link"));
    const Umask open(0);
    PosixFileManager files;
    EXPECT_TRUE(files.createAtomically(directory.path("file"), bytes("first")));
    EXPECT_EQ(modeOf(directory.path("file")), 0600U);
    EXPECT_FALSE(files.createAtomically(directory.path("file"), bytes("second")));
    EXPECT_EQ(directory.read("file"), "first");
    EXPECT_FALSE(files.createAtomically(directory.path("folder"), bytes("text")));
    EXPECT_FALSE(files.createAtomically(directory.path("new/"), bytes("text")));
    EXPECT_TRUE(files.createAtomically(directory.path("link"), bytes("text")));
    EXPECT_FALSE(files.createAtomically(directory.path("link"), bytes("other")));
    EXPECT_EQ(directory.read("target"), "text");
    EXPECT_EQ(namesIn(directory.path()), (std::vector<std::string>{"file", "folder", "link", "target"}));
}

TEST(PosixFileManager, OfThoseThatCreateOneFileAtOnceOneSucceedsAndItsFileStays) {
    constexpr int kRounds = 100;
    constexpr char kNames[] = {'a', 'b', 'c', 'd'};
    for (int round = 0; round < kRounds; ++round) {
        const TemporaryDirectory directory;
        std::atomic<char> winner = '\0';
        std::atomic<int> winners = 0;
        std::latch start(std::ssize(kNames));
        std::vector<std::thread> writers;
        for (const char name : kNames) {
            writers.emplace_back([&, name] {
                const platform::NSData contents(1000, static_cast<std::uint8_t>(name));
                start.arrive_and_wait();
                if (!PosixFileManager().createAtomically(directory.path("file"), contents)) return;
                winner = name;
                ++winners;
            });
        }
        for (std::thread& writer : writers) writer.join();
        EXPECT_EQ(winners, 1);
        EXPECT_EQ(directory.read("file"), std::string(1000, winner));
        EXPECT_EQ(namesIn(directory.path()), std::vector<std::string>{"file"});
    }
}

TEST(PosixFileManager, OnlyARegularFileIsReplaced) {
    const TemporaryDirectory directory;
    fs::create_directory(directory.path("folder"));
    ASSERT_EQ(::mkfifo(directory.path("pipe").c_str(), 0600), 0);
    PosixFileManager files;
    EXPECT_FALSE(files.writeAtomically(directory.path("folder"), bytes("text")));
    EXPECT_FALSE(files.writeAtomically(directory.path("pipe"), bytes("text")));
    EXPECT_FALSE(files.writeAtomically(directory.path("missing/file"), bytes("text")));
    EXPECT_FALSE(files.writeAtomically(directory.path("new/"), bytes("text")));
    EXPECT_FALSE(files.writeAtomically("", bytes("text")));
    EXPECT_EQ(namesIn(directory.path()), (std::vector<std::string>{"folder", "pipe"}));
}

TEST(PosixFileManager, FileThatCannotBeFinishedLeavesTheOldOne) {
    const TemporaryDirectory directory;
    const std::string file = directory.write("file", "old");
    bool written = true;
    {
        const FileSizeLimit limit(1000);
        written = PosixFileManager().writeAtomically(file, platform::NSData(1001));
    }
    EXPECT_FALSE(written);
    EXPECT_EQ(directory.read("file"), "old");
    EXPECT_EQ(namesIn(directory.path()), std::vector<std::string>{"file"});
}

TEST(PosixFileManager, FullDiskLeavesTheOldFile) {
    const TemporaryDirectory directory;
    const SmallDisk disk(directory.path("disk"));
    if (!disk.isMounted()) GTEST_SKIP() << "no disk can be mounted here";
    const std::string file = directory.write("disk/file", "old");
    EXPECT_FALSE(PosixFileManager().writeAtomically(file, platform::NSData(1'000'000)));
    EXPECT_EQ(directory.read("disk/file"), "old");
    EXPECT_EQ(namesIn(directory.path("disk")), std::vector<std::string>{"file"});
}

/// Writes the file in a process of its own that is killed when it has written `bytesUntilDeath` bytes of it.
void dieInTheMiddleOfWriting(const std::string& path, rlim_t bytesUntilDeath) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const rlimit noCore{0, 0};
        ::setrlimit(RLIMIT_CORE, &noCore);
        const rlimit limit{bytesUntilDeath, bytesUntilDeath};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        (void)std::signal(SIGXFSZ, SIG_DFL);
        (void)PosixFileManager().writeAtomically(path, platform::NSData(bytesUntilDeath + 1));
        ::_exit(0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
}

TEST(PosixFileManager, WriterThatIsKilledLeavesTheOldFileAndOneThatTheNextWriteRemoves) {
    const TemporaryDirectory directory;
    const std::string file = directory.write("file", "old");
    for (int i = 0; i < 3; ++i) {
        dieInTheMiddleOfWriting(file, 1000);
        EXPECT_EQ(directory.read("file"), "old");
        EXPECT_EQ(namesIn(directory.path()), (std::vector<std::string>{".saving-file.0", "file"}));
    }
    EXPECT_TRUE(PosixFileManager().writeAtomically(file, bytes("new")));
    EXPECT_EQ(directory.read("file"), "new");
    EXPECT_EQ(namesIn(directory.path()), std::vector<std::string>{"file"});
}

TEST(PosixFileManager, WhatKilledWritersOfAReadOnlyFileLeftIsRemovedToo) {
    const TemporaryDirectory directory;
    for (const char* number : {"0", "3", "7"}) {
        const std::string left = directory.write(".saving-file." + std::string(number), "half");
        ASSERT_EQ(::chmod(left.c_str(), 0444), 0);
    }
    EXPECT_TRUE(PosixFileManager().writeAtomically(directory.path("file"), bytes("new")));
    EXPECT_EQ(namesIn(directory.path()), std::vector<std::string>{"file"});
}

/// What another process holds while it writes.
class LockedFile {
public:
    explicit LockedFile(const std::string& path) : descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
        EXPECT_EQ(::flock(descriptor_, LOCK_EX | LOCK_NB), 0) << path;
    }
    LockedFile(const LockedFile&) = delete;
    LockedFile& operator=(const LockedFile&) = delete;
    ~LockedFile() { ::close(descriptor_); }

private:
    int descriptor_;
};

TEST(PosixFileManager, WhatAnotherIsWritingAtThatMomentIsLeftToIt) {
    const TemporaryDirectory directory;
    const LockedFile another(directory.write(".saving-file.0", "half"));
    EXPECT_TRUE(PosixFileManager().writeAtomically(directory.path("file"), bytes("new")));
    EXPECT_EQ(directory.read("file"), "new");
    EXPECT_EQ(directory.read(".saving-file.0"), "half");
    EXPECT_EQ(namesIn(directory.path()), (std::vector<std::string>{".saving-file.0", "file"}));
}

TEST(PosixFileManager, MoreWritersThanThereAreNamesForDoNotKeepOneFromWriting) {
    const TemporaryDirectory directory;
    std::vector<std::unique_ptr<LockedFile>> others;
    for (int i = 0; i < 20; ++i) {
        others.push_back(std::make_unique<LockedFile>(directory.write(".saving-file." + std::to_string(i), "half")));
    }
    EXPECT_TRUE(PosixFileManager().writeAtomically(directory.path("file"), bytes("new")));
    EXPECT_EQ(directory.read("file"), "new");
    EXPECT_EQ(namesIn(directory.path()).size(), 21U);
}

TEST(PosixFileManager, WhatLeadsElsewhereUnderATemporaryNameIsNeitherFollowedNorRemoved) {
    const TemporaryDirectory directory;
    directory.write("other/precious", "text");
    fs::create_symlink("other/precious", directory.path(".saving-file.0"));
    ASSERT_EQ(::mkfifo(directory.path(".saving-file.1").c_str(), 0600), 0);
    fs::create_directory(directory.path(".saving-file.2"));
    EXPECT_TRUE(PosixFileManager().writeAtomically(directory.path("file"), bytes("new")));
    EXPECT_EQ(directory.read("other/precious"), "text");
    EXPECT_EQ(namesIn(directory.path()),
              (std::vector<std::string>{".saving-file.0", ".saving-file.1", ".saving-file.2", "file", "other"}));
}

TEST(PosixFileManager, WritersOfOneFileDoNotHinderOneAnother) {
    const TemporaryDirectory directory;
    const std::string file = directory.path("file");
    constexpr int kWriters = 12;
    constexpr int kWrites = 50;
    std::atomic<int> failures = 0;
    std::vector<std::thread> writers;
    for (int writer = 0; writer < kWriters; ++writer) {
        writers.emplace_back([&, writer] {
            const platform::NSData contents(1000, static_cast<std::uint8_t>('a' + writer));
            for (int i = 0; i < kWrites; ++i) failures += PosixFileManager().writeAtomically(file, contents) ? 0 : 1;
        });
    }
    for (std::thread& writer : writers) writer.join();
    EXPECT_EQ(failures, 0);
    const std::string text = directory.read("file");
    EXPECT_EQ(text, std::string(1000, text.empty() ? '?' : text.front()));
    EXPECT_EQ(namesIn(directory.path()), std::vector<std::string>{"file"});
}

TEST(PosixFileManager, NoTemporaryFileLooksLikeOneOfTheSystemsNorIsOneOfThoseRemoved) {
    const TemporaryDirectory directory;
    for (const std::string& name :
         std::vector<std::string>{"com.apple.dock.plist", ".GlobalPreferences.plist", "GlobalPreferences.plist",
                                  "com.apple.systempreferences.plist"}) {
        const std::string file = directory.write(name, "old");
        for (const char* ending : {".aB3", "X", ".lockfile", ".0"}) directory.write(name + ending, "the system's");
        const std::vector<std::string> before = namesIn(directory.path());
        dieInTheMiddleOfWriting(file, 1000);
        std::vector<std::string> added = namesIn(directory.path());
        std::erase_if(added,
                      [&](const std::string& each) { return std::count(before.begin(), before.end(), each) > 0; });
        EXPECT_EQ(added, std::vector<std::string>{".saving-" + name + ".0"});
        EXPECT_TRUE(PosixFileManager().writeAtomically(file, bytes("new")));
        EXPECT_EQ(namesIn(directory.path()), before);
    }
}

TEST(PosixFileManager, LongestFileNameCanBeWritten) {
    const TemporaryDirectory directory;
    const std::string name(255, 'n');
    EXPECT_TRUE(PosixFileManager().writeAtomically(directory.path(name), bytes("text")));
    EXPECT_EQ(namesIn(directory.path()), std::vector<std::string>{name});
}

TEST(PosixFileManager, PathWithANulNamesNothing) {
    const TemporaryDirectory directory;
    const std::string path = directory.write("file", "old") + std::string("\0tail", 5);
    const std::string folder = directory.path("folder") + std::string("\0tail", 5);
    PosixFileManager files;
    EXPECT_FALSE(files.fileExistsAtPath(path));
    EXPECT_EQ(files.contentsAtPath(path), std::nullopt);
    EXPECT_EQ(files.modificationDateAtPath(path), std::nullopt);
    EXPECT_EQ(namesVisitedIn(directory.path() + std::string("\0tail", 5)), std::nullopt);
    EXPECT_FALSE(files.writeAtomically(path, bytes("new")));
    files.createDirectoryAtPath(folder);
    EXPECT_EQ(namesIn(directory.path()), std::vector<std::string>{"file"});
    EXPECT_EQ(directory.read("file"), "old");
}

TEST(PosixFileManager, PathLongerThanTheSystemTakesFails) {
    const TemporaryDirectory directory;
    std::string path = directory.path();
    while (path.size() <= 5000) path += "/folder";
    PosixFileManager files;
    EXPECT_FALSE(files.fileExistsAtPath(path));
    EXPECT_EQ(files.contentsAtPath(path), std::nullopt);
    EXPECT_FALSE(files.writeAtomically(path, bytes("text")));
}

} // namespace
