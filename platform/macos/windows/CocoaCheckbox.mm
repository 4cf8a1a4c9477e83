// SPDX-License-Identifier: MIT

#import "platform/macos/windows/CocoaCheckbox.h"

#import "platform/macos/Strings.h"
#import "platform/macos/windows/ActionTarget.h"

namespace tarvik::macdesktop {

CocoaCheckbox::CocoaCheckbox(const platform::CheckboxDescription& description)
    : CocoaCheckbox([NSButton checkboxWithTitle:nsString(description.title) target:nil action:nil],
                    description) {}

CocoaCheckbox::CocoaCheckbox(NSButton* button, const platform::CheckboxDescription& description)
    : CocoaView(button, platform::ViewLayout{}), button_(button) {
    setOn(description.isOn);
    if (description.action) {
        target_ = makeActionTarget([this, action = description.action] { action(*this); });
        [button setTarget:target_];
        [button setAction:actionSelector(description.actionName)];
    }
}

bool CocoaCheckbox::isOn() const {
    return button_.state == NSControlStateValueOn;
}

void CocoaCheckbox::setOn(bool isOn) {
    [button_ setState:isOn ? NSControlStateValueOn : NSControlStateValueOff];
}

}  // namespace tarvik::macdesktop
