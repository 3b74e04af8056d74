#include "cocoa/CocoaApplication.h"

#include "cocoa/Call.h"
#include "cocoa/Text.h"
#include "platform/Guarded.h"

#include <utility>

namespace {

/// Neither of the buttons': the program ended the sheet.
constexpr NSInteger kSheetWasEnded = -1;

std::int32_t returnCodeOf(NSInteger pressed) {
    if (pressed == NSAlertFirstButtonReturn) return platform::kNSAlertDefaultReturn;
    if (pressed == NSAlertSecondButtonReturn) return platform::kNSAlertAlternateReturn;
    return kSheetWasEnded;
}

} // namespace

/// One alert on its way: shown as soon as the run loop is back, let go when it has ended.
@interface KelvoAlertSheet : NSObject {
    kelvo::Retained<NSAlert> alert_;
    kelvo::Retained<NSWindow> window_;
    kelvo::Call<void(std::int32_t)> didEnd_;
}
- (instancetype)initWithAlert:(NSAlert*)alert window:(NSWindow*)window didEnd:(kelvo::Call<void(std::int32_t)>)didEnd;
- (void)show;
@end

@implementation KelvoAlertSheet

- (instancetype)initWithAlert:(NSAlert*)alert window:(NSWindow*)window didEnd:(kelvo::Call<void(std::int32_t)>)didEnd {
    self = [super init];
    if (self) {
        alert_ = kelvo::Retained<NSAlert>::sharing(alert);
        window_ = kelvo::Retained<NSWindow>::sharing(window);
        didEnd_ = std::move(didEnd);
    }
    return self;
}

- (void)show {
    // Given back when the sheet has ended.
    [self retain];
    [alert_.get() beginSheetModalForWindow:window_.get()
                             modalDelegate:self
                            didEndSelector:@selector(alertDidEnd:returnCode:contextInfo:)
                               contextInfo:NULL];
}

- (void)alertDidEnd:(id)alert returnCode:(NSInteger)returnCode contextInfo:(void*)contextInfo {
    (void)alert;
    (void)contextInfo;
    const auto didEnd = didEnd_;
    platform::guarded([&] { didEnd(returnCodeOf(returnCode)); });
    [self autorelease];
}

@end

namespace kelvo {

void CocoaApplication::activateIgnoringOtherApps() {
    [NSApp activateIgnoringOtherApps:YES];
    // An open sheet stays in front of its window.
    NSWindow* const sheet = [NSApp modalWindow];
    [sheet ? sheet : window_.get() makeKeyAndOrderFront:nil];
}

void CocoaApplication::beginInformationalAlertSheet(const platform::NSAlertSheet& sheet,
                                                    const platform::NSObject& delegate,
                                                    std::function<void(std::int32_t returnCode)> didEnd) {
    const Retained<NSAlert> alert([[NSAlert alloc] init]);
    [alert.get() setAlertStyle:NSInformationalAlertStyle];
    [alert.get() setMessageText:platformText(sheet.title)];
    [alert.get() setInformativeText:platformText(sheet.message)];
    [alert.get() addButtonWithTitle:platformText(sheet.defaultButton)];
    [[alert.get() addButtonWithTitle:platformText(sheet.alternateButton)] setKeyEquivalent:@"\x1b"];
    const std::weak_ptr<const void> target = delegate.weakReference();
    const auto tell = [target, didEnd = std::move(didEnd)](std::int32_t returnCode) {
        if (!target.expired()) didEnd(returnCode);
    };
    const Retained<KelvoAlertSheet> shown([[KelvoAlertSheet alloc] initWithAlert:alert.get()
                                                                          window:window_.get()
                                                                          didEnd:tell]);
    // Some systems run a sheet in a loop of its own before they return, so it is begun when the caller has returned.
    [shown.get() performSelector:@selector(show) withObject:nil afterDelay:0.0];
}

void CocoaApplication::endSheetInKeyWindow() {
    NSWindow* const key = [NSApp keyWindow];
    if (key && key == [NSApp modalWindow]) [NSApp endSheet:key returnCode:kSheetWasEnded];
}

} // namespace kelvo
