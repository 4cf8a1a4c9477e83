// SPDX-License-Identifier: MIT

#import "platform/macos/windows/CocoaMenu.h"

#include <utility>

#import "platform/macos/Strings.h"
#import "platform/macos/windows/ActionTarget.h"

@interface TarvikMenuDelegate : NSObject <NSMenuDelegate>
- (void)setHandler:(std::function<void()>)handler;
@end

@implementation TarvikMenuDelegate {
    std::function<void()> _handler;
}

- (void)setHandler:(std::function<void()>)handler {
    _handler = std::move(handler);
}

- (void)menuNeedsUpdate:(NSMenu*)menu {
    // A copy, because the handler may set another one.
    if (const std::function<void()> handler = _handler) {
        handler();
    }
}

@end

namespace tarvik::macdesktop {

namespace {

bool endsApplication(const platform::MenuItem& item) {
    return item.actionName == platform::terminateActionName;
}

// An item without a target sends its action to the application.
SEL selectorFor(const platform::MenuItem& item) {
    return endsApplication(item) ? @selector(terminate:) : actionSelector(item.actionName);
}

}  // namespace

CocoaMenu::CocoaMenu()
    : menu_([[NSMenu alloc] init]),
      delegate_([[TarvikMenuDelegate alloc] init]),
      targets_([NSMutableArray array]) {
    [menu_ setAutoenablesItems:NO];
    [menu_ setDelegate:delegate_];
}

// May be called by an action of the old items: a target lives until its call returns.
void CocoaMenu::setItems(std::vector<platform::MenuItem> items) {
    [menu_ removeAllItems];
    [targets_ removeAllObjects];
    for (platform::MenuItem& item : items) {
        if (item.isSeparator) {
            [menu_ addItem:[NSMenuItem separatorItem]];
            continue;
        }
        NSMenuItem* added =
            [[NSMenuItem alloc] initWithTitle:nsString(item.title)
                                       action:item.action ? selectorFor(item) : nullptr
                                keyEquivalent:nsString(item.keyEquivalent)];
        [added setKeyEquivalentModifierMask:static_cast<NSEventModifierFlags>(item.modifierMask)];
        [added setEnabled:item.isEnabled];
        if (item.action && !endsApplication(item)) {
            NSObject* target = makeActionTarget(std::move(item.action));
            [targets_ addObject:target];
            [added setTarget:target];
        }
        [menu_ addItem:added];
    }
}

void CocoaMenu::setNeedsUpdateHandler(std::function<void()> handler) {
    [delegate_ setHandler:std::move(handler)];
}

}  // namespace tarvik::macdesktop
