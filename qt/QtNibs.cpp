#include "qt/QtNibs.h"

#include "qt/Accessibility.h"
#include "qt/Columns.h"
#include "qt/FormBinder.h"
#include "qt/FormBinding.h"
#include "qt/FormTexts.h"
#include "qt/RowNotes.h"
#include "qt/UserAct.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <utility>

namespace kelvo {

namespace {

class QtNib final : public platform::NSNib {
public:
    QtNib(FormBinding binding, std::unique_ptr<QWidget> form) : binding_(std::move(binding)), form_(form.release()) {}

    ~QtNib() override {
        // Untied first, so that nothing the widgets do while they go reaches a model. The form belongs to whatever
        // window it was put into as well, and has gone with it if that went first.
        binding_.reset();
        discardForm(std::unique_ptr<QWidget>(form_.data()));
    }

private:
    std::optional<FormBinding> binding_;
    QPointer<QWidget> form_;
};

} // namespace

QtNibs::QtNibs(std::string bundleIdentifier, Forms forms)
    : bundleIdentifier_(std::move(bundleIdentifier)),
      forms_(std::move(forms)),
      pictograms_(std::make_shared<Pictograms>(bundleIdentifier_)),
      connections_(std::make_unique<QObject>()) {
    describeOwnWidgets();
}

std::unique_ptr<platform::NSNib> QtNibs::instantiate(const std::string& name, platform::NSNibOwner& owner,
                                                     platform::NSView& view) {
    const auto entry = forms_.find(name);
    if (entry == forms_.end()) throw std::runtime_error("there is no form " + name);

    std::unique_ptr<QWidget> form = entry->second();
    platform::NSBundle* const bundle = platform::NSBundle::bundleWithIdentifier(bundleIdentifier_);
    localizeTexts(*form, bundle);
    fitFrames(*form, bundle, widestTexts_);
    keepWhole(*form);
    stackColumnsWhereNarrow(*form);
    noteRowChanges(*form);
    const auto widgetOfView = [this](const platform::NSView& each) { return widgetFor(each); };
    const FormBinder binder(name, *form, owner, widgetOfView, pictograms_);
    FormBinding binding = binder.bind(view);

    widgets_[&view] = form.get();
    QObject::connect(form.get(), &QObject::destroyed, connections_.get(), [this, gone = &view] {
        // Another view may have come to the same place in memory since.
        const auto known = widgets_.find(gone);
        if (known != widgets_.end() && known->second.isNull()) widgets_.erase(known);
    });
    return std::make_unique<QtNib>(std::move(binding), std::move(form));
}

/// A menu that opened from a widget of a form counts as in it.
bool QtNibs::isInAForm(const QWidget& widget) const {
    const auto isForm = [this](const QWidget* each) {
        return std::any_of(widgets_.begin(), widgets_.end(), [&](const auto& known) { return known.second == each; });
    };
    for (const QWidget* each = &widget; each; each = each->parentWidget()) {
        if (isForm(each)) return true;
    }
    return false;
}

QWidget* QtNibs::widgetFor(const platform::NSView& view) const {
    const auto shown = widgets_.find(&view);
    return shown == widgets_.end() ? nullptr : shown->second.data();
}

} // namespace kelvo
