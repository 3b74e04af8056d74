#pragma once

#import <PreferencePanes/PreferencePanes.h>

#include <memory>

namespace kelvo {
class SystemPreferencesPane;
}

/// What System Preferences makes of the bundle: a pane that hands its life on to the one that the product's own bundle
/// holds.
@interface KelvoTouchDisplayPref : NSPreferencePane {
    std::unique_ptr<kelvo::SystemPreferencesPane> pane_;
}
@end
