#pragma once

#include "platform/PropertyList.h"

#include <optional>
#include <string>
#include <vector>

/// The current device's gesture list, despite the name: the very array that the touch settings tab shows, so that a
/// row's change of its record is a change here. Nil when no list has been built.
extern platform::NSMutableArray gSettings;

/// The current device's model name, sent as "DeviceName". The empty string when none is chosen; no string at all when
/// the chosen one turned out to be missing, which is something else: "DeviceName" is then left out.
extern std::optional<std::string> gModelType;

/// The names of the connected devices, or none.
extern std::optional<std::vector<std::string>> gDeviceModel;

/// Whether the driver is enabled.
extern bool gDriverEnable;

/// Whether the optional log lines are written.
extern bool verboseLog;

/// Replaces `gModelType`.
void setModelType(std::optional<std::string> name);

/// Replaces `gDeviceModel` whole.
void setDevicesModel(std::optional<std::vector<std::string>> model);
