#pragma once

#include "peers/devices/Hardware.h"

namespace kelvo {

/// The devices of the running kernel; open files are stored with the service manager, where there is one.
class KernelHardware final : public Hardware {
public:
    [[nodiscard]] Descriptor openDisplay(const std::string& node) override;
    [[nodiscard]] touch::PanelDescription describe(const Descriptor& display) override;
    [[nodiscard]] std::unique_ptr<Devices> makeDevices(const touch::PanelDescription& panel,
                                                       const std::string& place) override;
    void revoke(const Descriptor& file) override;
    void store(const Descriptor& file, const std::string& name) override;
    void drop(const std::string& name) override;
};

/// Takes away what an earlier process of this service has handed out and could not take back.
void revokeWhatWasStored(Hardware& hardware);

} // namespace kelvo
