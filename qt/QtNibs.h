#pragma once

#include "platform/Nib.h"
#include "qt/FingerScrolling.h"
#include "qt/FormFit.h"
#include "qt/Forms.h"
#include "qt/Pictograms.h"

#include <QPointer>
#include <QWidget>

#include <map>
#include <memory>
#include <string>

namespace kelvo {

/// Makes widgets of forms and binds them to their owners.
class QtNibs final : public platform::NSNibs {
public:
    /// The texts and pictograms of `forms` come from the loaded bundle of that identifier.
    QtNibs(std::string bundleIdentifier, Forms forms);

    [[nodiscard]] std::unique_ptr<platform::NSNib> instantiate(const std::string& name, platform::NSNibOwner& owner,
                                                               platform::NSView& view) override;

    /// The widget that shows `view`, for a host or an outer form to put in its place; null when the view has no form.
    [[nodiscard]] QWidget* widgetFor(const platform::NSView& view) const;

private:
    [[nodiscard]] bool isInAForm(const QWidget& widget) const;

    std::string bundleIdentifier_;
    Forms forms_;
    std::shared_ptr<Pictograms> pictograms_;
    WidestTexts widestTexts_;
    std::map<const platform::NSView*, QPointer<QWidget>> widgets_;
    FingerScrolling fingers_{[this](const QWidget& widget) { return isInAForm(widget); }};
    std::unique_ptr<QObject> connections_;
};

} // namespace kelvo
