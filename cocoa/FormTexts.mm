#include "cocoa/FormTexts.h"

#include "cocoa/Elements.h"
#include "cocoa/Text.h"

#include <algorithm>
#include <cmath>

namespace kelvo {

namespace {

NSString* textFor(NSString* key, platform::NSBundle* bundle) {
    if ([key length] == 0 || !bundle) return @"";
    const std::string text = bundle->localizedStringForKey(textOf(key), "");
    return [platformText(text) stringByReplacingOccurrencesOfString:@"&" withString:@""];
}

constexpr CGFloat kSmallestFontSize = 8.0;
constexpr CGFloat kFontStep = 0.5;
/// What a box draws at both sides of its title.
constexpr CGFloat kBoxCorners = 24.0;
/// What a label leaves free at both sides of its text.
constexpr CGFloat kTextMargins = 6.0;
/// How much of its lines a text fills that is wrapped at its words.
constexpr CGFloat kFilled = 0.85;

/// Sets a cell in smaller fonts until `fits` or it can no longer be read.
template <typename Fits>
void shrink(NSCell* cell, const Fits& fits) {
    NSFont* font = [cell font];
    if (!font) font = [NSFont systemFontOfSize:0.0];
    [cell setFont:font];
    while (!fits() && [font pointSize] > kSmallestFontSize) {
        font = [NSFont fontWithName:[font fontName] size:[font pointSize] - kFontStep];
        [cell setFont:font];
    }
}

void makeTitleFit(NSCell* cell, CGFloat width) {
    shrink(cell, [=] { return [cell cellSize].width <= width; });
}

void localizeItems(NSPopUpButton* popUp, platform::NSBundle* bundle) {
    for (NSMenuItem* item : elementsOf<NSMenuItem>([popUp itemArray])) [item setTitle:textFor([item title], bundle)];
    [popUp synchronizeTitleAndSelectedItem];
}

void localizeView(NSView* view, platform::NSBundle* bundle) {
    if ([[view toolTip] length] > 0) [view setToolTip:textFor([view toolTip], bundle)];
    if ([view isKindOfClass:[NSPopUpButton class]]) {
        localizeItems(static_cast<NSPopUpButton*>(view), bundle);
    } else if ([view isKindOfClass:[NSButton class]]) {
        auto* const button = static_cast<NSButton*>(view);
        [button setTitle:textFor([button title], bundle)];
        makeTitleFit([button cell], NSWidth([button bounds]));
    } else if ([view isKindOfClass:[NSMatrix class]]) {
        for (NSCell* cell : elementsOf<NSCell>([static_cast<NSMatrix*>(view) cells]))
            [cell setTitle:textFor([cell title], bundle)];
    } else if ([view isKindOfClass:[NSTextField class]]) {
        auto* const field = static_cast<NSTextField*>(view);
        [field setStringValue:textFor([field stringValue], bundle)];
        if (![field isEditable]) makeTextFit(field);
    } else if ([view isKindOfClass:[NSBox class]]) {
        auto* const box = static_cast<NSBox*>(view);
        [box setTitle:textFor([box title], bundle)];
        makeTitleFit([box titleCell], NSWidth([box bounds]) - kBoxCorners);
        [box setTitleFont:[[box titleCell] font]];
    }
}

} // namespace

void makeTextFit(NSTextField* label) {
    const NSSize room = NSMakeSize(NSWidth([label bounds]) - kTextMargins, NSHeight([label bounds]));
    shrink([label cell], [=] {
        NSDictionary* const attributes = [NSDictionary dictionaryWithObject:[label font] forKey:NSFontAttributeName];
        const NSSize line = [[label stringValue] sizeWithAttributes:attributes];
        const CGFloat lines = std::max(std::floor(room.height / line.height), 1.0);
        return line.width <= room.width * (lines > 1.0 ? lines * kFilled : 1.0);
    });
}

void localizeTexts(NSView* form, platform::NSBundle* bundle) {
    localizeView(form, bundle);
    if ([form isKindOfClass:[NSTabView class]]) {
        for (NSTabViewItem* item : elementsOf<NSTabViewItem>([static_cast<NSTabView*>(form) tabViewItems])) {
            [item setLabel:textFor([item label], bundle)];
            localizeTexts([item view], bundle);
        }
        return;
    }
    for (NSView* view : elementsOf<NSView>([form subviews])) localizeTexts(view, bundle);
}

} // namespace kelvo
