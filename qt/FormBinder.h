#pragma once

#include "platform/Nib.h"
#include "qt/CanvasView.h"
#include "qt/FormBinding.h"
#include "qt/Pictograms.h"
#include "qt/ShownSubviews.h"

#include <QLabel>
#include <QWidget>

#include <memory>
#include <string>
#include <vector>

namespace kelvo {

/// Ties the widgets of a form to its owner, by name and type.
///
/// A widget whose object name is that of an outlet shows that outlet. A widget whose object name ends in "_" must have
/// an outlet, and one with a dynamic property "action" fires the owner's action of that selector; a button that only
/// fires needs no outlet. Any other name is for the layout alone. Every outlet needs a widget, but for the cell of a
/// pop-up, which its pop-up's widget shows.
///
/// Where a parent lays nothing out, frames are those of the form to begin with, and then the model's. Dynamic
/// properties of the form say the rest: "namedBy" of a widget is the label whose words it is called by, put into its
/// accessible name where that has a "%1"; "reads" of a label is the slider whose value it shows, which then says so;
/// "valueTexts" of a canvas are the texts for the values 0, 1 and so on of its view, and "tells" of a label is the
/// canvas whose words it shows; "enabledWith" of a label is the control that it is greyed with; "returnPresses" of a
/// field is the button that the Return key presses in it; "confirms" of a label is the button after whose press it
/// shows for a while; "pictures" of a pictogram is the pop-up whose choice it shows, and "isOnWith" the switch that it
/// is greyed without; "pictogram" of a button is the one beside its text, turned by its "angle" in degrees; "bounds" of
/// a label is the field whose limits it says; "keepsWidth" of a widget with a frame is for one that is to be no
/// narrower than in the form; "firstFocus" of a widget is what in it has the focus when it comes. "fact" is
/// ShownDisplay's.
class FormBinder {
public:
    FormBinder(std::string formName, QWidget& form, platform::NSNibOwner& owner, WidgetOfView widgetOfView,
               std::shared_ptr<Pictograms> pictograms = nullptr);

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
    void mirrorFrame(QWidget& widget, platform::NSView& model, FormBinding& binding) const;
    /// Keeps the rest of a form that lays nothing out where its designer put it, in either direction of writing.
    void holdInPlace(const std::vector<Match>& matches, FormBinding& binding) const;
    void nameAfter(const QLabel& label, platform::NSTextField& model, FormBinding& binding) const;
    void picture(const QWidget& popUp, platform::NSPopUpButton& model, FormBinding& binding) const;
    void showWhetherOn(const QWidget& button, platform::NSButton& model, FormBinding& binding) const;
    void givePictograms() const;
    void tellValue(CanvasView& canvas, platform::NSView& model, FormBinding& binding) const;
    void readOut(QWidget& slider, platform::NSSlider& model, FormBinding& binding) const;
    void letReturnPress(FormBinding& binding) const;
    void confirmPresses(FormBinding& binding) const;
    /// The labels whose dynamic property `property` is the name of `widget`.

    std::string formName_;
    QWidget& form_;
    platform::NSNibOwner& owner_;
    WidgetOfView widgetOfView_;
    std::shared_ptr<Pictograms> pictograms_;
};

} // namespace kelvo
