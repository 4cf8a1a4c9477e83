// SPDX-License-Identifier: MIT

#import "platform/macos/windows/ActionTarget.h"

#include <utility>

@interface TarvikActionTarget : NSObject
- (instancetype)initWithAction:(std::function<void()>)action;
- (void)performAction:(id)sender;
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

@end

namespace tarvik::macdesktop {

NSObject* makeActionTarget(std::function<void()> action) {
    return [[TarvikActionTarget alloc] initWithAction:std::move(action)];
}

SEL actionSelector() {
    return @selector(performAction:);
}

}  // namespace tarvik::macdesktop
