#include "cocoa/Pairings.h"

#include "cocoa/CocoaGraphicsContext.h"
#include "cocoa/Elements.h"
#include "cocoa/FormTexts.h"
#include "cocoa/FormViews.h"
#include "cocoa/Frames.h"
#include "cocoa/Text.h"
#include "platform/Guarded.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

// Contents that a form brings along (items, tabs, a text) go into a control that has none yet; from then on the view
// shows the control. Forms are tied for less time than their views live, so what is called later holds the view.

/// Tells `acted` what the user does to `control`, and then shows what the model made of it.
void tellActs(NSControl* control, FormBinding& binding, const std::function<void()>& acted,
              const std::function<void()>& show) {
    KelvoUserActs* const acts = binding.watchUser();
    [acts setActed:[acted, show] {
        platform::guarded(acted);
        show();
    }];
    [control setTarget:acts];
    [control setAction:@selector(act:)];
}

/// Shows the items of a pop-up. What it shows already stands until the model is emptied, so each item is looked at
/// once, however many changes there are.
class ShownItems {
public:
    void show(NSPopUpButton* popUp, const platform::NSPopUpButton& model) {
        const auto& titles = model.itemTitles();
        const auto shown = [popUp] { return static_cast<std::size_t>([popUp numberOfItems]); };
        if (timesEmptied_ != model.timesEmptied() || shown() > titles.size()) [popUp removeAllItems];
        timesEmptied_ = model.timesEmptied();
        for (std::size_t i = shown(); i < titles.size(); ++i) {
            // The pop-up itself would drop the first of two items of the same title.
            [[popUp menu] addItemWithTitle:platformText(titles[i]) action:NULL keyEquivalent:@""];
        }
    }

private:
    /// None before the first time, when the form's own items may stand there.
    std::optional<std::size_t> timesEmptied_;
};

void showPopUp(NSPopUpButton* popUp, const platform::NSPopUpButton& model, ShownItems& items) {
    items.show(popUp, model);
    [popUp selectItemAtIndex:model.indexOfSelectedItem()];
    [popUp synchronizeTitleAndSelectedItem];
}

void pairPopUp(NSView* view, platform::NSView& anyModel, FormBinding& binding) {
    auto* const popUp = static_cast<NSPopUpButton*>(view);
    auto& model = dynamic_cast<platform::NSPopUpButton&>(anyModel);
    if (model.itemTitles().empty()) {
        std::vector<std::string> titles;
        for (NSString* title : elementsOf<NSString>([popUp itemTitles])) titles.push_back(textOf(title));
        model.addItemsWithTitles(std::move(titles));
    }
    const auto items = std::make_shared<ShownItems>();
    const auto show = binding.mirror(model, [popUp, &model, items] { showPopUp(popUp, model, *items); });
    tellActs(
        popUp, binding,
        [popUp, &model] { model.performSelectItemAtIndex(static_cast<int>([popUp indexOfSelectedItem])); }, show);
}

// The first item of a pull-down carries its title, here and there.

void showPullDown(KelvoPullDown* pullDown, const platform::NSPopUpButton& model, ShownItems& items) {
    items.show(pullDown, model);
    if ([pullDown numberOfItems] > 0) [[pullDown itemAtIndex:0] setTitle:platformText(model.title())];
    for (NSInteger i = 1; i < [pullDown numberOfItems]; ++i) {
        [[pullDown itemAtIndex:i] setState:i == model.indexOfSelectedItem() ? NSOnState : NSOffState];
    }
    [pullDown setBordered:model.cell().isBordered()];
    [[pullDown cell] setArrowPosition:model.cell().hasArrow() ? NSPopUpArrowAtBottom : NSPopUpNoArrow];
    [pullDown synchronizeTitleAndSelectedItem];
    [pullDown setNeedsDisplay:YES];
}

/// Of the arrow behind a pull-down's title, with the gap before it.
constexpr double kArrowWidth = 10.0;

/// Of what a pull-down draws at both sides of its title.
constexpr double kPullDownMargins = 30.0;
constexpr double kSmallestFontSize = 8.0;

