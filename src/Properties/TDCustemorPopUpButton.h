#pragma once

#include "platform/Controls.h"

/// The pull-down menu of a gesture row, which can be made deaf to the user.
class TDCustemorPopUpButton : public platform::NSPopUpButton {
public:
    TDCustemorPopUpButton() : NSPopUpButton(true) {}
    ~TDCustemorPopUpButton() override;

    [[nodiscard]] bool isRespond() const { return isRespond_; }
    void setRespond(bool respond) { set(isRespond_, respond); }

    [[nodiscard]] bool opensMenu() const override { return isRespond_ && NSPopUpButton::opensMenu(); }

private:
    bool isRespond_ = true;
};
