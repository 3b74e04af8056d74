#include "qt/FormBinding.h"

#include "qt/Guarded.h"

#include <utility>

namespace kelvo {

FormBinding::FormBinding() : connections_(std::make_unique<QObject>()) {}

platform::NSControl& FormBinding::keep(std::unique_ptr<platform::NSControl> model) {
    ownModels_.push_back(std::move(model));
    return *ownModels_.back();
}

void userActed(const std::function<void()>& act, const std::function<void()>& show) {
    guarded(act);
    guarded(show);
}

} // namespace kelvo
