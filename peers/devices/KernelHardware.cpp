#include "peers/devices/KernelHardware.h"

#include "linux/EvdevDisplay.h"
#include "linux/UinputDevice.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <systemd/sd-daemon.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <vector>

namespace kelvo {

namespace {

constexpr char kMaker[] = "/dev/uinput";

Descriptor openFile(const std::string& path, int mode) {
    Descriptor file(::open(path.c_str(), mode | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (!file) throw std::system_error(errno, std::generic_category(), path + " cannot be opened");
    return file;
}

class MadeDevices final : public Hardware::Devices {
public:
    MadeDevices(const touch::PanelDescription& panel, const std::string& place) {
        for (const VirtualDescription& description : virtualDescriptionsOf(panel, place)) {
            devices_.emplace_back(openFile(kMaker, O_WRONLY), description);
        }
    }

    VirtualNodes openNodes() override {
        VirtualNodes nodes;
        for (std::size_t i = 0; i < nodes.size(); ++i) nodes.at(i) = openFile(devices_.at(i).eventNode(), O_WRONLY);
        return nodes;
    }

private:
    std::vector<UinputDevice> devices_;
};

} // namespace

Descriptor KernelHardware::openDisplay(const std::string& node) { return openFile(node, O_RDONLY); }

touch::PanelDescription KernelHardware::describe(const Descriptor& display) {
    const Evdev device = evdevOf(display.number());
    if (!device || !isTouchDisplay(device.get())) throw std::runtime_error("this is no longer a touch display");
    return panelDescriptionOf(device.get());
}

std::unique_ptr<Hardware::Devices> KernelHardware::makeDevices(const touch::PanelDescription& panel,
                                                               const std::string& place) {
    return std::make_unique<MadeDevices>(panel, place);
}

/// Not needed if the device is gone.
void KernelHardware::revoke(const Descriptor& file) { (void)::ioctl(file.number(), EVIOCREVOKE, nullptr); }

void KernelHardware::store(const Descriptor& file, const std::string& name) {
    const int number = file.number();
    (void)sd_pid_notify_with_fds(0, 0, ("FDSTORE=1\nFDNAME=" + name).c_str(), &number, 1);
}

void KernelHardware::drop(const std::string& name) { (void)sd_notify(0, ("FDSTOREREMOVE=1\nFDNAME=" + name).c_str()); }

void revokeWhatWasStored(Hardware& hardware) {
    char** names = nullptr;
    const int count = sd_listen_fds_with_names(1, &names);
    for (int i = 0; i < count; ++i) {
        const Descriptor file(SD_LISTEN_FDS_START + i);
        hardware.revoke(file);
        hardware.drop(names[i]);
        std::free(names[i]);
    }
    std::free(names);
}

} // namespace kelvo
