#include "cocoa/NibOwner.h"

#include "cocoa/Text.h"

#include <utility>

namespace {

constexpr char kOutermostView[] = "view";

/// The name that the setter of an outlet ends in: "setRateSlider_:" of "rateSlider_".
NSString* setterOf(const std::string& name) {
    NSString* const text = kelvo::platformText(name);
    return [NSString
        stringWithFormat:@"set%@%@:", [[text substringToIndex:1] uppercaseString], [text substringFromIndex:1]];
}

bool isSetter(NSString* selector) {
    return [selector hasPrefix:@"set"] && [selector hasSuffix:@":"] && [selector length] > 4;
}

} // namespace

// Forms set their outlets by key-value coding, which falls back on -setValue:forUndefinedKey:, or where that is not so
// by the outlet's setter alone. This object has no setter of its own, but none that it would not understand.

@implementation KelvoNibOwner

- (instancetype)initWithNames:(std::vector<std::string>)names {
    self = [super init];
    if (self) {
        names_ = std::move(names);
        names_.emplace_back(kOutermostView);
    }
    return self;
}

- (NSView*)view {
    return view_;
}

- (const std::map<std::string, NSView*>&)views {
    return views_;
}

- (void)setValue:(id)value forUndefinedKey:(NSString*)key {
    const std::string name = kelvo::textOf(key);
    if (name == kOutermostView) {
        view_ = value;
    } else {
        views_[name] = value;
    }
}

- (BOOL)respondsToSelector:(SEL)selector {
    return [super respondsToSelector:selector] || isSetter(NSStringFromSelector(selector));
}

- (NSMethodSignature*)methodSignatureForSelector:(SEL)selector {
    NSMethodSignature* const own = [super methodSignatureForSelector:selector];
    return own || !isSetter(NSStringFromSelector(selector)) ? own : [NSMethodSignature signatureWithObjCTypes:"v@:@"];
}

- (void)forwardInvocation:(NSInvocation*)invocation {
    NSString* const setter = NSStringFromSelector([invocation selector]);
    id value = nil;
    [invocation getArgument:&value atIndex:2];
    for (const std::string& name : names_) {
        if (![setterOf(name) isEqualToString:setter]) continue;
        [self setValue:value forUndefinedKey:kelvo::platformText(name)];
        return;
    }
    // Not one of the owner's: by what is left of its name.
    NSString* const rest = [setter substringWithRange:NSMakeRange(3, [setter length] - 4)];
    NSString* const first = [[rest substringToIndex:1] lowercaseString];
    [self setValue:value forUndefinedKey:[first stringByAppendingString:[rest substringFromIndex:1]]];
}

@end
