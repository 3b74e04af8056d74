#pragma once

#import <AppKit/AppKit.h>

#include <map>
#include <string>
#include <vector>

/// Stands for a form's owner while the form is loaded: takes every outlet that the form connects, by name, and leaves
/// the actions to be found as the selectors of the controls.
@interface KelvoNibOwner : NSObject {
    std::vector<std::string> names_;
    std::map<std::string, NSView*> views_;
    NSView* view_;
}
/// `names` are those of the owner's outlets.
- (instancetype)initWithNames:(std::vector<std::string>)names;
/// The form's outermost view: the outlet "view".
- (NSView*)view;
/// What is connected, by the outlets' names. The form owns the views.
- (const std::map<std::string, NSView*>&)views;
@end
