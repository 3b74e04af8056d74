#pragma once

#include "hosts/PaneLife.h"
#include "qt/QtNibs.h"
#include "qt/QtRunLoop.h"

#include <QPointer>
#include <QWidget>

#include <memory>

namespace kelvo {

/// Shows a pane in a window that is not ours and leads it through its life: selected while the view is shown, minimised
/// or not. Of all views in the process only one has its pane selected; one that is shown takes its turn.
///
/// Whoever owns the window may show, hide and destroy the view at any moment, even while the pane waits for an answer.
class PaneView : public QWidget {
public:
    /// Loads the pane's form and tells the pane so. A form that does not fit is a std::runtime_error. `nibs`, which the
    /// form comes from, and `runLoop` must live as long as the pane, which may outlive the view.
    PaneView(std::shared_ptr<platform::NSPreferencePane> pane, const QtNibs& nibs, QtRunLoop& runLoop,
             QWidget* parent = nullptr);
    /// Leaves the pane if it is still selected.
    ~PaneView() override;

    /// What the pane shows itself in; null when it has no form.
    [[nodiscard]] QWidget* form() const { return form_; }

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void settleSoon();
    void settle();
    void select();
    void unselect();

    std::shared_ptr<platform::NSPreferencePane> pane_;
    PaneLife life_;
    QtRunLoop& runLoop_;
    QPointer<QWidget> form_;
    bool isAboutToSettle_ = false;
};

} // namespace kelvo
