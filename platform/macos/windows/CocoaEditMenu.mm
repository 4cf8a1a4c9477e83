// SPDX-License-Identifier: MIT

#import "platform/macos/windows/CocoaEditMenu.h"

#import <AppKit/AppKit.h>

#import "platform/macos/Strings.h"

// Actions of the field editor that AppKit does not declare.
@protocol TarvikUndoActions
- (void)undo:(id)sender;
- (void)redo:(id)sender;
@end

namespace tarvik::macdesktop {

namespace {

SEL selectorFor(platform::EditAction action) {
    switch (action) {
        case platform::EditAction::undo:
            return @selector(undo:);
        case platform::EditAction::redo:
            return @selector(redo:);
        case platform::EditAction::cut:
            return @selector(cut:);
        case platform::EditAction::copy:
            return @selector(copy:);
        case platform::EditAction::paste:
            return @selector(paste:);
        case platform::EditAction::selectAll:
            break;
    }
    return @selector(selectAll:);
}

}  // namespace

// Items without a target act on the first responder, which is the field with the keyboard.
void installEditMenu(const std::string& title, const std::vector<platform::EditMenuItem>& items) {
    NSMenu* editMenu = [[NSMenu alloc] initWithTitle:nsString(title)];
    for (const platform::EditMenuItem& item : items) {
        if (item.action) {
            [editMenu addItemWithTitle:nsString(item.title)
                                action:selectorFor(*item.action)
                         keyEquivalent:nsString(item.keyEquivalent)];
        } else {
            [editMenu addItem:[NSMenuItem separatorItem]];
        }
    }
    NSMenuItem* editItem = [[NSMenuItem alloc] init];
    [editItem setSubmenu:editMenu];
    NSMenu* mainMenu = [[NSMenu alloc] init];
    [mainMenu addItem:editItem];
    [NSApplication.sharedApplication setMainMenu:mainMenu];
}

}  // namespace tarvik::macdesktop
