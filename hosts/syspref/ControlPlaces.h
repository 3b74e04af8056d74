#pragma once

#import <AppKit/AppKit.h>

namespace kelvo {

/// Where the environment variable KELVO_CONTROL_PLACES names a file, keeps in it where on the screen the controls below
/// `view` can be seen: one line "x y width height CLASS TEXT" each, the origin at the screen's top left. It lets
/// whoever drives the application by a pointer find them, as accessibility does in other toolkits.
void logControlPlaces(NSView* view);

} // namespace kelvo
