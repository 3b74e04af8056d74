#pragma once

#include "platform/Controls.h"

#include <QObject>
#include <QPointer>
#include <QSignalBlocker>

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace kelvo {

/// What ties the widgets of one form to the models of its owner. Destroying it unties them and touches neither, so that
/// both may be gone by then.
class FormBinding {
public:
    FormBinding();

    template <typename Widget, typename Model>
    using Show = std::type_identity_t<std::function<void(Widget&, const Model&)>>;

    /// Shows `model` in `widget` by means of `show`, now and after each change of the model. No signal of the widget
    /// tells of it. The result shows it once more.
    template <typename Widget, typename Model>
    std::function<void()> mirror(Widget& widget, Model& model, Show<Widget, Model> show) {
        // What the user does may end the binding, and the models with it; a host may destroy its widgets before the
        // form is let go.
        std::function<void()> showNow = [tied = QPointer<QObject>(connections()), target = QPointer<Widget>(&widget),
                                         &model, show = std::move(show)] {
            if (!tied || !target) return;
            const QSignalBlocker silence(target.data());
            show(*target, model);
        };
        subscriptions_.push_back(model.observeChanges(showNow));
        showNow();
        return showNow;
    }

    /// The context of the form's signal connections, which end with it.
    [[nodiscard]] QObject* connections() const { return connections_.get(); }

    /// Keeps what is needed for as long as the form is tied.
    template <typename T>
    T& keep(std::unique_ptr<T> kept) {
        T& result = *kept;
        kept_.push_back(std::move(kept));
        return result;
    }

private:
    std::vector<std::shared_ptr<void>> kept_;
    std::vector<platform::Subscription> subscriptions_;
    std::unique_ptr<QObject> connections_;
};

} // namespace kelvo
