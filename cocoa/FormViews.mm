#include "cocoa/FormViews.h"

#include "cocoa/Elements.h"

#include <chrono>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

/// After which a drag would visibly lag behind the pointer if each of its positions took as long.
constexpr std::chrono::milliseconds kLong(20);

/// Where a gesture's action stands as mere text, below the gesture's name.
constexpr CGFloat kTextInset = 24.0;

} // namespace

@implementation KelvoBackdrop

- (BOOL)isOpaque {
    return YES;
}

- (void)drawRect:(NSRect)dirtyRect {
    [[NSColor windowBackgroundColor] set];
    NSRectFill(dirtyRect);
}

@end

@implementation KelvoContainer

- (void)growToHoldAllSoon {
    if (isGrowthDue_) return;
    isGrowthDue_ = YES;
    NSArray* const modes =
        [NSArray arrayWithObjects:NSDefaultRunLoopMode, NSModalPanelRunLoopMode, NSEventTrackingRunLoopMode, nil];
    [self performSelector:@selector(growToHoldAll) withObject:nil afterDelay:0.0 inModes:modes];
}

- (void)growToHoldAll {
    isGrowthDue_ = NO;
    if (NSEqualSizes(formSize_, NSZeroSize)) formSize_ = [self frame].size;
    CGFloat below = 0.0;
    for (NSView* view : kelvo::elementsOf<NSView>([self subviews])) below = MAX(below, -NSMinY([view frame]));
    [[self enclosingScrollView] setHasVerticalScroller:below > 0.0];
    if ([self frame].size.height == formSize_.height + below) return;
    [self setFrameSize:NSMakeSize(formSize_.width, formSize_.height + below)];
    [self setBoundsOrigin:NSMakePoint(0.0, -below)];
}

@end

@implementation KelvoCanvas

- (void)setDraw:(kelvo::Call<void()>)draw {
    draw_ = std::move(draw);
}

- (void)setPressed:(kelvo::Call<void(NSEvent*)>)pressed released:(kelvo::Call<void(NSEvent*)>)released {
    pressed_ = std::move(pressed);
    released_ = std::move(released);
}

- (void)drawRect:(NSRect)dirtyRect {
    (void)dirtyRect;
    if (draw_) draw_();
    [[NSColor grayColor] set];
    NSFrameRect([self bounds]);
}

- (void)mouseDown:(NSEvent*)event {
    if (pressed_) pressed_(event);
}

- (void)mouseUp:(NSEvent*)event {
    if (released_) released_(event);
}

@end

@implementation KelvoPullDown

- (void)setOpensMenu:(kelvo::Call<bool()>)opensMenu {
    opensMenu_ = std::move(opensMenu);
}

- (void)mouseDown:(NSEvent*)event {
    if (opensMenu_ && opensMenu_()) [super mouseDown:event];
}

- (void)drawRect:(NSRect)dirtyRect {
    if ([self isBordered]) {
        [super drawRect:dirtyRect];
    } else if ([self numberOfItems] > 0) {
        // Without a border it is mere text, which some themes do not know of.
        NSDictionary* const attributes = [NSDictionary dictionaryWithObject:[self font] forKey:NSFontAttributeName];
        [[self itemTitleAtIndex:0] drawAtPoint:NSMakePoint(kTextInset, 4.0) withAttributes:attributes];
    }
}

- (void)performClick:(id)sender {
    if (opensMenu_ && opensMenu_()) [super performClick:sender];
}

- (BOOL)acceptsFirstResponder {
    return opensMenu_ && opensMenu_() && [super acceptsFirstResponder];
}

@end

@implementation KelvoSlider

- (double)stepsPerUnit {
    return 1.0;
}

- (void)mouseDown:(NSEvent*)event {
    [self sendActionOn:NSLeftMouseUpMask | NSLeftMouseDraggedMask];
    [super mouseDown:event];
}

- (BOOL)sendAction:(SEL)action to:(id)target {
    const Clock::time_point begin = Clock::now();
    const BOOL isSent = [super sendAction:action to:target];
    if (Clock::now() - begin > kLong) [self sendActionOn:NSLeftMouseUpMask];
    return isSent;
}

@end

@implementation KelvoTenthsSlider

- (double)stepsPerUnit {
    return 10.0;
}

@end

@implementation KelvoHundredthsSlider

- (double)stepsPerUnit {
    return 100.0;
}

@end

@implementation KelvoMatrix

- (void)mouseDown:(NSEvent*)event {
    hasSentAction_ = NO;
    [super mouseDown:event];
    if (!hasSentAction_ && [self isEnabled]) [self sendAction:[self action] to:[self target]];
}

- (BOOL)sendAction:(SEL)action to:(id)target {
    hasSentAction_ = YES;
    return [super sendAction:action to:target];
}

@end

@implementation KelvoCaption

- (NSControl*)captioned {
    return control;
}

- (void)mouseDown:(NSEvent*)event {
    if ([control isKindOfClass:[NSButton class]]) [control performClick:self];
    (void)event;
}

@end

@implementation KelvoReadout

- (int)decimals {
    return 1;
}

- (double)shownValueOf:(double)value {
    return value;
}

@end

@implementation KelvoComplementReadout

- (int)decimals {
    return 2;
}

- (double)shownValueOf:(double)value {
    return 1.0 - value;
}

@end
