#include "qt/ToolkitPlatform.h"

namespace kelvo {

std::string EchoBundle::localizedStringForKey(std::string_view key, std::string_view value) {
    const std::string name(key);
    keysAskedFor.insert(name);
    if (missingKeys.contains(name)) return std::string(value);
    const auto given = texts.find(name);
    return given == texts.end() ? "text of " + name : given->second;
}

std::vector<std::string> EchoBundle::pathsForResourcesOfTypeInDirectory(std::string_view, std::string_view) {
    return resourcePaths;
}

platform::NSBundle* EchoBundle::bundleWithIdentifier(std::string_view identifier) {
    return isLoaded && identifier == kTestBundleIdentifier ? this : nullptr;
}

std::vector<platform::NSOutlet> PaneStandIn::outlets() {
    return {{"selectDeviceBtn_", &selectDeviceBtn_},
            {"selectDeviceView_", &selectDeviceView_},
            {"tabPopUp_", &tabPopUp_},
            {"tabView_", &tabView_},
            {"statusBarState_", &statusBarState_},
            {"alertTextField_", &alertTextField_},
            {"calibrationVC_", &calibrationVC_},
            {"settingVC_", &settingVC_},
            {"hardwareInformationVC_", &hardwareInformationVC_},
            {"VersionVC_", &VersionVC_}};
}

std::vector<platform::NSNibAction> PaneStandIn::actions() {
    const auto recorded = [this](std::string_view selector) {
        return platform::NSNibAction{selector,
                                     [this, selector](platform::NSControl&) { calls.emplace_back(selector); }};
    };
    return {recorded("selectItem:"), recorded("selectDeviceForSetting:"), recorded("showOrHideStatusBarApp:")};
}

void PaneStandIn::tabViewWillSelectTabViewItem(platform::NSTabView&, const platform::NSTabViewItem& item) {
    calls.push_back("willSelect " + item.label());
}

} // namespace kelvo
