#include "linux/UinputDevice.h"

#include <linux/uinput.h>
#include <sys/ioctl.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

namespace kelvo {

namespace {

/// The requests that describe a device.
class Maker {
public:
    explicit Maker(int uinput) : uinput_(uinput) {}

    template <typename Argument>
    void ask(unsigned long request, Argument argument) const {
        if (::ioctl(uinput_, request, argument) < 0) {
            throw std::system_error(errno, std::generic_category(), "a virtual device cannot be made");
        }
    }

private:
    int uinput_;
};

void declare(const Maker& maker, const VirtualDescription& description) {
    if (!description.keys.empty()) maker.ask(UI_SET_EVBIT, EV_KEY);
    for (const std::uint16_t key : description.keys) maker.ask(UI_SET_KEYBIT, static_cast<int>(key));
    if (!description.axes.empty()) maker.ask(UI_SET_EVBIT, EV_ABS);
    for (const VirtualDescription::Axis& axis : description.axes) {
        const uinput_abs_setup setup{axis.code, axis.range};
        maker.ask(UI_ABS_SETUP, &setup);
    }
    for (const std::uint16_t property : description.properties) maker.ask(UI_SET_PROPBIT, static_cast<int>(property));
    maker.ask(UI_SET_PHYS, description.phys.c_str());
}

uinput_setup setupOf(const VirtualDescription& description) {
    uinput_setup setup{};
    setup.id = description.id;
    // Names in the kernel are null-terminated.
    const std::string name = description.name.substr(0, UINPUT_MAX_NAME_SIZE - 1);
    std::memcpy(setup.name, name.c_str(), name.size() + 1);
    return setup;
}

/// The sysfs folder of the device contains a folder for its event node.
std::string eventNodeOf(const std::string& sysName) {
    for (const auto& entry : std::filesystem::directory_iterator("/sys/class/input/" + sysName)) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with("event")) return "/dev/input/" + name;
    }
    throw std::system_error(ENODEV, std::generic_category(), "a virtual device has no event node");
}

} // namespace

UinputDevice::UinputDevice(Descriptor uinput, const VirtualDescription& description) : uinput_(std::move(uinput)) {
    const Maker maker(uinput_.number());
    declare(maker, description);
    const uinput_setup setup = setupOf(description);
    maker.ask(UI_DEV_SETUP, &setup);
    maker.ask(UI_DEV_CREATE, 0);
    std::array<char, 64> sysName{};
    maker.ask(UI_GET_SYSNAME(sysName.size() - 1), sysName.data());
    eventNode_ = eventNodeOf(sysName.data());
}

} // namespace kelvo
