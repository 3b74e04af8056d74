#include "peers/touchctl/TouchHardware.h"

#include "TDUtilities.h"
#include "linux/OpenFiles.h"
#include "linux/SystemBus.h"
#include "linux/TouchScreenMonitor.h"
#include "peers/DevicesBus.h"
#include "peers/DriverCommand.h"
#include "peers/devices/LogindSeats.h"
#include "peers/touchctl/BusQuestion.h"
#include "platform/PropertyList.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <span>

namespace kelvo::touchctl {

namespace {

using platform::NSMutableDictionary;

constexpr char kUnit[] = "kelvo-touch-driver.service";
/// The names of our own programs, truncated by the kernel.
constexpr char kOwnPrograms[] = "kelvo-touch-";

/// "NAME (PROCESS)" of each process that has the file open.
std::vector<std::string> usersOf(const std::string& node) {
    std::vector<std::string> users;
    for (const RunningProgram& program : programsWithOpen(node)) {
        if (program.name.starts_with(kOwnPrograms)) continue;
        users.push_back(program.name + " (" + std::to_string(program.process) + ")");
    }
    return users;
}

std::optional<std::vector<TouchHardware::Screen>> screensNow() {
    std::vector<TouchHardware::Screen> screens;
    const auto monitor =
        TouchScreenMonitor::open(platform::CFRunLoop::getCurrent(),
                                 {[&](const TouchScreen& found) {
                                      screens.push_back({.node = found.node,
                                                         .seat = found.seat,
                                                         .isAtActiveSession = activeUserAt(found.seat) == ::getuid(),
                                                         .isPermitted = ::access(found.node.c_str(), R_OK | W_OK) == 0,
                                                         .users = usersOf(found.node)});
                                  },
                                  [](const std::string& /*node*/) {}});
    if (!monitor) return std::nullopt;
    monitor->begin();
    return screens;
}

/// The file also exists if the module is loaded only when it is first opened.
bool hasUinputNow() {
    std::error_code unknown;
    return std::filesystem::exists("/dev/uinput", unknown) ||
           std::filesystem::exists("/sys/devices/virtual/misc/uinput", unknown);
}

bool lists(sd_bus_message* names, const std::string& wanted) {
    const char* name = nullptr;
    if (sd_bus_message_enter_container(names, 'a', "s") <= 0) return false;
    while (sd_bus_message_read(names, "s", &name) > 0) {
        if (name == wanted) return true;
    }
    return false;
}

TouchHardware::Service serviceNow() {
    const BusCall listed{
        "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ListActivatableNames", {}};
    const BusMessage names = answerOf(systemBusAddress(), listed);
    if (!names) return TouchHardware::Service::NoBus;
    return lists(names.get(), kDevicesName) ? TouchHardware::Service::Installed : TouchHardware::Service::Missing;
}

std::map<std::string, std::string> textsIn(const NSMutableDictionary& dictionary) {
    std::map<std::string, std::string> texts;
    for (const auto& [key, value] : dictionary.entries()) texts.emplace(key, value.string().value_or(""));
    return texts;
}

/// None if it is a different driver without this command.
std::optional<TouchHardware::Driver> driverNow() {
    const DriverAnswer answer = performAndWait(platform::CFRunLoop::getCurrent(), {"states", "plist"});
    if (answer.outcome != DriverAnswer::Outcome::Done) return std::nullopt;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(answer.text.data());
    const auto said = Helpers::NSMutableDictionary::dictionaryWithContentsOfData(std::span(bytes, answer.text.size()));
    if (!said) return std::nullopt;
    return TouchHardware::Driver{textsIn(said.objectForKey("displays").dictionary()),
                                 textsIn(said.objectForKey("refused").dictionary()),
                                 textsIn(said.objectForKey("slowDoubleClick").dictionary())};
}

/// A property of the driver's unit; none if no service manager has this unit.
BusMessage propertyOfUnit(const char* interface, const char* property) {
    char* encoded = nullptr;
    if (sd_bus_path_encode("/org/freedesktop/systemd1/unit", kUnit, &encoded) < 0) return nullptr;
    const std::string path(encoded);
    std::free(encoded);
    return answerOf(
        "", {"org.freedesktop.systemd1", path, "org.freedesktop.DBus.Properties", "Get", {interface, property}});
}

std::optional<TouchHardware::Unit> unitNow() {
    constexpr char kServiceInterface[] = "org.freedesktop.systemd1.Service";
    const BusMessage result = propertyOfUnit(kServiceInterface, "Result");
    const char* text = nullptr;
    if (!result || sd_bus_message_read(result.get(), "v", "s", &text) <= 0) return std::nullopt;
    TouchHardware::Unit unit{text, 0};
    const BusMessage restarts = propertyOfUnit(kServiceInterface, "NRestarts");
    if (!restarts || sd_bus_message_read(restarts.get(), "v", "u", &unit.restarts) <= 0) unit.restarts = 0;
    return unit;
}

} // namespace

TouchHardware touchHardware(PortAnswer driver) {
    TouchHardware hardware{
        .screens = screensNow(), .hasUinput = hasUinputNow(), .service = serviceNow(), .driver = {}, .unit = unitNow()};
    if (driver == PortAnswer::Answering) {
        hardware.driver = driverNow();
        hardware.hasOtherDriver = !hardware.driver;
    }
    return hardware;
}

} // namespace kelvo::touchctl
