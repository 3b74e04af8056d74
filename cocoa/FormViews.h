#pragma once

#include "cocoa/Call.h"

#import <AppKit/AppKit.h>

// The views that forms use beside the platform's own.

/// A rectangle that covers what lies beneath it.
@interface KelvoBackdrop : NSView
@end

/// A rectangle that others are put into at their frames, in a scroll view. It grows downwards to hold what lies below
/// its bottom; its coordinates stay as they are. However many come, go or move at once, it looks at them all one time.
@interface KelvoContainer : NSView {
    NSSize formSize_;
    BOOL isGrowthDue_;
}
- (void)growToHoldAllSoon;
@end

/// A rectangle that someone else draws and that tells of presses.
@interface KelvoCanvas : NSView {
    kelvo::Call<void()> draw_;
    kelvo::Call<void(NSEvent*)> pressed_;
    kelvo::Call<void(NSEvent*)> released_;
}
- (void)setDraw:(kelvo::Call<void()>)draw;
- (void)setPressed:(kelvo::Call<void(NSEvent*)>)pressed released:(kelvo::Call<void(NSEvent*)>)released;
@end

/// A pull-down menu that can be deaf to the user.
@interface KelvoPullDown : NSPopUpButton {
    kelvo::Call<bool()> opensMenu_;
}
- (void)setOpensMenu:(kelvo::Call<bool()>)opensMenu;
@end

/// A slider that the user moves in steps of one. It tells of each position of a drag until telling of one takes long;
/// from then on the user sees no more than where it is dragged, and the release tells of its end.
@interface KelvoSlider : NSSlider
- (double)stepsPerUnit;
@end

/// A slider that the user moves in steps of 0.1.
@interface KelvoTenthsSlider : KelvoSlider
@end

/// A slider that the user moves in steps of 0.01.
@interface KelvoHundredthsSlider : KelvoSlider
@end

/// A column of radio buttons that tells of every click on it, which not every matrix does.
@interface KelvoMatrix : NSMatrix {
    BOOL hasSentAction_;
}
@end

/// The words of a control that stand beside it: they go when it goes, and a click on them is one on a button.
@interface KelvoCaption : NSTextField {
    NSControl* control;
}
- (NSControl*)captioned;
@end

/// Shows the value of the slider that has the same tag, where its text has a "%1".
@interface KelvoReadout : NSTextField
- (double)shownValueOf:(double)value;
- (int)decimals;
@end

/// Shows what the slider's value is short of 1.
@interface KelvoComplementReadout : KelvoReadout
@end
