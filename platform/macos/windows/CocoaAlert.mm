// SPDX-License-Identifier: MIT

#import "platform/macos/windows/CocoaAlert.h"

#import <AppKit/AppKit.h>
#import <dispatch/dispatch.h>

#include "platform/macos/Conversions.h"
#import "platform/macos/Strings.h"

namespace tarvik::macdesktop {

namespace {

NSTextField* makeField(const platform::Alert& alert) {
    NSTextField* field =
        [[NSTextField alloc] initWithFrame:NSMakeRect(0, 0, alert.fieldWidth, alert.fieldHeight)];
    [field setStringValue:nsString(alert.fieldText)];
    [field setPlaceholderString:nsString(alert.fieldPlaceholder)];
    [field setEditable:YES];
    [field setSelectable:YES];
    [field setAllowsEditingTextAttributes:NO];
    [field setUsesSingleLineMode:YES];
    return field;
}

}  // namespace

platform::AlertAnswer runAlert(const platform::Alert& alert) {
    if (NSApp.modalWindow != nil) {
        return {};
    }
    NSAlert* dialog = [[NSAlert alloc] init];
    [dialog setMessageText:nsString(alert.messageText)];
    [dialog setInformativeText:nsString(alert.informativeText)];
    [dialog setAlertStyle:NSAlertStyleInformational];
    NSTextField* field = makeField(alert);
    [dialog setAccessoryView:field];
    for (const std::string& button : alert.buttons) {
        [dialog addButtonWithTitle:nsString(button)];
    }
    [dialog.window setInitialFirstResponder:field];
    // For "Quit" and "Restart" of the menu while the alert is open.
    [dialog.window setPreventsApplicationTerminationWhenModal:NO];
    // Run by the alert's loop, when the field is in a window that has the keyboard.
    dispatch_async(dispatch_get_main_queue(), ^{
      [dialog.window makeFirstResponder:field];
      [field.currentEditor selectAll:nil];
    });
    const NSModalResponse response = [dialog runModal];
    return {alertCode(response, alert.buttons.size()), utf8(field.stringValue)};
}

}  // namespace tarvik::macdesktop
