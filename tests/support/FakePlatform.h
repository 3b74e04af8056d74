#pragma once

#include "linux/PlistCoder.h"
#include "platform/Application.h"
#include "platform/Bundle.h"
#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "support/MemoryPorts.h"
#include "support/ScriptedRunLoop.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace support {

/// Keeps every log line.
class RecordedLog : public platform::SystemLog {
public:
    std::vector<std::string> lines;
    void write(std::string_view line) override { lines.emplace_back(line); }
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

    [[nodiscard]] std::string textOf(const std::string& path) const;
    void setText(const std::string& path, std::string_view text);

    [[nodiscard]] bool fileExistsAtPath(const std::string& path) override;
    void createDirectoryAtPath(const std::string& path) override;
    [[nodiscard]] std::optional<platform::NSData> contentsAtPath(const std::string& path) override;
    [[nodiscard]] bool writeAtomically(const std::string& path, std::span<const std::uint8_t> contents) override;
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

/// The host application and its desktop, which only keep what they were asked, in order.
class RecordedApplication : public platform::NSApplication, public platform::NSWorkspace {
public:
    std::vector<std::string> requests;

    void activateIgnoringOtherApps() override { requests.emplace_back("activate"); }
    void endSheetInKeyWindow() override { requests.emplace_back("endSheet"); }
    bool launchApplication(const std::string& fullPath) override {
        requests.push_back("launch " + fullPath);
        return canLaunch;
    }

    bool canLaunch = true;
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
    kelvo::PlistCoder propertyLists;
    MemoryBundle bundle;
    ScriptedRunLoop runLoop;
    MemoryPorts ports{runLoop};
    RecordedApplication application;

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
                                 .workspace = &application,
                                 .application = &application};
};

/// A dictionary of the pairs given.
[[nodiscard]] platform::NSMutableDictionary
dictionaryOf(std::initializer_list<platform::NSMutableDictionary::ObjectAndKey> pairs);
/// A list of names.
[[nodiscard]] platform::NSMutableArray arrayOf(std::initializer_list<platform::Value> values);

} // namespace support
