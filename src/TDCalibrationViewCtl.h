#pragma once

#include "TDTabController.h"
#include "platform/Controls.h"
#include "platform/PropertyList.h"

#include <vector>

/// The calibration tab: automatic calibration, or the width and height of the on-screen display in pixels. The choice
/// is sent to the driver when it is applied; the settings file is only read.
class TDCalibrationViewCtl : public TDTabController {
public:
    TDCalibrationViewCtl();

    [[nodiscard]] std::vector<platform::NSOutlet> outlets() override;
    [[nodiscard]] std::vector<platform::NSNibAction> actions() override;

    /// Without a settings file every control keeps its state.
    void updateUIState() override;
    /// The user picked a mode in `CalibrationMode`. Nothing is sent.
    void changeCalibrationMode(platform::NSControl& sender);
    /// The user pressed `applyBtn`. An empty field takes its stored value first.
    void setOSDResolution(platform::NSControl& sender);
    /// Sends the calibration that the controls show, after bringing what lies outside 4096 x 2160 pixels back to it in
    /// the fields.
    void resetCalibration();

private:
    void setFieldsEnabled(bool enabled);
    void showResolution(const platform::NSMutableDictionary& resolution);

    platform::NSMatrix CalibrationMode;
    platform::NSTextField ResolutionWidth;
    platform::NSTextField ResolutionHeight;
    platform::NSButton applyBtn;
};
