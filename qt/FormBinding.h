#pragma once

#include "platform/Controls.h"

#include <QObject>
#include <QPointer>
#include <QSignalBlocker>

#include <functional>
#include <memory>
#include <vector>

namespace kelvo {

/// What ties the widgets of one form to the models of its owner. Destroying it unties them and touches neither, so that
/// both may be gone by then.
class FormBinding {
public:
    FormBinding();

    /// Shows `model` in `widget` by means of `show`, now and after each change of the model. No signal of the widget
    /// tells of it. The result shows it once more.
    template <typename Widget, typename Model>
    std::function<void()> mirror(Widget& widget, Model& model, void (*show)(Widget&, const Model&)) {
        // A host may destroy its widgets before the form is let go.
        std::function<void()> showNow = [target = QPointer<Widget>(&widget), &model, show] {
            if (!target) return;
            const QSignalBlocker silence(target.data());
            show(*target, model);
        };
        subscriptions_.push_back(model.observeChanges(showNow));
        showNow();
        return showNow;
    }

    /// The context of the form's signal connections, which end with it.
    [[nodiscard]] QObject* connections() const { return connections_.get(); }

    /// Keeps a model that no outlet of the owner stands for.
    platform::NSControl& keep(std::unique_ptr<platform::NSControl> model);

private:
    std::vector<std::unique_ptr<platform::NSControl>> ownModels_;
    std::vector<platform::Subscription> subscriptions_;
    std::unique_ptr<QObject> connections_;
};

/// The user did something to a widget: `act` tells the model, and `show` lets the widget show what the model made of
/// it, which is what it was before if the model refused.
void userActed(const std::function<void()>& act, const std::function<void()>& show);

} // namespace kelvo