/// The width of a pull-down's title, in a font that is small enough for it to have room beside what surrounds it.
double titleWidth(NSPopUpButton* popUp, const std::string& title) {
    const double room = NSWidth([[popUp superview] bounds]) - kPullDownMargins;
    double size = [NSFont systemFontSize];
    for (;; size -= 0.5) {
        NSFont* const font = [NSFont systemFontOfSize:size];
        NSDictionary* const attributes = [NSDictionary dictionaryWithObject:font forKey:NSFontAttributeName];
        const double width = [platformText(title) sizeWithAttributes:attributes].width + kArrowWidth;
        if (width > room && size > kSmallestFontSize) continue;
        [popUp setFont:font];
        return width;
    }
}

void pairPullDown(NSView* view, platform::NSView& anyModel, FormBinding& binding) {
    auto* const pullDown = static_cast<KelvoPullDown*>(view);
    auto& model = dynamic_cast<platform::NSPopUpButton&>(anyModel);
    const auto held = Retained<KelvoPullDown>::sharing(pullDown);
    model.cell().setMeasure([held](const std::string& title) { return titleWidth(held.get(), title); });
    [pullDown setOpensMenu:[&model] { return model.opensMenu(); }];
    binding.atEnd([held] { [held.get() setOpensMenu:nullptr]; });
    const auto items = std::make_shared<ShownItems>();
    const auto show = binding.mirror(model, [pullDown, &model, items] { showPullDown(pullDown, model, *items); });
    tellActs(
        pullDown, binding,
        [pullDown, &model] { model.performSelectItemAtIndex(static_cast<int>([pullDown indexOfSelectedItem])); }, show);
}

void pairButton(NSView* view, platform::NSView& anyModel, FormBinding& binding) {
    auto* const button = static_cast<NSButton*>(view);
    auto& model = dynamic_cast<platform::NSButton&>(anyModel);
    const auto show = binding.mirror(model, [button, &model] {
        [button setAllowsMixedState:model.state() < 0];
        [button setState:model.state()];
    });
    tellActs(
        button, binding, [&model] { model.performClick(); }, show);
}

void pairText(NSView* view, platform::NSView& anyModel, FormBinding& binding) {
    auto* const label = static_cast<NSTextField*>(view);
    auto& model = dynamic_cast<platform::NSTextField&>(anyModel);
    if (model.stringValue().empty()) model.setStringValue(textOf([label stringValue]));
    binding.mirror(model, [label, &model] {
        [label setStringValue:platformText(model.stringValue())];
        makeTextFit(label);
    });
}

void showEditable(NSTextField* field, const platform::NSTextField& model) {
    NSString* const text = platformText(model.stringValue());
    NSText* const editor = [field currentEditor];
    if ([editor ? [editor string] : [field stringValue] isEqualToString:text]) return;
    if (editor) {
        [editor setString:text];
    } else {
        [field setStringValue:text];
    }
}

/// A bound of a field's numbers, or else the furthest there is.
double boundOr(double furthest, NSNumber* bound) { return bound ? [bound doubleValue] : furthest; }

/// The numbers that the form lets into a field; none when every text may be in it. It is the model that refuses others.
std::optional<platform::NSNumberFormatter> takeFormatter(NSTextField* field) {
    auto* const formatter = static_cast<NSNumberFormatter*>([[field cell] formatter]);
    if (!formatter) return std::nullopt;
    constexpr double kFurthest = std::numeric_limits<double>::infinity();
    const platform::NSNumberFormatter bounds{boundOr(-kFurthest, [formatter minimum]),
                                             boundOr(kFurthest, [formatter maximum])};
    [[field cell] setFormatter:nil];
    return bounds;
}

