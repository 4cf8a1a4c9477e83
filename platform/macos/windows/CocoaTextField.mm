// SPDX-License-Identifier: MIT

#import "platform/macos/windows/CocoaTextField.h"

#import "platform/macos/Strings.h"

namespace tarvik::macdesktop {

CocoaTextField::CocoaTextField(const platform::TextFieldDescription& description)
    : CocoaTextField(description.isSecure ? [[NSSecureTextField alloc] initWithFrame:NSZeroRect]
                                          : [[NSTextField alloc] initWithFrame:NSZeroRect],
                     description) {}

CocoaTextField::CocoaTextField(NSTextField* field,
                               const platform::TextFieldDescription& description)
    : CocoaView(field, description.layout), field_(field) {
    [field setStringValue:nsString(description.text)];
    [field setPlaceholderString:nsString(description.placeholder)];
    [field setAccessibilityLabel:nsString(description.accessibilityLabel)];
    [field setUsesSingleLineMode:YES];
}

std::string CocoaTextField::text() const {
    return utf8(field_.stringValue);
}

}  // namespace tarvik::macdesktop
