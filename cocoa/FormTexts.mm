#include "cocoa/FormTexts.h"

#include "cocoa/Elements.h"
#include "cocoa/Text.h"

namespace kelvo {

namespace {

NSString* textFor(NSString* key, platform::NSBundle* bundle) {
    if ([key length] == 0 || !bundle) return @"";
    const std::string text = bundle->localizedStringForKey(textOf(key), "");
    return [platformText(text) stringByReplacingOccurrencesOfString:@"&" withString:@""];
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
    } else if ([view isKindOfClass:[NSMatrix class]]) {
        for (NSCell* cell : elementsOf<NSCell>([static_cast<NSMatrix*>(view) cells]))
            [cell setTitle:textFor([cell title], bundle)];
    } else if ([view isKindOfClass:[NSTextField class]]) {
        auto* const field = static_cast<NSTextField*>(view);
        [field setStringValue:textFor([field stringValue], bundle)];
    } else if ([view isKindOfClass:[NSBox class]]) {
        auto* const box = static_cast<NSBox*>(view);
        [box setTitle:textFor([box title], bundle)];
    }
}

} // namespace

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
