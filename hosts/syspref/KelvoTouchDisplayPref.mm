#include "hosts/syspref/KelvoTouchDisplayPref.h"

#include "cocoa/CocoaApplication.h"
#include "cocoa/CocoaBundle.h"
#include "cocoa/CocoaClock.h"
#include "cocoa/CocoaNibs.h"
#include "cocoa/CocoaRunLoop.h"
#include "cocoa/Text.h"
#include "hosts/PaneLife.h"
#include "hosts/syspref/ControlPlaces.h"
#include "linux/BundleDirectory.h"
#include "linux/BusMessagePorts.h"
#include "linux/Journal.h"
#include "linux/Launcher.h"
#include "linux/PlistCoder.h"
#include "linux/PosixFileManager.h"
#include "linux/SystemClock.h"
#include "platform/Guarded.h"
#include "platform/Platform.h"

#import <AppKit/AppKit.h>

namespace kelvo {

namespace {

constexpr char kHostName[] = "SystemPreferences";

/// The product's own bundle, which lies beside the one that was loaded, wherever links to that lie.
std::string panePath(NSBundle* bundle) {
    NSString* const place = [[bundle bundlePath] stringByResolvingSymlinksInPath];
    NSString* const path = [place stringByAppendingPathComponent:[bundle objectForInfoDictionaryKey:@"KelvoPane"]];
    return textOf([path stringByStandardizingPath]);
}

} // namespace

/// The pane, with everything it gets from the world.
class SystemPreferencesPane {
public:
    explicit SystemPreferencesPane(NSBundle* bundle)
        : bundle_(bundle), nibs_(bundle), directory_(BundleDirectory::open(panePath(bundle))) {}

    NSView* load() { return nibs_.viewFor(life_.load()); }
    void select(NSWindow* window) {
        application_.setWindow(window);
        life_.select();
    }
    void unselect() { life_.unselect(); }

private:
    Journal log_{kHostName};
    PosixFileManager fileManager_;
    PlistCoder propertyLists_;
    CocoaRunLoop runLoop_;
    BusMessagePorts messagePorts_{runLoop_};
    CocoaClock clock_;
    SystemClock systemVersion_;
    Launcher workspace_{fileManager_};
    CocoaApplication application_;
    CocoaBundle bundle_;
    CocoaNibs nibs_;
    std::unique_ptr<BundleDirectory> directory_;
    platform::Platform platform_{.log = log_,
                                 .fileManager = fileManager_,
                                 .propertyLists = propertyLists_,
                                 .bundles = bundle_,
                                 .messagePorts = messagePorts_,
                                 .runLoop = runLoop_,
                                 .clock = clock_,
                                 .systemVersion = systemVersion_,
                                 .workspace = &workspace_,
                                 .application = &application_,
                                 .nibs = &nibs_};
    platform::PlatformInUse inUse_{platform_};
    std::unique_ptr<platform::NSPreferencePane> pane_{directory_->loadPane(platform_)};
    PaneLife life_{*pane_, kHostName};
};

} // namespace kelvo

@implementation KelvoTouchDisplayPref

- (NSView*)loadMainView {
    // Some hosts ask for the view at every selection.
    if ([self mainView]) return [self mainView];
    NSView* view = nil;
    try {
        pane_ = std::make_unique<kelvo::SystemPreferencesPane>([self bundle]);
        view = pane_->load();
    } catch (const std::exception& error) {
        NSLog(@"%@", kelvo::platformText(error.what()));
        return nil;
    }
    [self setMainView:view];
    // Some hosts quit without unselecting.
    [[NSNotificationCenter defaultCenter] addObserver:self
                                             selector:@selector(applicationWillTerminate:)
                                                 name:NSApplicationWillTerminateNotification
                                               object:nil];
    kelvo::logControlPlaces();
    return view;
}

- (void)didSelect {
    [super didSelect];
    // Only now does the view stand in the window.
    if (pane_) pane_->select([[self mainView] window]);
}

- (void)willUnselect {
    if (pane_) pane_->unselect();
    [super willUnselect];
}

- (void)applicationWillTerminate:(NSNotification*)notification {
    (void)notification;
    if (pane_) pane_->unselect();
}

- (void)dealloc {
    [[NSNotificationCenter defaultCenter] removeObserver:self];
    [super dealloc];
}

@end
