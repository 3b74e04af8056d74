#include "TDCurrentDevice.h"

#include <utility>

platform::NSMutableArray gSettings;
std::optional<std::string> gModelType = "";
std::optional<std::vector<std::string>> gDeviceModel;
bool gDriverEnable = false;
bool verboseLog = false;

void setModelType(std::optional<std::string> name) { gModelType = std::move(name); }

void setDevicesModel(std::optional<std::vector<std::string>> model) { gDeviceModel = std::move(model); }
