// SPDX-License-Identifier: MIT
#pragma once

#import "platform/macos/windows/CocoaView.h"

namespace tarvik::macdesktop {

/// A push button as an NSButton, with the target of its action. Main thread only.
class CocoaButton final : public CocoaView, public platform::Button {
  public:
    explicit CocoaButton(const platform::ButtonDescription& description);

    std::string title() const override;
    void setAttributedTitle(const platform::AttributedTitle& title) override;
    void setBezelColor(platform::Color color) override;

  private:
    CocoaButton(NSButton* button, const platform::ButtonDescription& description);

    NSButton* button_;
    NSObject* target_;
};

}  // namespace tarvik::macdesktop
