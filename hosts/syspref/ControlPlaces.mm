#include "hosts/syspref/ControlPlaces.h"
#include "cocoa/Elements.h"
#include "cocoa/Retained.h"
#include "cocoa/Text.h"

#import <AppKit/AppKit.h>

namespace {

constexpr NSTimeInterval kIntervalSeconds = 0.1;

NSString* textOfView(NSView* view) {
    if ([view isKindOfClass:[NSPopUpButton class]]) return [static_cast<NSPopUpButton*>(view) titleOfSelectedItem];
    if ([view isKindOfClass:[NSButton class]]) return [static_cast<NSButton*>(view) title];
    if ([view isKindOfClass:[NSSlider class]]) {
        return [NSString stringWithFormat:@"%g", [static_cast<NSSlider*>(view) doubleValue]];
    }
    if ([view isKindOfClass:[NSControl class]]) return [static_cast<NSControl*>(view) stringValue];
    return @"";
}

NSString* placeOf(NSView* view, NSRect rect, NSString* kind, NSString* text) {
    NSRect place = [view convertRect:NSIntersectionRect(rect, [view visibleRect]) toView:nil];
    place.origin = [[view window] convertBaseToScreen:place.origin];
    const CGFloat top = NSMaxY([[[view window] screen] frame]) - NSMaxY(place);
    return
        [NSString stringWithFormat:@"%.0f %.0f %.0f %.0f %@ %@\n", NSMinX(place), top, NSWidth(place), NSHeight(place),
                                   kind, [text stringByReplacingOccurrencesOfString:@"\n" withString:@" "]];
}

/// The tabs themselves are no views: each is where the tab view says it is.
void appendTabs(NSTabView* tabView, NSMutableString* lines) {
    const CGFloat y = [tabView isFlipped] ? 10.0 : NSMaxY([tabView bounds]) - 10.0;
    NSTabViewItem* last = nil;
    for (CGFloat x = 0.0; x < NSWidth([tabView bounds]); x += 1.0) {
        NSTabViewItem* const item = [tabView tabViewItemAtPoint:NSMakePoint(x, y)];
        if (item && item != last) {
            [lines appendString:placeOf(tabView, NSMakeRect(x, y, 16.0, 4.0), @"NSTabViewItem", [item label])];
        }
        last = item;
    }
}

void appendPlaces(NSView* view, NSMutableString* lines) {
    if ([view isHidden] || NSIsEmptyRect([view visibleRect])) return;
    [lines appendString:placeOf(view, [view bounds], NSStringFromClass([view class]), textOfView(view))];
    if ([view isKindOfClass:[NSTabView class]]) appendTabs(static_cast<NSTabView*>(view), lines);
    for (NSView* inner : kelvo::elementsOf<NSView>([view subviews])) appendPlaces(inner, lines);
}

} // namespace

@interface KelvoControlPlaces : NSObject {
    kelvo::Retained<NSString> path_;
}
- (instancetype)initWithPath:(NSString*)path;
- (void)write:(NSTimer*)timer;
@end

@implementation KelvoControlPlaces

- (instancetype)initWithPath:(NSString*)path {
    self = [super init];
    if (self) {
        path_ = kelvo::Retained<NSString>::sharing(path);
    }
    return self;
}

- (void)write:(NSTimer*)timer {
    (void)timer;
    NSMutableString* const lines = [NSMutableString string];
    for (NSWindow* window : kelvo::elementsOf<NSWindow>([NSApp windows])) {
        if (![window isVisible]) continue;
        NSView* const content = [window contentView];
        [lines appendString:placeOf(content, [content bounds], @"NSWindow", [window title])];
        appendPlaces(content, lines);
    }
    // A click on a window of an application that is not active only makes it so.
    [lines appendFormat:@"0 0 0 0 NSApplication %@\n", [NSApp isActive] ? @"active" : @"inactive"];
    [lines writeToFile:path_.get() atomically:YES encoding:NSUTF8StringEncoding error:NULL];
}

@end

namespace kelvo {

void logControlPlaces() {
    NSString* const path = [[[NSProcessInfo processInfo] environment] objectForKey:@"KELVO_CONTROL_PLACES"];
    if ([path length] == 0) return;
    const Retained<KelvoControlPlaces> places([[KelvoControlPlaces alloc] initWithPath:path]);
    NSTimer* const timer = [NSTimer timerWithTimeInterval:kIntervalSeconds
                                                   target:places.get()
                                                 selector:@selector(write:)
                                                 userInfo:nil
                                                  repeats:YES];
    for (NSString* mode :
         kelvo::elementsOf<NSString>([NSArray arrayWithObjects:NSDefaultRunLoopMode, NSModalPanelRunLoopMode, nil])) {
        [[NSRunLoop currentRunLoop] addTimer:timer forMode:mode];
    }
}

} // namespace kelvo
