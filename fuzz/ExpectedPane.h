#pragma once

#include "fuzz/PaneOnFakes.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace fuzzing {

/// What the utilities file holds; a missing or damaged one holds nothing.
struct UtilitiesFile {
    bool exists = false;
    bool isDamaged = false;
    std::optional<std::vector<std::string>> devices{};
    std::optional<bool> driverEnable{};
    std::optional<bool> verboseLog{};
    std::optional<bool> isShowStatuMenu{};
    std::optional<std::int64_t> selectedMenuItem{};
    std::optional<std::string> selectDeviceName{};

    bool operator==(const UtilitiesFile&) const = default;
};

/// The payload of a message. Each of its values may be missing.
struct Payload {
    std::optional<bool> driverEnable{};
    std::optional<bool> isConnected{};
    std::optional<std::int64_t> selectedMenuItem{};
};

/// A second account of how the pane goes from one display state to the next, which shares no code with it.
class ExpectedPane {
public:
    /// A pane whose controls stand as its forms made them, and whose clock is `now`.
    ExpectedPane(Shell asLoaded, std::function<double()> now) : shell(std::move(asLoaded)), now_(std::move(now)) {}

    Shell shell;
    UtilitiesFile file;
    /// No write succeeds while this is set.
    bool isDiskFull = false;
    /// The shell's log lines, in order.
    std::vector<std::string> log;
    /// When the pane asked to be the active application.
    std::vector<double> activations;
    std::size_t launches = 0;
    /// How often the status-bar utility was told that its menu is off.
    std::size_t statusMessages = 0;

    // The host.
    void mainViewDidLoad();
    void willSelect();
    void willUnselect();

    // The peers.
    void driverMessage(const Payload& payload);
    void connectionMessage(const Payload& payload);
    void tabMessage(const Payload& payload);
    void otherMessage();

    // The user.
    void pickDevice(int index);
    void pickTabItem(int index);
    void pickTab(int index);
    /// Before the message to the utility, or the launch.
    void clickStatusBox();
    /// After it.
    void storeStatusBox();

    /// How many sheets were asked to end by now.
    [[nodiscard]] std::size_t endedSheets() const;

private:
    enum class State { Disconnected, DriverDisabled, OneDevice, SeveralDevices };

    [[nodiscard]] UtilitiesFile read();
    template <typename Change>
    bool merge(Change change);
    void readDevices(const UtilitiesFile& utilities);
    [[nodiscard]] std::size_t count() const;
    [[nodiscard]] State state() const;
    void showSettings(bool isShown);
    void showAlert(const std::string& text);
    void showChooser();
    void takeFirstDevice();
    void chooseSingleDevice();
    void activate();
    void selectView(std::uint8_t index);
    void selectItem(std::int32_t index);

    std::function<double()> now_;
    bool isStatusBarShown_ = false;
};

} // namespace fuzzing
