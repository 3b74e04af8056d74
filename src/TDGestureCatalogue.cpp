#include "TDGestureCatalogue.h"

#include "TDNames.h"

using platform::NSMutableArray;
using platform::NSMutableDictionary;

namespace {

NSMutableArray gesturesSinceLion(bool hasNotificationCenter) {
    auto catalogue = NSMutableArray::arrayWithObjects({
        newGestureDictionary("SecondaryClick", {"ClickOrTapWithTwoFingers"}, false),
        newGestureDictionary("LookUp", {"TapWithThreeFingers"}, false),
        newGestureDictionary("ScrollDirection", {"ContentTracksFingerMovement"}, false),
        newGestureDictionary("ZoomInOrOut", {"PinchWithTwoFingers"}, false),
        newGestureDictionary("SmartZoom", {"DoubleTapWithTwoFingers"}, false),
        newGestureDictionary("Rotate", {"RotateWithTwoFingers"}, false),
        newGestureDictionary(
            gestures::swipeBetweenPages,
            {"ScrollLeftOrRightWithTwoFingers", gestures::swipeWithThreeFingers, gestures::swipeWithTwoOrThreeFingers},
            true),
        newGestureDictionary(gestures::fullScreenApps,
                             {gestures::swipeLeftOrRightWithThreeFingers, "SwipeLeftOrRightWithFourFingers"}, true),
    });
    if (hasNotificationCenter) {
        catalogue.addObject(
            newGestureDictionary("NotificationCenter", {"SwipeLeftFromTheRightEdgeWithTwoFingers"}, true));
    }
    catalogue.addObject(
        newGestureDictionary(gestures::missionControl, {"SwipeUpWithThreeFingers", "SwipeUpWithFourFingers"}, true));
    catalogue.addObject(
        newGestureDictionary(gestures::appExpose, {"SwipeDownWithThreeFingers", "SwipeDownWithFourFingers"}, true));
    catalogue.addObject(newGestureDictionary(gestures::launchpad, {"PinchWithThumbAndThreeFingers"}, true));
    catalogue.addObject(newGestureDictionary(gestures::showDesktop, {"SpreadWithThumbAndThreeFingers"}, true));
    return catalogue;
}

} // namespace

GestureRecord newGestureDictionary(std::string_view name, std::initializer_list<platform::Value> descriptor,
                                   bool moreGesture) {
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{name, keys::name},
         {NSMutableArray::arrayWithObjects(descriptor), keys::descriptor},
         {0, keys::selectedIndex},
         {true, keys::isEnable},
         {moreGesture, keys::moreGesture}});
}

NSMutableArray initGesturesInformationForSnowLeopard() {
    return NSMutableArray::arrayWithObjects({
        newGestureDictionary("SecondaryClick", {"ClickOrTapWithTwoFingers"}, false),
        newGestureDictionary("Scroll", {"ScrollWithTwoFingers"}, false),
        newGestureDictionary("ScrollDirection", {"ContentTracksFingerMovement"}, false),
        newGestureDictionary("ZoomInOrOut", {"PinchWithTwoFingers"}, false),
        newGestureDictionary("Rotate", {"RotateWithTwoFingers"}, false),
        newGestureDictionary(gestures::swipeBetweenPages, {gestures::swipeWithThreeFingers}, true),
        newGestureDictionary(gestures::fullScreenApps, {"SwipeLeftOrRightWithFourFingers"}, true),
        newGestureDictionary(gestures::appExpose, {"SwipeDownWithFourFingers"}, true),
        newGestureDictionary(gestures::showDesktop, {"SwipeUpWithFourFingers"}, true),
    });
}

NSMutableArray initGesturesInformationForLion() { return gesturesSinceLion(false); }

NSMutableArray initGesturesInformationForMountainLion() { return gesturesSinceLion(true); }

bool isSnowLeopard(std::int32_t systemVersion) { return systemVersion >= 0x1060 && systemVersion <= 0x106F; }

NSMutableArray gestureCatalogueForVersion(std::int32_t systemVersion) {
    if (isSnowLeopard(systemVersion)) return initGesturesInformationForSnowLeopard();
    if (systemVersion >= 0x1070 && systemVersion <= 0x107F) return initGesturesInformationForLion();
    if (systemVersion > 0x107F) return initGesturesInformationForMountainLion();
    return {};
}
