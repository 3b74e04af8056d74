#pragma once

#include "platform/Application.h"

#include <QPointer>
#include <QWidget>

#include <cstdint>
#include <functional>

namespace kelvo {

/// What a sheet that the application ended returns; neither QDialog::Accepted nor QDialog::Rejected, nor any button of
/// a message box.
inline constexpr int kSheetWasEnded = -1000;

/// The host application. It has no window until one is given, and does nothing without one.
class QtApplication final : public platform::NSApplication {
public:
    /// What is shown in the window that is activated and whose sheets are ended: a part of it, or itself. It may go
    /// before the application does, and its sheets go with it.
    void setWindow(QWidget& shown) { shown_ = &shown; }

    void activateIgnoringOtherApps() override;
    /// Without a window the alert counts as ended by the program.
    void beginInformationalAlertSheet(const platform::NSAlertSheet& sheet, const platform::NSObject& delegate,
                                      std::function<void(std::int32_t returnCode)> didEnd) override;
    void endSheetInKeyWindow() override;

private:
    QPointer<QWidget> shown_;
};

} // namespace kelvo
