#pragma once

#include "platform/Nib.h"
#include "qt/FormBinding.h"

#include <QWidget>

#include <functional>
#include <string>
#include <vector>

namespace kelvo {

/// Ties the widgets of a form to its owner, by name and type.
///
/// A widget whose object name is that of an outlet shows that outlet. A widget whose object name ends in "_" must have
/// an outlet, and one with a dynamic property "action" fires the owner's action of that selector; a button that only
/// fires needs no outlet. Any other name is for the layout alone. Every outlet needs a widget.
class FormBinder {
public:
    /// Finds the widget that shows a view; null when the view has none.
    using WidgetOfView = std::function<QWidget*(const platform::NSView&)>;

    FormBinder(std::string formName, QWidget& form, platform::NSNibOwner& owner, WidgetOfView widgetOfView);

    /// Ties everything, `view` to the form's outermost widget, and fires nothing. A form and an owner that do not fit
    /// each other are a std::runtime_error that names both sides of every misfit, and nothing has been tied then.
    [[nodiscard]] FormBinding bind(platform::NSView& view) const;

private:
    struct Match;

    [[nodiscard]] std::vector<Match> findMatches(const std::vector<platform::NSOutlet>& outlets,
                                                 const std::vector<platform::NSNibAction>& actions) const;
    void tie(const Match& match, FormBinding& binding) const;
    void embed(platform::NSViewController& controller, QWidget& page) const;
    void mirrorView(QWidget& widget, platform::NSView& model, FormBinding& binding) const;

    std::string formName_;
    QWidget& form_;
    platform::NSNibOwner& owner_;
    WidgetOfView widgetOfView_;
};

} // namespace kelvo
