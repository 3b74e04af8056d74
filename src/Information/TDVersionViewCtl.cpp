#include "Information/TDVersionViewCtl.h"

#include "TDCurrentDevice.h"
#include "TDNames.h"
#include "TDUtilities.h"
#include "platform/Files.h"
#include "platform/PropertyList.h"

#include <optional>
#include <stdexcept>
#include <string>

namespace {

std::string driverVersionAtPath(const std::string& path) {
    const auto settings = platform::NSMutableDictionary::dictionaryWithContentsOfFile(path);
    const std::optional<std::string> version = settings.objectForKey(keys::driverVersion).string();
    if (!version) throw std::invalid_argument("no driver version in " + path);
    return *version;
}

} // namespace

TDVersionViewCtl::TDVersionViewCtl() : TDTabController("TDVersionViewCtl") {}

std::vector<platform::NSOutlet> TDVersionViewCtl::outlets() { return {{"versionText_", &versionText_}}; }

void TDVersionViewCtl::updateUIState() {
    const std::string path = getSettingsFilePath(gModelType);
    std::optional<std::string> text;
    if (platform::NSFileManager::defaultManager().fileExistsAtPath(path)) text = driverVersionAtPath(path);
    versionText_.setTitleWithMnemonic(text);
}
