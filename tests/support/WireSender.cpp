#include "TDCurrentDevice.h"
#include "TDMessages.h"
#include "TDNames.h"
#include "TDUtilities.h"
#include "linux/PollRunLoop.h"
#include "peers/PeerPlatform.h"

namespace {

platform::NSMutableArray gestures() {
    using platform::NSMutableArray;
    using platform::NSMutableDictionary;
    return NSMutableArray::arrayWithObjects({NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{"AppExposé", "Name"},
         {NSMutableArray::arrayWithObjects({"SwipeDownWithThreeFingers", "SwipeDownWithFourFingers"}), "Descriptor"},
         {1, "SelectedIndex"},
         {false, "IsEnable"},
         {true, "MoreGesture"}})});
}

void sendOneOfEach() {
    resetDeviceParameter(payloads::doubleClickRate(1.0), kMessageIDForDoubleClickRate);
    resetDeviceParameter(payloads::doubleClickRange(32), kMessageIDForDoubleClickRange);
    resetDeviceParameter(payloads::doubleClickRange(40.0), kMessageIDForDoubleClickRange);
    gSettings = gestures();
    resetDeviceParameter(payloads::gestureArray(), kMessageIDForGestureArray);
    resetDeviceParameter(payloads::rotateMode(2), kMessageIDForRotateMode);
    resetDeviceParameter(payloads::rightClick(true, 2.0), kMessageIDForRightClick);
    resetDeviceParameter(payloads::automaticCalibration(), kMessageIDForCalibration);
    resetDeviceParameter(payloads::manualCalibration(4096.0F, 0.1F), kMessageIDForCalibration);
    sendDisplayStateToStatusBarState(payloads::statusMenu(false), kMessageIDForStatusMenu);
    setModelType("");
    resetDeviceParameter(payloads::rotateMode(0), kMessageIDForRotateMode);
    setModelType(std::nullopt);
    resetDeviceParameter(payloads::rotateMode(0), kMessageIDForRotateMode);
}

} // namespace

/// Sends one message of each shape over the session bus, for the display "Näme".
int main() {
    kelvo::PollRunLoop runLoop;
    const kelvo::PeerPlatform services("wire-sender", runLoop);
    setModelType("Näme");
    sendOneOfEach();
    return 0;
}
