#pragma once

#include "Properties/TDCustemorPopUpButton.h"
#include "TDGestureCatalogue.h"
#include "platform/Nib.h"
#include "platform/Notifications.h"
#include "platform/PropertyList.h"

#include <memory>
#include <string>
#include <vector>

/// Posted with a record when the user has changed one of the gestures that can collide with one another.
inline constexpr char kUpdateGesture[] = "updateGesture";

/// One row of the gesture list: shows and edits one gesture record, which is an element of `gSettings`, and makes way
/// when another gesture takes the same fingers. A row that sends may be taken off the list in the middle of it, so rows
/// are shared and keep themselves until the step is done.
class TDGesturesCellView : public platform::NSViewController, public std::enable_shared_from_this<TDGesturesCellView> {
public:
    TDGesturesCellView() : NSViewController("TDGesturesCellView") {}
    ~TDGesturesCellView() override;

    [[nodiscard]] std::vector<platform::NSOutlet> outlets() override;
    [[nodiscard]] std::vector<platform::NSNibAction> actions() override;

    /// Binds the row to a record and sets up its controls. Called once, on a row that is shared already.
    void initCurrentStateWithActionInformation(const GestureRecord& record);
    /// The user changed the check box or the menu.
    void changeAction(platform::NSControl& sender);
    /// Another row's record has changed: resolves what collides with it.
    void checkGesture(const platform::NSNotification& notification);

    [[nodiscard]] const std::shared_ptr<platform::NSObject>& targetView() const { return targetView_; }
    void setTargetView(std::shared_ptr<platform::NSObject> view) { targetView_ = std::move(view); }
    [[nodiscard]] const std::vector<std::string>& itemsString() const { return itemsString_; }
    void setItemsString(std::vector<std::string> titles) { itemsString_ = std::move(titles); }
    [[nodiscard]] const GestureRecord& actionInfo() const { return actionInfo_; }
    void setActionInfo(GestureRecord record) { actionInfo_ = std::move(record); }

private:
    enum class Adjustment { None, Pointed, SwitchedOff };

    [[nodiscard]] Adjustment makeWayForPages(const GestureRecord& sender);
    [[nodiscard]] Adjustment makeWayForFullScreen(const GestureRecord& sender);
    [[nodiscard]] Adjustment followFingers(const GestureRecord& sender);
    [[nodiscard]] Adjustment point(std::int64_t menuIndex);
    void storeSelection();
    void showSelectedTitle();
    void resizePopUp();

    // Supplied by the owner and kept for it; the row has no use for it.
    std::shared_ptr<platform::NSObject> targetView_;
    platform::NSButton clickBtn{platform::NSButton::Type::Switch};
    platform::NSTextField m_title;
    TDCustemorPopUpButton m_gestures;
    platform::NSPopUpButtonCell& PopUpBtnCell = m_gestures.cell();
    std::vector<std::string> itemsString_;
    GestureRecord actionInfo_;
};
