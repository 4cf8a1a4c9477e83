// SPDX-License-Identifier: MIT
#pragma once

#import "platform/macos/windows/CocoaView.h"

namespace tarvik::macdesktop {

/// A text field as an NSTextField or NSSecureTextField. Main thread only.
class CocoaTextField final : public CocoaView, public platform::TextField {
  public:
    explicit CocoaTextField(const platform::TextFieldDescription& description);

    std::string text() const override;

  private:
    CocoaTextField(NSTextField* field, const platform::TextFieldDescription& description);

    NSTextField* field_;
};

}  // namespace tarvik::macdesktop
