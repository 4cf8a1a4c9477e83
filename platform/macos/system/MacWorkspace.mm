// SPDX-License-Identifier: MIT

#import "platform/macos/system/MacWorkspace.h"

#import <AppKit/AppKit.h>

#include <utility>

#import "platform/macos/Strings.h"

@interface TarvikWakeObserver : NSObject
- (instancetype)initWithHandler:(std::function<void()>)handler;
- (void)handleSystemWake:(NSNotification*)notification;
@end

@implementation TarvikWakeObserver {
    std::function<void()> _handler;
}

- (instancetype)initWithHandler:(std::function<void()>)handler {
    if ((self = [super init])) {
        _handler = std::move(handler);
    }
    return self;
}

- (void)handleSystemWake:(NSNotification*)notification {
    _handler();
}

@end

namespace tarvik::macdesktop {

std::shared_ptr<platform::RunningApplication> MacWorkspace::frontmostApplication() {
    NSRunningApplication* application = NSWorkspace.sharedWorkspace.frontmostApplication;
    if (application == nil) {
        return nullptr;
    }
    return std::make_shared<platform::RunningApplication>(application.processIdentifier);
}

// The notification centre holds its observers weakly. The deleter of the handle holds this one.
void MacWorkspace::observeDidWake(std::function<void()> handler) {
    TarvikWakeObserver* observer = [[TarvikWakeObserver alloc] initWithHandler:std::move(handler)];
    NSNotificationCenter* center = NSWorkspace.sharedWorkspace.notificationCenter;
    [center addObserver:observer
               selector:@selector(handleSystemWake:)
                   name:NSWorkspaceDidWakeNotification
                 object:nil];
    wakeObservers_.emplace_back(nullptr,
                                [center, observer](void*) { [center removeObserver:observer]; });
}

bool MacWorkspace::openUrl(const std::string& url) {
    NSURL* link = [NSURL URLWithString:nsString(url)];
    if (link != nil && [NSWorkspace.sharedWorkspace openURL:link]) {
        return true;
    }
    log_.write("TarvikDictate: cannot open " + url + ": " +
               (link != nil ? "nothing here opens such a link" : "it is no link"));
    return false;
}

void MacWorkspace::activateFileViewerSelecting(const std::string& path) {
    [NSWorkspace.sharedWorkspace
        activateFileViewerSelectingURLs:@[ [NSURL fileURLWithPath:nsString(path)] ]];
}

}  // namespace tarvik::macdesktop
