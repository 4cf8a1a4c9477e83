// SPDX-License-Identifier: MIT

#import "platform/macos/windows/CocoaTextField.h"

#import "platform/macos/Strings.h"
#import "platform/macos/windows/ActionTarget.h"

namespace tarvik::macdesktop {

CocoaTextField::CocoaTextField(const platform::TextFieldDescription& description)
    : CocoaTextField(description.isSecure ? [[NSSecureTextField alloc] initWithFrame:NSZeroRect]
                                          : [[NSTextField alloc] initWithFrame:NSZeroRect],
                     description) {}

CocoaTextField::CocoaTextField(NSTextField* field,
                               const platform::TextFieldDescription& description)
    : CocoaView(field, description.layout),
      field_(field),
      target_(makeActionTarget(description.action)) {
    [field setStringValue:nsString(description.text)];
    [field setPlaceholderString:nsString(description.placeholder)];
    [field setAccessibilityLabel:nsString(description.accessibilityLabel)];
    [field setUsesSingleLineMode:YES];
    [field setTarget:target_];
    [field setAction:actionSelector()];
    // Only Return sends the action; leaving the field does not.
    [field.cell setSendsActionOnEndEditing:NO];
}

std::string CocoaTextField::text() const {
    return utf8(field_.stringValue);
}

}  // namespace tarvik::macdesktop
