#pragma once

#include "TDTabController.h"
#include "platform/Application.h"
#include "platform/Controls.h"

#include <cstdint>
#include <string_view>
#include <vector>

// The product's words for the state of a display's hardware, which nothing in the pane reads. The count of points
// really is "Point", and a single one "point".

[[maybe_unused]] inline constexpr std::string_view kLEDState = "LEDState";
[[maybe_unused]] inline constexpr std::string_view kSensorState = "SensorState";
[[maybe_unused]] inline constexpr std::string_view kSensState = "SensState";
[[maybe_unused]] inline constexpr std::string_view kArea = "Area";
[[maybe_unused]] inline constexpr std::string_view kNumber = "number";
[[maybe_unused]] inline constexpr std::string_view kPoint = "point";
[[maybe_unused]] inline constexpr std::string_view kPointCount = "Point";
[[maybe_unused]] inline constexpr std::string_view kName = "Name";

/// The hardware information tab, whose one setting is the rotation of the display. A new rotation is confirmed in a
/// sheet, then sent to the driver; the settings file is only read.
class TDHardwareInformationViewCtl : public TDPagedTabController {
public:
    TDHardwareInformationViewCtl();

    [[nodiscard]] std::vector<platform::NSOutlet> outlets() override;
    [[nodiscard]] std::vector<platform::NSNibAction> actions() override;

    void resetTabView() override;
    /// Without a settings file the rotation shown stays.
    void updateUIState() override;
    /// Shows the stored rotation, the first row where none is stored.
    void reloadRotateMode();
    /// The user picked a row of `rotateMode_`. The rotation that is stored already is not asked about.
    void changeRotateState(platform::NSControl& sender);

    /// The sheet has ended: what `contextInfo` shows by then is sent, or soon shows the stored rotation again.
    void sheetDidEndReturnCodeContextInfo(const platform::NSAlertSheet& sheet, std::int32_t returnCode,
                                          const platform::NSMatrix& contextInfo);
    /// For a sheet that tells of its dismissal too, which that of `changeRotateState` does not.
    [[maybe_unused]] void sheetDidDismissReturnCodeContextInfo(const platform::NSAlertSheet& sheet,
                                                               std::int32_t returnCode,
                                                               const platform::NSMatrix& contextInfo);

private:
    platform::NSTabView hardwareInfoTabView_;
    platform::NSMatrix rotateMode_;
};
