// SPDX-License-Identifier: MIT
#pragma once

#import "platform/macos/windows/CocoaView.h"

namespace tarvik::macdesktop {

/// A label as an NSTextField. Main thread only.
class CocoaLabel final : public CocoaView, public platform::Label {
  public:
    explicit CocoaLabel(const platform::LabelDescription& description);

    void setText(const std::string& text) override;
    void setTextColor(platform::Color color) override;

  private:
    CocoaLabel(NSTextField* field, const platform::LabelDescription& description);

    NSTextField* field_;
};

}  // namespace tarvik::macdesktop
