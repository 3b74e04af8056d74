#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>

/// A session bus of the test's own: a dbus-daemon in a process of its own, on a socket in a temporary folder. Both go
/// with this object. Throws std::runtime_error when the bus cannot be started.
class PrivateBus {
public:
    PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;
    ~PrivateBus();

    [[nodiscard]] std::string address() const;
    /// For files of the test; removed with the bus.
    [[nodiscard]] const std::filesystem::path& folder() const { return folder_; }
    /// Lets the bus start `command` for whoever calls `name` and allows activation.
    void addActivatableService(const std::string& name, const std::string& command) const;

    /// The daemon hangs, its connections open, until resume().
    void hang();
    void resume();
    /// Ends the daemon and with it all connections.
    void kill();
    /// Starts the daemon again, at the same address.
    void start();

private:
    void removeFolder() const;

    std::filesystem::path folder_;
    pid_t daemon_ = -1;
};
