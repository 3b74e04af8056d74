#pragma once

#include "platform/Bundle.h"

#import <AppKit/AppKit.h>

namespace kelvo {

/// Replaces the keys that stand in a form where its texts belong by the texts of `bundle`, without the marks of their
/// shortcuts, which this platform does not know. A key without a text becomes the empty text.
void localizeTexts(NSView* form, platform::NSBundle* bundle);

} // namespace kelvo
