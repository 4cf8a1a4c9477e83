// SPDX-License-Identifier: MIT

#import "platform/macos/system/CocoaApplication.h"

#include <cstdlib>
#include <utility>

using tarvik::platform::ApplicationDelegate;
using tarvik::platform::LaunchNotification;

@interface TarvikApplicationDelegate : NSObject <NSApplicationDelegate>
- (void)replace:(std::shared_ptr<ApplicationDelegate>)delegate;
- (void)promptForApiKey;
@end

@implementation TarvikApplicationDelegate {
    std::shared_ptr<ApplicationDelegate> _delegate;
}

// Swapped before the old delegate is destroyed: its destruction may ask for the new delegate.
- (void)replace:(std::shared_ptr<ApplicationDelegate>)delegate {
    _delegate.swap(delegate);
}

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
    LaunchNotification launch;
    const id isDefault = notification.userInfo[NSApplicationLaunchIsDefaultLaunchKey];
    if ([isDefault isKindOfClass:[NSNumber class]]) {
        launch.isDefaultLaunch = [isDefault boolValue];
    }
    if (const std::shared_ptr<ApplicationDelegate> delegate = _delegate) {
        delegate->applicationDidFinishLaunching(launch);
    }
}

- (BOOL)applicationShouldHandleReopen:(NSApplication*)sender
                    hasVisibleWindows:(BOOL)hasVisibleWindows {
    const std::shared_ptr<ApplicationDelegate> delegate = _delegate;
    return !delegate || delegate->applicationShouldHandleReopen(hasVisibleWindows);
}

// The system looks for the receiver of an action without a target in the delegate, too.
- (void)promptForApiKey {
    if (const std::shared_ptr<ApplicationDelegate> delegate = _delegate) {
        delegate->applicationShouldPerform(tarvik::platform::ApplicationAction::keyPrompt);
    }
}

// Without this answer the system logs a complaint at each start.
- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)application {
    return YES;
}

@end

namespace tarvik::macdesktop {

CocoaApplication::CocoaApplication()
    : application_(NSApplication.sharedApplication),
      delegate_([[TarvikApplicationDelegate alloc] init]) {
    [application_ setDelegate:delegate_];
}

CocoaApplication::~CocoaApplication() {
    [application_ setDelegate:nil];
}

void CocoaApplication::setDelegate(std::shared_ptr<platform::ApplicationDelegate> delegate) {
    [delegate_ replace:std::move(delegate)];
}

void CocoaApplication::setActivationPolicy(platform::ActivationPolicy policy) {
    [application_ setActivationPolicy:static_cast<NSApplicationActivationPolicy>(policy)];
}

int CocoaApplication::run() {
    [application_ run];
    return EXIT_SUCCESS;
}

void CocoaApplication::terminate() {
    [application_ terminate:nil];
}

void CocoaApplication::activate() {
    if (@available(macOS 14.0, *)) {
        [application_ activate];
    } else {
        activateIgnoringOtherApps();
    }
}

void CocoaApplication::activateIgnoringOtherApps() {
    [application_ activateIgnoringOtherApps:YES];
}

}  // namespace tarvik::macdesktop
