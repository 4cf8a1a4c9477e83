// SPDX-License-Identifier: MIT

#import "platform/macos/windows/ActionTarget.h"

#include <utility>

#import "platform/macos/Strings.h"

@interface TarvikActionTarget : NSObject
- (instancetype)initWithAction:(std::function<void()>)action;
// For actions without a name.
- (void)performAction:(id)sender;
// The names of the actions in the core.
- (void)openSetupWindow;
- (void)restartApp;
- (void)saveApiKey;
- (void)grantMic;
- (void)grantAccess;
- (void)toggleLoginItem:(id)sender;
- (void)visitTapped;
- (void)laterTapped;
- (void)neverShowTapped;
@end

@implementation TarvikActionTarget {
    std::function<void()> _action;
}

- (instancetype)initWithAction:(std::function<void()>)action {
    if ((self = [super init])) {
        _action = std::move(action);
    }
    return self;
}

- (void)performAction:(id)sender {
    // A copy, because the action may drop this object.
    if (const std::function<void()> action = _action) {
        action();
    }
}

- (void)openSetupWindow {
    [self performAction:nil];
}

- (void)restartApp {
    [self performAction:nil];
}

- (void)saveApiKey {
    [self performAction:nil];
}

- (void)grantMic {
    [self performAction:nil];
}

- (void)grantAccess {
    [self performAction:nil];
}

- (void)toggleLoginItem:(id)sender {
    [self performAction:sender];
}

- (void)visitTapped {
    [self performAction:nil];
}

- (void)laterTapped {
    [self performAction:nil];
}

- (void)neverShowTapped {
    [self performAction:nil];
}

@end

namespace tarvik::macdesktop {

NSObject* makeActionTarget(std::function<void()> action) {
    return [[TarvikActionTarget alloc] initWithAction:std::move(action)];
}

SEL actionSelector(const std::string& actionName) {
    SEL selector = NSSelectorFromString(nsString(actionName));
    return [TarvikActionTarget instancesRespondToSelector:selector] ? selector
                                                                    : @selector(performAction:);
}

}  // namespace tarvik::macdesktop
