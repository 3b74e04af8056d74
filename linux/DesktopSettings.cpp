#include "linux/DesktopSettings.h"

#include "linux/BusConnection.h"
#include "linux/CommandOutput.h"
#include "linux/Descriptor.h"
#include "linux/SwaySettings.h"
#include "linux/Trimmed.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

using touch::Surroundings;

/// None where that is no time that a double click can take.
std::optional<touch::Time> millisecondsIn(std::string_view text) {
    text = trimmed(text);
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size() || number <= 0) return std::nullopt;
    return std::chrono::milliseconds(number);
}

std::string environmentOr(const char* name, const std::string& other) {
    const char* value = std::getenv(name);
    return value && *value ? value : other;
}

/// GNOME's settings, by the program that reads them; their store says over the bus when one has changed.
class GnomeSettings final : public touch::DesktopWatch {
public:
    GnomeSettings(platform::CFRunLoop& loop, std::function<void()> changed)
        : loop_(loop), changed_(std::move(changed)), connection_(BusConnection::open(loop, "", [this] { askAnew(); })) {
        follow();
        ask();
    }

    [[nodiscard]] const Surroundings& surroundings() const override { return surroundings_; }

private:
    static constexpr std::string_view kFolder = "/org/gnome/desktop/peripherals/";

    void follow() {
        if (!connection_) return;
        sd_bus_slot* slot = nullptr;
        if (sd_bus_add_match_async(connection_->bus(), &slot,
                                   "type='signal',interface='ca.desrt.dconf.Writer',member='Notify'", onNotify, nullptr,
                                   this) >= 0) {
            notifications_.reset(slot);
        }
        connection_->process();
    }

    /// What has changed is the prefix alone, or it with each of the endings.
    static int onNotify(sd_bus_message* signal, void* self, sd_bus_error* /*error*/) noexcept {
        const char* prefix = nullptr;
        if (sd_bus_message_read(signal, "s", &prefix) <= 0) return 0;
        const std::string_view changed(prefix);
        if (changed.starts_with(kFolder) || kFolder.starts_with(changed)) {
            static_cast<GnomeSettings*>(self)->isStale_ = true;
        }
        return 0;
    }

    void askAnew() {
        if (std::exchange(isStale_, false)) ask();
    }

    void ask() {
        interval_ = std::make_unique<CommandOutput>(
            loop_, std::vector<std::string>{"gsettings", "get", "org.gnome.desktop.peripherals.mouse", "double-click"},
            [this](const std::string& text) {
                Surroundings found = surroundings_;
                found.doubleClickInterval = millisecondsIn(text);
                take(found);
            });
        scrolling_ = std::make_unique<CommandOutput>(
            loop_,
            std::vector<std::string>{"gsettings", "get", "org.gnome.desktop.peripherals.touchpad", "natural-scroll"},
            [this](const std::string& text) {
                Surroundings found = surroundings_;
                found.scrollsNaturally = trimmed(text) == "true";
                take(found);
            });
    }

    void take(const Surroundings& found) {
        if (found == surroundings_) return;
        surroundings_ = found;
        changed_();
    }

    platform::CFRunLoop& loop_;
    std::function<void()> changed_;
    Surroundings surroundings_;
    bool isStale_ = false;
    std::shared_ptr<BusConnection> connection_;
    BusSlot notifications_;
    std::unique_ptr<CommandOutput> interval_;
    std::unique_ptr<CommandOutput> scrolling_;
};

/// KDE's settings, which are files.
class KdeSettings final : public touch::DesktopWatch {
public:
    KdeSettings(platform::CFRunLoop& loop, std::function<void()> changed)
        : changed_(std::move(changed)),
          folder_(environmentOr("XDG_CONFIG_HOME", environmentOr("HOME", "") + "/.config")),
          notifier_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
        if (notifier_ && ::inotify_add_watch(notifier_.number(), folder_.c_str(), IN_CLOSE_WRITE | IN_MOVED_TO) >= 0) {
            watch_ = loop.watch(notifier_.number(), [this] { read(); });
        }
        surroundings_ = look();
    }

    [[nodiscard]] const Surroundings& surroundings() const override { return surroundings_; }

private:
    void read() {
        std::array<char, 4096> events{};
        while (::read(notifier_.number(), events.data(), events.size()) > 0) {
        }
        Surroundings found = look();
        if (found == surroundings_) return;
        surroundings_ = std::move(found);
        changed_();
    }

    [[nodiscard]] Surroundings look() const {
        return settingsInKdeFiles(textOf(folder_ + "/kdeglobals"), textOf(folder_ + "/kcminputrc"));
    }

    [[nodiscard]] static std::string textOf(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::function<void()> changed_;
    std::string folder_;
    Descriptor notifier_;
    std::unique_ptr<platform::CFFileDescriptor> watch_;
    Surroundings surroundings_;
};

/// Calls `visit` with the group, the key and the value of each entry of a file of KDE's.
template <typename Visit>
void visitEntries(std::string_view text, const Visit& visit) {
    std::string_view group;
    while (!text.empty()) {
        const std::string_view line = trimmed(text.substr(0, text.find('\n')));
        text.remove_prefix(std::min(text.find('\n'), text.size() - 1) + 1);
        const std::size_t equals = line.find('=');
        if (line.starts_with('[')) {
            group = line;
        } else if (equals != std::string_view::npos) {
            visit(group, trimmed(line.substr(0, equals)), trimmed(line.substr(equals + 1)));
        }
    }
}

/// Of "[Libinput][MAKER][MODEL][NAME]"; empty where the group is of no device.
std::string_view deviceOf(std::string_view group) {
    if (!group.starts_with("[Libinput][") || !group.ends_with("]")) return {};
    group.remove_suffix(1);
    return group.substr(group.rfind("][") + 2);
}

bool isAmong(std::string_view names, std::initializer_list<std::string_view> wanted) {
    while (!names.empty()) {
        const std::string_view name = names.substr(0, names.find(':'));
        if (std::ranges::find(wanted, name) != wanted.end()) return true;
        names.remove_prefix(std::min(name.size() + 1, names.size()));
    }
    return false;
}

} // namespace

Surroundings settingsInKdeFiles(std::string_view globals, std::string_view input) {
    Surroundings found;
    visitEntries(globals, [&](std::string_view group, std::string_view key, std::string_view value) {
        if (group == "[KDE]" && key == "DoubleClickInterval") found.doubleClickInterval = millisecondsIn(value);
    });
    visitEntries(input, [&](std::string_view group, std::string_view key, std::string_view value) {
        const std::string_view device = deviceOf(group);
        if (!device.empty() && key == "NaturalScroll" && value == "true") found.naturalTouchpads.emplace_back(device);
    });
    return found;
}

std::unique_ptr<touch::DesktopWatch> openDesktopSettings(platform::CFRunLoop& loop, std::function<void()> changed) {
    const std::string names = environmentOr("XDG_CURRENT_DESKTOP", "");
    if (isAmong(names, {"KDE"})) return std::make_unique<KdeSettings>(loop, std::move(changed));
    if (isAmong(names, {"GNOME", "Unity", "Budgie", "Pantheon"})) {
        return std::make_unique<GnomeSettings>(loop, std::move(changed));
    }
    // sway does not name itself there unless its user does.
    const std::string sway = environmentOr("SWAYSOCK", "");
    if (!sway.empty()) return openSwaySettings(loop, sway, std::move(changed));
    return nullptr;
}

} // namespace kelvo
