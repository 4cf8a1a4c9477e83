// SPDX-License-Identifier: MIT

#import "platform/macos/windows/CocoaWindow.h"

#import <QuartzCore/QuartzCore.h>
#import <dispatch/dispatch.h>

#include <utility>

#import "platform/macos/Strings.h"
#import "platform/macos/windows/CocoaAppearance.h"
#import "platform/macos/windows/CocoaView.h"

@interface TarvikWindowDelegate : NSObject <NSWindowDelegate>
- (instancetype)initWithHandler:(std::function<void()>)handler;
@end

@implementation TarvikWindowDelegate {
    std::function<void()> _handler;
}

- (instancetype)initWithHandler:(std::function<void()>)handler {
    if ((self = [super init])) {
        _handler = std::move(handler);
    }
    return self;
}

- (void)windowWillClose:(NSNotification*)notification {
    if (_handler) {
        _handler();
    }
}

@end

namespace tarvik::macdesktop {

namespace {

NSWindow* makeNSWindow(const platform::WindowDescription& description) {
    const platform::Size& size = description.contentSize;
    NSWindow* window =
        [[NSWindow alloc] initWithContentRect:NSMakeRect(0, 0, size.width, size.height)
                                    styleMask:static_cast<NSWindowStyleMask>(description.styleMask)
                                      backing:NSBackingStoreBuffered
                                        defer:NO];
    // ARC owns the window.
    [window setReleasedWhenClosed:NO];
    if (description.minimumSize) {
        [window
            setMinSize:NSMakeSize(description.minimumSize->width, description.minimumSize->height)];
    }
    [window setTitle:nsString(description.title)];
    [window setTitlebarAppearsTransparent:description.titlebarAppearsTransparent];
    [window
        setTitleVisibility:description.isTitleHidden ? NSWindowTitleHidden : NSWindowTitleVisible];
    if (description.backgroundColor) {
        [window setBackgroundColor:nsColor(*description.backgroundColor)];
    }
    [window setLevel:static_cast<NSWindowLevel>(description.level)];
    [window setHidesOnDeactivate:description.hidesOnDeactivate];
    [window setCollectionBehavior:static_cast<NSWindowCollectionBehavior>(
                                      description.collectionBehavior)];
    return window;
}

// A view that fills the window and grows with the window. The root is pinned to its four sides.
NSView* makeContentView(NSWindow* window, NSView* root,
                        std::optional<platform::RgbColor> background) {
    NSView* content = [[NSView alloc] initWithFrame:window.contentLayoutRect];
    [content setAutoresizingMask:NSViewWidthSizable | NSViewHeightSizable];
    if (background) {
        [content setWantsLayer:YES];
        [content.layer setBackgroundColor:nsColor(*background).CGColor];
    }
    [content addSubview:root];
    [NSLayoutConstraint activateConstraints:@[
        [root.leadingAnchor constraintEqualToAnchor:content.leadingAnchor],
        [root.trailingAnchor constraintEqualToAnchor:content.trailingAnchor],
        [root.topAnchor constraintEqualToAnchor:content.topAnchor],
        [root.bottomAnchor constraintEqualToAnchor:content.bottomAnchor]
    ]];
    return content;
}

}  // namespace

CocoaWindow::CocoaWindow(const platform::WindowDescription& description)
    : window_(makeNSWindow(description)),
      controller_([[NSWindowController alloc] initWithWindow:window_]),
      delegate_([[TarvikWindowDelegate alloc] initWithHandler:description.willClose]) {
    [window_ setDelegate:delegate_];
    [window_ center];
}

CocoaWindow::~CocoaWindow() {
    // The owner of the close handler is gone by now.
    [window_ setDelegate:nil];
    [window_ close];
}

void CocoaWindow::setContent(std::shared_ptr<platform::View> root,
                             std::optional<platform::RgbColor> background) {
    [window_ setContentView:makeContentView(window_, cocoaViewOf(*root).nsView(), background)];
    // Destroyed later, because an action of the old content may be the caller.
    const std::shared_ptr<platform::View> retired = std::exchange(root_, std::move(root));
    dispatch_async(dispatch_get_main_queue(), ^{
      static_cast<void>(retired);
    });
}

platform::Rect CocoaWindow::frame() const {
    return rectFrom(window_.frame);
}

void CocoaWindow::setFrameOrigin(platform::Point origin) {
    [window_ setFrameOrigin:NSMakePoint(origin.x, origin.y)];
}

void CocoaWindow::center() {
    [window_ center];
}

void CocoaWindow::show() {
    const bool appears = !window_.visible;
    [controller_ showWindow:nil];
    if (appears) {
        focusNoControl();
    }
}

void CocoaWindow::orderFrontRegardless() {
    const bool appears = !window_.visible;
    [window_ orderFrontRegardless];
    if (appears) {
        focusNoControl();
    }
}

// AppKit gives the focus to the first control of a window that appears. What the user types on
// would then change the key or press a button. Tab leads from the window to the first control.
void CocoaWindow::focusNoControl() {
    [window_ makeFirstResponder:nil];
}

bool CocoaWindow::isVisible() const {
    return window_.visible;
}

void CocoaWindow::close() {
    [window_ close];
}

}  // namespace tarvik::macdesktop
