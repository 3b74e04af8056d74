#pragma once

#include "platform/Application.h"
#include "platform/Bundle.h"
#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/SystemVersion.h"
#include "support/FakeNibs.h"
#include "support/MemoryPorts.h"
#include "support/RememberingCoder.h"
#include "support/ScriptedClock.h"
#include "support/ScriptedRunLoop.h"

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace support {

/// Keeps every log line.
class RecordedLog : public platform::SystemLog {
public:
    std::vector<std::string> lines;
    /// What is looked at when a line has just been written.
    std::function<void(std::string_view line)> duringWrite;
    /// Whether lines are kept at all.
    bool isKept = true;
    [[nodiscard]] bool isRead() const override { return isKept; }
    void write(std::string_view line) override {
        lines.emplace_back(line);
        if (duringWrite) duringWrite(line);
    }
};

/// Files in memory, below "/home/user" and "/machine/Library".
class MemoryFileManager : public platform::NSFileManager {
public:
    std::map<std::string, platform::NSData> files;
    /// The folders created, in order.
    std::vector<std::string> createdFolders;
    /// No write succeeds while this is set.
    bool isDiskFull = false;
    /// No folder can be created while this is set.
    bool isReadOnly = false;
    int writes = 0;
    /// What is looked at when a file has just been written.
    std::function<void(const std::string& path)> duringWrite;
    /// What another process does once, just before this one creates a file.
    std::function<void()> beforeCreation;
    /// The names in each folder that can be listed, in the order in which they are; a folder's path is without a
    /// trailing "/". A name may be listed though nothing is there any more.
    std::map<std::string, std::vector<std::string>> listings;
    /// When the entries that are there were modified, by their paths.
    std::map<std::string, platform::NSDate> modificationDates;

    [[nodiscard]] std::string textOf(const std::string& path) const;
    void setText(const std::string& path, std::string_view text);

    [[nodiscard]] bool fileExistsAtPath(const std::string& path) override;
    void createDirectoryAtPath(const std::string& path) override;
    [[nodiscard]] bool visitDirectoryAtPath(const std::string& path,
                                            const std::function<bool(std::string_view name)>& visit) override;
    [[nodiscard]] std::optional<platform::NSDate> modificationDateAtPath(const std::string& path) override;
    [[nodiscard]] std::optional<platform::NSData> contentsAtPath(const std::string& path) override;
    [[nodiscard]] bool writeAtomically(const std::string& path, std::span<const std::uint8_t> contents) override;
    [[nodiscard]] bool createAtomically(const std::string& path, std::span<const std::uint8_t> contents) override;
    [[nodiscard]] std::string homeDirectory() override { return "/home/user"; }
    [[nodiscard]] std::string localLibraryDirectory() override { return "/machine/Library"; }
};

/// One bundle with a strings table of its own.
class MemoryBundle : public platform::NSBundle, public platform::NSBundles {
public:
    std::map<std::string, std::string, std::less<>> strings = {{"PreferenceFolderName", "KelvoTouchDisplay"},
                                                               {"Alert.disconnect", "text of Alert.disconnect"},
                                                               {"Alert.driverDisable", "text of Alert.driverDisable"}};
    /// Whether the bundle can be found at all.
    bool isLoaded = true;

    [[nodiscard]] std::string localizedStringForKey(std::string_view key, std::string_view value) override;
    [[nodiscard]] platform::NSBundle* bundleWithIdentifier(std::string_view identifier) override;
};

/// A system of a version that a test can choose.
class ScriptedSystemVersion : public platform::SystemVersion {
public:
    std::int32_t version = 0x1090;

    [[nodiscard]] std::int32_t gestalt(std::uint32_t selector) override {
        return selector == platform::gestaltSystemVersion ? version : 0;
    }
};

/// The host application and its desktop, which only keep what they were asked, in order.
class RecordedApplication : public platform::NSApplication, public platform::NSWorkspace {
public:
    std::vector<std::string> requests;
    /// The alerts that were shown, ended ones included.
    std::vector<platform::NSAlertSheet> sheets;

    /// Closes the alert `sheets[index]` as by the button of `returnCode`. An alert closes once, and whose delegate is
    /// gone is closed without its knowing.
    void endSheet(std::size_t index, std::int32_t returnCode);

    void activateIgnoringOtherApps() override {
        requests.emplace_back("activate");
        if (onActivation) onActivation();
    }
    void beginInformationalAlertSheet(const platform::NSAlertSheet& sheet, const platform::NSObject& delegate,
                                      std::function<void(std::int32_t returnCode)> didEnd) override;
    /// Records the request; the alert stays open until the test ends it.
    void endSheetInKeyWindow() override { requests.emplace_back("endSheet"); }
    bool launchApplication(const std::string& fullPath) override {
        requests.push_back("launch " + fullPath);
        return canLaunch;
    }

    bool canLaunch = true;
    /// What else happens when the host is activated.
    std::function<void()> onActivation;

private:
    struct Ending {
        std::weak_ptr<const void> delegate;
        std::function<void(std::int32_t returnCode)> didEnd;
    };
    /// What to tell of the end of each of `sheets`; empty once told.
    std::vector<Ending> endings_;
};

/// A whole platform without a system, in force for as long as it lives. The state that panes share is as in a new
/// process.
class FakePlatform {
public:
    FakePlatform();
    ~FakePlatform();
    FakePlatform(const FakePlatform&) = delete;
    FakePlatform& operator=(const FakePlatform&) = delete;

    RecordedLog log;
    MemoryFileManager files;
    RememberingCoder propertyLists;
    MemoryBundle bundle;
    ScriptedRunLoop runLoop;
    ScriptedClock clock{runLoop};
    ScriptedSystemVersion systemVersion;
    MemoryPorts ports{runLoop};
    RecordedApplication application;
    FakeNibs nibs;

    /// What a property-list file holds; nil when it is missing or damaged.
    [[nodiscard]] platform::NSMutableDictionary plist(const std::string& path);
    void setPlist(const std::string& path, const platform::NSMutableDictionary& contents);

private:
    platform::Platform platform_{.log = log,
                                 .fileManager = files,
                                 .propertyLists = propertyLists,
                                 .bundles = bundle,
                                 .messagePorts = ports,
                                 .runLoop = runLoop,
                                 .clock = clock,
                                 .systemVersion = systemVersion,
                                 .workspace = &application,
                                 .application = &application,
                                 .nibs = &nibs};
};

/// A dictionary of the pairs given.
[[nodiscard]] platform::NSMutableDictionary
dictionaryOf(std::initializer_list<platform::NSMutableDictionary::ObjectAndKey> pairs);
/// A list of names.
[[nodiscard]] platform::NSMutableArray arrayOf(std::initializer_list<platform::Value> values);

} // namespace support