void pairEditable(NSView* view, platform::NSView& anyModel, FormBinding& binding) {
    auto* const field = static_cast<NSTextField*>(view);
    auto& model = dynamic_cast<platform::NSTextField&>(anyModel);
    model.setFormatter(takeFormatter(field));
    if (model.stringValue().empty()) model.setStringValue(textOf([field stringValue]));
    const auto show = binding.mirror(model, [field, &model] { showEditable(field, model); });
    KelvoUserActs* const acts = binding.watchUser();
    [acts setEdited:[&model](NSString* text) { model.performEdit(textOf(text)); }
        endEditing:[&model, show](NSString* text) {
            const bool mayEnd = model.performEndEditing(textOf(text));
            show();
            return mayEnd;
        }];
    [field setDelegate:(id)acts];
    const auto held = Retained<NSTextField>::sharing(field);
    binding.atEnd([held] { [held.get() setDelegate:nil]; });
}

/// The step that is nearest to a value, by its number.
double stepAt(KelvoSlider* slider, double value) { return std::round(value * [slider stepsPerUnit]); }

void pairSlider(NSView* view, platform::NSView& anyModel, FormBinding& binding) {
    auto* const slider = static_cast<KelvoSlider*>(view);
    auto& model = dynamic_cast<platform::NSSlider&>(anyModel);
    model.setBounds([slider minValue], [slider maxValue]);
    const auto show = binding.mirror(model, [slider, &model] { [slider setDoubleValue:model.doubleValue()]; });
    const auto acted = [slider, &model] {
        const double step = stepAt(slider, [slider doubleValue]);
        // A release tells of the position once more.
        if (step != stepAt(slider, model.doubleValue())) model.performSetDoubleValue(step / [slider stepsPerUnit]);
    };
    tellActs(slider, binding, acted, show);
}

void pairMatrix(NSView* view, platform::NSView& anyModel, FormBinding& binding) {
    auto* const matrix = static_cast<NSMatrix*>(view);
    auto& model = dynamic_cast<platform::NSMatrix&>(anyModel);
    model.setNumberOfRows(static_cast<int>([matrix numberOfRows]));
    const auto show =
        binding.mirror(model, [matrix, &model] { [matrix selectCellAtRow:model.selectedRow() column:0]; });
    tellActs(
        matrix, binding, [matrix, &model] { model.performSelectRow(static_cast<int>([matrix selectedRow])); }, show);
}

void draw(platform::NSView& model) {
    CocoaGraphicsContext context;
    const platform::NSGraphicsContext::Current current(context);
    model.drawRect(model.bounds());
}

/// A press or release, by the window's content view.
platform::NSEvent eventAt(NSView* canvas, platform::NSView& model, NSEvent* event) {
    NSView* const content = [[canvas window] contentView];
    model.setOriginInContentView(pointOf([canvas convertPoint:NSZeroPoint toView:content]));
    return {pointOf([content convertPoint:[event locationInWindow] fromView:nil])};
}

void pairCanvas(NSView* view, platform::NSView& model, FormBinding& binding) {
    auto* const canvas = static_cast<KelvoCanvas*>(view);
    binding.mirror(model, [canvas] { [canvas setNeedsDisplay:YES]; });
    [canvas setDraw:[&model] { platform::guarded([&] { draw(model); }); }];
    [canvas setPressed:[canvas, &model](NSEvent* event) {
        platform::guarded([&] { model.mouseDown(eventAt(canvas, model, event)); });
    }
        released:[canvas, &model](NSEvent* event) {
            platform::guarded([&] { model.mouseUp(eventAt(canvas, model, event)); });
        }];
    const auto held = Retained<KelvoCanvas>::sharing(canvas);
    binding.atEnd([held] {
        [held.get() setDraw:nullptr];
        [held.get() setPressed:nullptr released:nullptr];
    });
}

void showTab(NSTabView* tabView, const platform::NSTabView& model) {
    const NSInteger selected = model.indexOfSelectedTabViewItem();
    if (selected < 0 || selected == [tabView indexOfTabViewItem:[tabView selectedTabViewItem]]) return;
    [tabView selectTabViewItemAtIndex:selected];
}

