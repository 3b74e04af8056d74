#include "TDMessages.h"

#include "TDCurrentDevice.h"
#include "TDNames.h"

using platform::NSMutableDictionary;

NSMutableDictionary payloads::doubleClickRate(double seconds) {
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{seconds, keys::doubleClickRate}, {gModelType, keys::deviceName}});
}

NSMutableDictionary payloads::doubleClickRange(const platform::Value& range) {
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{range, keys::doubleClickRange}, {gModelType, keys::deviceName}});
}

NSMutableDictionary payloads::gestureArray() {
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{gSettings, keys::gestureArray}, {gModelType, keys::deviceName}});
}

NSMutableDictionary payloads::rotateMode(std::int32_t row) {
    return NSMutableDictionary::dictionaryWithObjectsAndKeys({{row, keys::rotateMode}, {gModelType, keys::deviceName}});
}

NSMutableDictionary payloads::rightClick(bool isEnabled, double seconds) {
    const auto rightClick = NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{isEnabled, keys::rightClickIsEnable}, {seconds, keys::rightClickTimeIntelval}});
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{rightClick, keys::rightClick}, {gModelType, keys::deviceName}});
}

NSMutableDictionary payloads::automaticCalibration() {
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{true, keys::autoCalibration}, {gModelType, keys::deviceName}});
}

NSMutableDictionary payloads::manualCalibration(float width, float height) {
    const auto resolution =
        NSMutableDictionary::dictionaryWithObjectsAndKeys({{width, keys::OSDWidth}, {height, keys::OSDHeight}});
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{false, keys::autoCalibration}, {resolution, keys::manualCalibration}, {gModelType, keys::deviceName}});
}

NSMutableDictionary payloads::statusMenu(bool isShown) {
    return NSMutableDictionary::dictionaryWithObjectsAndKeys({{isShown, keys::isShowStatuMenu}});
}
