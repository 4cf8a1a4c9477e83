// SPDX-License-Identifier: MIT

#import "platform/macos/windows/CocoaButton.h"

#import "platform/macos/Strings.h"
#import "platform/macos/windows/ActionTarget.h"
#import "platform/macos/windows/CocoaAppearance.h"

namespace tarvik::macdesktop {

CocoaButton::CocoaButton(const platform::ButtonDescription& description)
    : CocoaButton([NSButton buttonWithTitle:nsString(description.title) target:nil action:nil],
                  description) {}

CocoaButton::CocoaButton(NSButton* button, const platform::ButtonDescription& description)
    : CocoaView(button, description.layout),
      button_(button),
      target_(makeActionTarget(description.action)) {
    if (!description.accessibilityLabel.empty()) {
        [button setAccessibilityLabel:nsString(description.accessibilityLabel)];
    }
    [button setTarget:target_];
    [button setAction:actionSelector(description.actionName)];
    [button setBezelStyle:static_cast<NSBezelStyle>(description.bezelStyle)];
    [button setControlSize:static_cast<NSControlSize>(description.controlSize)];
    [button setBordered:description.isBordered];
    if (description.contentTintColor) {
        [button setContentTintColor:nsColor(*description.contentTintColor)];
    }
    if (description.font) {
        [button setFont:nsFont(*description.font)];
    }
}

std::string CocoaButton::title() const {
    return utf8(button_.title);
}

void CocoaButton::setAttributedTitle(const platform::AttributedTitle& title) {
    NSDictionary* attributes = @{
        NSForegroundColorAttributeName : nsColor(title.foregroundColor),
        NSFontAttributeName : nsFont(title.font)
    };
    [button_ setAttributedTitle:[[NSAttributedString alloc] initWithString:nsString(title.text)
                                                                attributes:attributes]];
}

void CocoaButton::setBezelColor(platform::Color color) {
    [button_ setBezelColor:nsColor(color)];
}

}  // namespace tarvik::macdesktop