void pairTabs(NSView* view, platform::NSView& anyModel, FormBinding& binding) {
    auto* const tabView = static_cast<NSTabView*>(view);
    auto& model = dynamic_cast<platform::NSTabView&>(anyModel);
    if (model.numberOfTabViewItems() == 0) {
        for (NSTabViewItem* item : elementsOf<NSTabViewItem>([tabView tabViewItems]))
            model.addTabViewItem(textOf([item label]));
    }
    const auto show = binding.mirror(model, [tabView, &model] { showTab(tabView, model); });
    KelvoUserActs* const acts = binding.watchUser();
    // This comes for the program's choices, too, which are the model's already.
    [acts setActed:[tabView, &model, show] {
        model.selectTabViewItemAtIndex(static_cast<int>([tabView indexOfTabViewItem:[tabView selectedTabViewItem]]));
        show();
    }];
    [tabView setDelegate:(id)acts];
    const auto held = Retained<NSTabView>::sharing(tabView);
    binding.atEnd([held] { [held.get() setDelegate:nil]; });
}

void pairNothing(NSView*, platform::NSView&, FormBinding&) {}

template <typename Class>
bool isA(NSView* view) {
    return [view isKindOfClass:[Class class]];
}

bool isEditable(NSView* view) { return isA<NSTextField>(view) && [static_cast<NSTextField*>(view) isEditable]; }

bool isCheckBox(NSView* view) {
    // A switch alone shows its state by what stands in it; a push button shows none.
    return isA<NSButton>(view) && [[static_cast<NSButton*>(view) cell] showsStateBy] != NSNoCellMask;
}

template <typename Model>
bool isControl(const platform::NSView& model) {
    return dynamic_cast<const Model*>(&model) != nullptr;
}

bool isPullDown(const platform::NSView& model) {
    const auto* popUp = dynamic_cast<const platform::NSPopUpButton*>(&model);
    return popUp && popUp->pullsDown();
}

bool isPopUp(const platform::NSView& model) { return isControl<platform::NSPopUpButton>(model) && !isPullDown(model); }

/// A view of any class that draws itself.
bool isDrawn(const platform::NSView& model) {
    return !isControl<platform::NSControl>(model) && !isControl<platform::NSTabView>(model);
}

/// A control of any other kind needs a view of its own, or nobody would see it.
bool isMereView(const platform::NSView& model) { return typeid(model) == typeid(platform::NSView); }

template <typename Model, auto... arguments>
std::unique_ptr<platform::NSControl> make() {
    return std::make_unique<Model>(arguments...);
}

constexpr Pairing kPlainView = {isA<NSView>, isMereView, pairNothing, nullptr};

// A view is of the first kind that fits.
constexpr Pairing kPairings[] = {
    {isA<KelvoPullDown>, isPullDown, pairPullDown, make<platform::NSPopUpButton, true>},
    {isA<NSPopUpButton>, isPopUp, pairPopUp, make<platform::NSPopUpButton>},
    {isA<KelvoCanvas>, isDrawn, pairCanvas, nullptr},
    {isA<NSMatrix>, isControl<platform::NSMatrix>, pairMatrix, make<platform::NSMatrix>},
    {isA<KelvoSlider>, isControl<platform::NSSlider>, pairSlider, make<platform::NSSlider>},
    {isEditable, isControl<platform::NSTextField>, pairEditable, nullptr},
    {isA<NSTextField>, isControl<platform::NSTextField>, pairText, nullptr},
    {isCheckBox, isControl<platform::NSButton>, pairButton, make<platform::NSButton, platform::NSButton::Type::Switch>},
    {isA<NSButton>, isControl<platform::NSButton>, pairButton, make<platform::NSButton>},
    {isA<NSTabView>, isControl<platform::NSTabView>, pairTabs, nullptr},
};

} // namespace

const Pairing& pairingFor(NSView* view) {
    const auto own = std::find_if(std::begin(kPairings), std::end(kPairings),
                                  [&](const Pairing& candidate) { return candidate.isView(view); });
    return own == std::end(kPairings) ? kPlainView : *own;
}

bool isPlainView(NSView* view) { return &pairingFor(view) == &kPlainView; }

} // namespace kelvo
