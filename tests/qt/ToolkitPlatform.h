#pragma once

#include "platform/Bundle.h"
#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/MessagePorts.h"
#include "platform/Platform.h"
#include "platform/PropertyList.h"
#include "platform/SystemVersion.h"
#include "qt/Forms.h"
#include "qt/QtNibs.h"
#include "qt/QtRunLoop.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kelvo {

inline constexpr char kTestBundleIdentifier[] = "com.kelvo.Test";

/// Keeps every log line.
class RecordedLog : public platform::SystemLog {
public:
    std::vector<std::string> lines;
    void write(std::string_view line) override { lines.emplace_back(line); }
};

/// The text of KEY is "text of KEY", unless a test gives it another one, or none by calling it missing.
class EchoBundle : public platform::NSBundle, public platform::NSBundles {
public:
    std::set<std::string> keysAskedFor;
    std::set<std::string> missingKeys;
    std::map<std::string, std::string> texts;
    /// What lies in every folder of resources.
    std::vector<std::string> resourcePaths;
    bool isLoaded = true;

    [[nodiscard]] std::string localizedStringForKey(std::string_view key, std::string_view value) override;
    [[nodiscard]] std::vector<std::string> pathsForResourcesOfTypeInDirectory(std::string_view type,
                                                                              std::string_view directory) override;
    [[nodiscard]] platform::NSBundle* bundleWithIdentifier(std::string_view identifier) override;
};

/// A world without files, property lists and message ports.
class EmptyWorld : public platform::NSFileManager, public platform::PropertyLists, public platform::CFMessagePorts {
public:
    [[nodiscard]] bool fileExistsAtPath(const std::string&) override { return false; }
    void createDirectoryAtPath(const std::string&) override {}
    [[nodiscard]] bool visitDirectoryAtPath(const std::string&, const std::function<bool(std::string_view)>&) override {
        return false;
    }
    [[nodiscard]] std::optional<platform::NSDate> modificationDateAtPath(const std::string&) override {
        return std::nullopt;
    }
    [[nodiscard]] std::optional<platform::NSData> contentsAtPath(const std::string&) override { return std::nullopt; }
    [[nodiscard]] bool writeAtomically(const std::string&, std::span<const std::uint8_t>) override { return false; }
    [[nodiscard]] bool createAtomically(const std::string&, std::span<const std::uint8_t>) override { return false; }
    [[nodiscard]] std::string homeDirectory() override { return "/nowhere"; }
    [[nodiscard]] std::string localLibraryDirectory() override { return "/nowhere/Library"; }

    [[nodiscard]] std::optional<platform::NSData> createXMLData(const platform::Value&) override {
        return std::nullopt;
    }
    [[nodiscard]] platform::Value createFromXMLData(std::span<const std::uint8_t>) override { return {}; }
    [[nodiscard]] platform::Value createFromFileData(std::span<const std::uint8_t>) override { return {}; }

    [[nodiscard]] std::unique_ptr<platform::CFMessagePort> createLocal(const std::string&, CallBack) override {
        return nullptr;
    }
    [[nodiscard]] std::unique_ptr<platform::CFRemoteMessagePort> createRemote(const std::string&) override {
        return nullptr;
    }
};

/// It is always the same time, on a system that says nothing of itself.
class StoppedClock : public platform::Clock, public platform::SystemVersion {
public:
    [[nodiscard]] platform::NSDate date() override { return {}; }
    [[nodiscard]] std::uint32_t tickCount() override { return 0; }
    void sleep(unsigned) override {}
    [[nodiscard]] std::int32_t gestalt(std::uint32_t) override { return 0; }
};

/// The toolkit's services in a world that holds nothing else, in force for as long as it lives.
class ToolkitPlatform {
public:
    explicit ToolkitPlatform(Forms forms = paneForms()) : nibs(kTestBundleIdentifier, std::move(forms)) {
        platform::usePlatform(&platform_);
    }
    ~ToolkitPlatform() { platform::usePlatform(nullptr); }
    ToolkitPlatform(const ToolkitPlatform&) = delete;
    ToolkitPlatform& operator=(const ToolkitPlatform&) = delete;

    RecordedLog log;
    EchoBundle bundle;
    EmptyWorld world;
    StoppedClock clock;
    QtRunLoop runLoop;
    QtNibs nibs;

private:
    platform::Platform platform_{.log = log,
                                 .fileManager = world,
                                 .propertyLists = world,
                                 .bundles = bundle,
                                 .messagePorts = world,
                                 .runLoop = runLoop,
                                 .clock = clock,
                                 .systemVersion = clock,
                                 .nibs = &nibs};
};

/// A controller that the pane's form can be bound to. It records which of its operations were called.
class PaneStandIn : public platform::NSNibOwner, public platform::NSTabViewDelegate {
public:
    PaneStandIn() { tabView_.setDelegate(this); }

    [[nodiscard]] std::vector<platform::NSOutlet> outlets() override;
    [[nodiscard]] std::vector<platform::NSNibAction> actions() override;
    void tabViewWillSelectTabViewItem(platform::NSTabView& tabView, const platform::NSTabViewItem& item) override;

    platform::NSPopUpButton selectDeviceBtn_;
    platform::NSView selectDeviceView_;
    platform::NSPopUpButton tabPopUp_;
    platform::NSTabView tabView_;
    platform::NSButton statusBarState_{platform::NSButton::Type::Switch};
    platform::NSTextField alertTextField_;
    platform::NSViewController calibrationVC_{""};
    platform::NSViewController settingVC_{""};
    platform::NSViewController hardwareInformationVC_{""};
    platform::NSViewController VersionVC_{""};

    std::vector<std::string> calls;
};

} // namespace kelvo
