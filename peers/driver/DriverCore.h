#pragma once

#include "linux/BusProcesses.h"
#include "peers/actions/DesktopSession.h"
#include "peers/driver/ControlChannel.h"
#include "peers/driver/Displays.h"
#include "peers/driver/TouchSettings.h"
#include "platform/MessagePorts.h"
#include "platform/PropertyList.h"
#include "platform/RunLoop.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

/// One command of the control channel.
struct ControlCommand {
    using Words = std::vector<std::string>;

    std::string_view name;
    /// How many words may follow the name.
    std::size_t least = 0;
    std::size_t most = 0;
    /// Gets those words and gives what to print. A std::runtime_error says what is wrong and how to mend it.
    std::function<std::string(const Words& words)> perform;
};

/// What every driver does, whatever its displays are: owns the driver's message port and control channel, keeps the
/// device list and the driver's flag in the utilities file, has the displays do what is sent and stores it in their
/// settings files, and tells the pane of each change.
class DriverCore {
public:
    /// `displays` outlives the core. `printLine`, if any, gets each message received as one line of JSON. `ownCommands`
    /// are those that this driver has beyond the ones of every driver.
    DriverCore(Displays& displays, std::function<void(const std::string&)> printLine,
               std::vector<ControlCommand> ownCommands);

    /// Takes port and channel, and begins with no display connected, whatever an earlier driver left in the utilities
    /// file. False when another driver has them or there is no bus.
    [[nodiscard]] bool start();
    /// Disconnects every display, as the end of a driver does.
    void stop();

    // Each of these makes its change and tells the pane. What cannot be done is a std::runtime_error that names the
    // fix.

    /// A display came; its settings file is made first, and has its own resolution where that is known.
    void connect(const std::string& name, std::optional<touch::Size> nativePixels = std::nullopt);
    void disconnect(const std::string& name);
    void setDriverEnabled(bool enabled);
    /// The own resolution of a connected display has become known.
    void storeNativePixels(const std::string& name, touch::Size pixels);
    /// Asks the pane to show a tab.
    void showTab(std::int64_t index);

    [[nodiscard]] bool isConnected(const std::string& name) const;
    /// The state as one line of JSON; "inactive" has those displays that are another session's at the moment.
    [[nodiscard]] std::string status() const;
    /// The raw contacts of a display, for whoever watches it.
    void sendFrame(const std::string& name, const ContactFrame& frame);
    /// Before the first finger of a hand: other programs may have changed what settings rest on, such as the system's
    /// switches. Costs little where nobody has.
    void followOtherFiles();

private:
    struct Display {
        std::string name;
        platform::NSMutableDictionary settings;
    };

    [[nodiscard]] std::vector<ControlCommand> commonCommands();
    [[nodiscard]] CommandResult perform(const std::vector<std::string>& words);
    void beginWatch(const std::string& name);

    void receive(std::int32_t messageId, std::span<const std::uint8_t> data, const std::string& sender);
    [[nodiscard]] bool takeSettings(const platform::NSMutableDictionary& payload);
    void apply(const Display& display) const;
    void storeNativePixels(Display& display, touch::Size pixels);
    void followActions();
    void change(Display& display, const platform::NSMutableDictionary& items);
    void tellPaneUnlessItKnows(const std::string& sender);
    void tellPaneOfSettings();

    [[nodiscard]] Display* displayNamed(const std::string& name);
    [[nodiscard]] Display& connectedDisplay(const std::string& name);
    void saveState() const;
    void tellOfDisconnection() const;
    void tellPane(std::int32_t messageId, const platform::NSMutableDictionary& payload) const;
    [[nodiscard]] platform::NSMutableArray deviceList() const;

    Displays& displays_;
    std::function<void(const std::string&)> printLine_;
    std::vector<ControlCommand> commands_;
    std::vector<Display> connected_;
    bool isDriverEnabled_ = true;
    bool isTellingOfSettings_ = false;
    bool mustTellOfSettingsAgain_ = false;
    std::unique_ptr<ControlChannel> channel_;
    std::unique_ptr<platform::CFMessagePort> port_;
    std::unique_ptr<platform::CFRunLoopSource> source_;
    BusProcesses processes_;
    SettingsContext context_;
    std::optional<std::vector<std::optional<platform::NSDate>>> contextDates_;
    DesktopSession session_ = currentDesktopSession();
    std::optional<std::vector<std::optional<platform::NSDate>>> actionDates_;
};

} // namespace kelvo
