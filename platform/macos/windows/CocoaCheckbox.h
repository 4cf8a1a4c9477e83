// SPDX-License-Identifier: MIT
#pragma once

#import "platform/macos/windows/CocoaView.h"

namespace tarvik::macdesktop {

/// A checkbox as an NSButton, with the target of its action. Main thread only.
class CocoaCheckbox final : public CocoaView, public platform::Checkbox {
  public:
    explicit CocoaCheckbox(const platform::CheckboxDescription& description);

    bool isOn() const override;
    void setOn(bool isOn) override;

  private:
    CocoaCheckbox(NSButton* button, const platform::CheckboxDescription& description);

    NSButton* button_;
    NSObject* target_;
};

}  // namespace tarvik::macdesktop
