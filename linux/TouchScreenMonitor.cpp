#include "linux/TouchScreenMonitor.h"

#include "linux/EvdevDisplay.h"

#include <linux/input-event-codes.h>
#include <sys/stat.h>
#include <systemd/sd-device.h>
#include <systemd/sd-event.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <optional>
#include <string_view>
#include <utility>

namespace kelvo {

namespace {

struct Releaser {
    void operator()(sd_event* event) const { sd_event_unref(event); }
    void operator()(sd_device* device) const { sd_device_unref(device); }
    void operator()(sd_device_monitor* monitor) const { sd_device_monitor_unref(monitor); }
    void operator()(sd_device_enumerator* enumerator) const { sd_device_enumerator_unref(enumerator); }
};
template <typename T>
using Released = std::unique_ptr<T, Releaser>;

/// Empty if there is none.
std::string propertyOf(sd_device* device, const char* name) {
    const char* value = nullptr;
    return sd_device_get_property_value(device, name, &value) >= 0 ? value : "";
}

std::string attributeOf(sd_device* device, const char* name) {
    const char* value = nullptr;
    return sd_device_get_sysattr_value(device, name, &value) >= 0 ? value : "";
}

std::string nodeOf(sd_device* device) {
    const char* name = nullptr;
    return sd_device_get_devname(device, &name) >= 0 ? name : "";
}

std::string firstOf(const std::string& first, const std::string& second) { return first.empty() ? second : first; }

std::string identityOf(sd_device* device) {
    return firstOf(propertyOf(device, "ID_SERIAL"), propertyOf(device, "ID_PATH"));
}

/// Describes a node, if it is a touch display.
std::optional<TouchScreen> touchScreenOf(sd_device* device) {
    const char* sysName = nullptr;
    sd_device* input = nullptr;
    if (sd_device_get_sysname(device, &sysName) < 0 || !std::string_view(sysName).starts_with("event") ||
        propertyOf(device, "ID_INPUT_TOUCHSCREEN") != "1" ||
        sd_device_get_parent_with_subsystem_devtype(device, "input", nullptr, &input) < 0) {
        return std::nullopt;
    }
    if (attributeOf(input, "phys").starts_with(kOwnPhys) ||
        !hasBit(attributeOf(input, "properties"), INPUT_PROP_DIRECT) ||
        !hasBit(attributeOf(input, "capabilities/abs"), ABS_MT_SLOT)) {
        return std::nullopt;
    }
    return TouchScreen{nodeOf(device), attributeOf(input, "name"), firstOf(propertyOf(device, "ID_SEAT"), "seat0"),
                       identityOf(device)};
}

class DeviceMonitor final : public TouchScreenMonitor {
public:
    DeviceMonitor(platform::CFRunLoop& loop, Handlers handlers) : loop_(loop), handlers_(std::move(handlers)) {}

    [[nodiscard]] bool start() {
        sd_event* event = nullptr;
        sd_device_monitor* monitor = nullptr;
        if (sd_event_new(&event) < 0) return false;
        event_.reset(event);
        if (sd_device_monitor_new(&monitor) < 0) return false;
        monitor_.reset(monitor);
        if (sd_device_monitor_filter_add_match_subsystem_devtype(monitor, "input", nullptr) < 0 ||
            sd_device_monitor_attach_event(monitor, event) < 0 ||
            sd_device_monitor_start(monitor, onDevice, this) < 0) {
            return false;
        }
        watch_ = loop_.watch(sd_event_get_fd(event), [this] {
            while (sd_event_run(event_.get(), 0) > 0) {
            }
        });
        return true;
    }

    /// The monitor also reports displays that arrive in the meantime; they count once.
    void begin() override {
        sd_device_enumerator* enumerator = nullptr;
        if (sd_device_enumerator_new(&enumerator) < 0) return;
        const Released<sd_device_enumerator> releaser(enumerator);
        // A device that udev has not processed yet does not count; the monitor will report it.
        if (sd_device_enumerator_allow_uninitialized(enumerator) < 0 ||
            sd_device_enumerator_add_match_subsystem(enumerator, "input", 1) < 0) {
            return;
        }
        for (sd_device* device = sd_device_enumerator_get_device_first(enumerator); device;
             device = sd_device_enumerator_get_device_next(enumerator)) {
            come(device);
        }
    }

private:
    static int onDevice(sd_device_monitor* /*monitor*/, sd_device* device, void* self) noexcept {
        sd_device_action_t action{};
        if (sd_device_get_action(device, &action) < 0) return 0;
        try {
            if (action == SD_DEVICE_REMOVE) static_cast<DeviceMonitor*>(self)->go(device);
            if (action == SD_DEVICE_ADD) static_cast<DeviceMonitor*>(self)->come(device);
        } catch (const std::exception&) {
            return -ENOMEM;
        }
        return 0;
    }

    void come(sd_device* device) {
        const auto screen = touchScreenOf(device);
        if (!screen || std::find(known_.begin(), known_.end(), screen->node) != known_.end()) return;
        known_.push_back(screen->node);
        handlers_.came(*screen);
    }

    void go(sd_device* device) {
        const std::string node = nodeOf(device);
        if (std::erase(known_, node) > 0) handlers_.went(node);
    }

    platform::CFRunLoop& loop_;
    Handlers handlers_;
    std::vector<std::string> known_;
    Released<sd_event> event_;
    Released<sd_device_monitor> monitor_;
    std::unique_ptr<platform::CFFileDescriptor> watch_;
};

} // namespace

bool hasBit(const std::string& bitmap, unsigned bit) {
    constexpr unsigned kBitsOfWord = sizeof(unsigned long) * CHAR_BIT;
    std::string_view rest(bitmap);
    for (unsigned word = bit / kBitsOfWord; word > 0; --word) {
        const std::size_t blank = rest.rfind(' ');
        if (blank == std::string_view::npos) return false;
        rest = rest.substr(0, blank);
    }
    // All of it if there is no blank.
    rest.remove_prefix(rest.rfind(' ') + 1);
    unsigned long value = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), value, 16);
    return error == std::errc{} && (value >> (bit % kBitsOfWord) & 1U) != 0;
}

std::string identityOf(int eventNode) {
    struct stat facts {};
    sd_device* device = nullptr;
    if (::fstat(eventNode, &facts) != 0 || !S_ISCHR(facts.st_mode) ||
        sd_device_new_from_devnum(&device, 'c', facts.st_rdev) < 0) {
        return {};
    }
    const Released<sd_device> releaser(device);
    return identityOf(device);
}

std::unique_ptr<TouchScreenMonitor> TouchScreenMonitor::open(platform::CFRunLoop& loop, Handlers handlers) {
    auto monitor = std::make_unique<DeviceMonitor>(loop, std::move(handlers));
    if (!monitor->start()) return nullptr;
    return monitor;
}

} // namespace kelvo
