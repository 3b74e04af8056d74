#pragma once

#include "peers/actions/ActionsInForce.h"
#include "peers/driver/BusCaller.h"
#include "peers/driver/DisplaySource.h"
#include "peers/driver/DriverCore.h"
#include "peers/driver/KnownDevices.h"
#include "peers/driver/PanelDisplay.h"
#include "platform/NSObject.h"
#include "platform/PropertyList.h"
#include "platform/RunLoop.h"
#include "touch/Surroundings.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

/// The driver of the real displays: has the core serve those that a source finds.
class TouchDriver final : public Displays {
public:
    /// `displaysChanged` is told how many there are, now and after each change. The loop outlives the driver.
    TouchDriver(platform::CFRunLoop& loop, std::function<void(std::size_t count)> displaysChanged);
    ~TouchDriver() override;

    /// False when another driver runs already or there is no session bus.
    [[nodiscard]] bool start();
    /// Looks for displays there, and where that source is missing, in the next one.
    void use(std::unique_ptr<DisplaySource> source, std::unique_ptr<DisplaySource> next = nullptr);
    /// Opens the watch of the desktop that is given to, which calls `changed` after each change; null where it cannot
    /// be seen. That is put off until there is a display.
    using OpenDesktop = std::function<std::unique_ptr<touch::DesktopWatch>(std::function<void()> changed)>;
    void seeDesktopBy(OpenDesktop open) { openDesktop_ = std::move(open); }
    /// As the end of the driver: everything is lifted and every display is everybody's.
    void stop();
    [[nodiscard]] DriverCore& core() { return core_; }

    void setSettings(const std::string& name, const touch::Settings& settings) override;
    void setActions(const ActionsInForce& actions) override;
    void forget(const std::string& name) override;
    void setDriverEnabled(bool isEnabled) override;
    void setWatched(const std::string& name, bool isWatched) override;
    [[nodiscard]] bool isActive(const std::string& name) const override;
    void beginRecording(const std::string& name, const std::string& path) override;
    void endRecording(const std::string& name) override;

private:
    struct Display {
        std::uint32_t id = 0;
        std::string name;
        touch::Settings settings;
        KnownDevice known;
        /// As large as the panel itself or the machine's list says; none where neither does.
        std::optional<touch::Size> glass;
        /// The name of its virtual touchpad.
        std::string touchpad;
        bool hasToldOfSlowDoubleClick = false;
        bool isWatched = false;
        /// None while another session has it.
        std::unique_ptr<PanelDisplay> panel;
        /// Go after the panel has lifted what is down.
        std::unique_ptr<Hardware::Devices> devices;
    };

    [[nodiscard]] std::vector<ControlCommand> ownCommands();
    [[nodiscard]] platform::NSMutableDictionary states() const;

    void later(std::function<void()> event);
    void serveEvents();
    void come(FoundDisplay found);
    void suspend(std::uint32_t id);
    void go(std::uint32_t id);
    void changeSource();
    void lookAtDesktop();
    void desktopChanged();
    void followDesktop(Display& display);
    [[nodiscard]] const touch::Surroundings& surroundings() const;
    [[nodiscard]] const touch::Monitor* monitorOf(const Display& display) const;
    [[nodiscard]] std::optional<touch::Size> sizeFromOutside(const Display& display) const;
    [[nodiscard]] touch::Desktop desktopOf(const Display& display) const;
    [[nodiscard]] std::optional<std::string> commandForSlowDoubleClick(const Display& display) const;
    void connect(FoundDisplay found);
    [[nodiscard]] static Display displayOf(const FoundDisplay& found);
    [[nodiscard]] bool give(Display& display, FoundDisplay found);
    [[nodiscard]] Display* displayWith(std::uint32_t id);
    [[nodiscard]] PanelDisplay& recordable(const std::string& name);
    [[nodiscard]] Display* displayNamed(const std::string& name);
    [[nodiscard]] std::string newNameFor(const FoundDisplay& found);

    platform::CFRunLoop& loop_;
    std::function<void(std::size_t count)> displaysChanged_;
    bool isDriverEnabled_ = true;
    ActionsInForce actions_;
    BusCaller caller_;
    OpenDesktop openDesktop_;
    /// None where the desktop cannot be seen, or no display has come yet.
    std::unique_ptr<touch::DesktopWatch> desktop_;
    std::list<Display> displays_;
    /// Why a display that is there is not used, by what the source calls it.
    std::map<std::uint32_t, std::pair<std::string, std::string>> refused_;
    /// What a source has told of, in its order: connecting a display tells the pane, which runs the loop, and no source
    /// bears that from within what it tells.
    std::deque<std::function<void()>> events_;
    bool isServing_ = false;
    std::unique_ptr<DisplaySource> source_;
    std::unique_ptr<DisplaySource> nextSource_;
    DriverCore core_;
    /// Ends what waits in the loop.
    platform::NSObject life_;
};

} // namespace kelvo
