#pragma once

#include "platform/Bundle.h"

#import <AppKit/AppKit.h>

namespace kelvo {

/// Replaces the keys that stand in a form where its texts belong by the texts of `bundle`, without the marks of their
/// shortcuts, which this platform does not know. A key without a text becomes the empty text. A text that is longer
/// than its place in the form, as some languages' are, is set in a smaller font.
void localizeTexts(NSView* form, platform::NSBundle* bundle);

/// Sets a label in a smaller font if its text has no room.
void makeTextFit(NSTextField* label);

} // namespace kelvo
