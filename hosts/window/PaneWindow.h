#pragma once

#include "hosts/PaneLife.h"
#include "qt/QtNibs.h"

#include <QMainWindow>
#include <QPointer>

#include <functional>
#include <utility>

namespace kelvo {

/// A window that shows one pane and leads it through its life: selected while the window is open, minimised or not.
/// It opens as large as the pane's form, where the screen is, and scrolls when it is made smaller than the pane can be.
class PaneWindow : public QMainWindow {
public:
    /// Loads the pane's form and tells the pane so. A form that does not fit is a std::runtime_error. The pane and
    /// `nibs`, which its form comes from, must outlive the window.
    PaneWindow(platform::NSPreferencePane& pane, const QtNibs& nibs);

    /// The pane's form, while the window has it.
    [[nodiscard]] QWidget* form() const { return form_; }

    /// Makes one call in the turn of the main loop after the window was first painted.
    void callWhenPainted(std::function<void()> call) { whenPainted_ = std::move(call); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    PaneLife life_;
    QPointer<QWidget> form_;
    std::function<void()> whenPainted_;
};

} // namespace kelvo
