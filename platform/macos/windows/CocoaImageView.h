// SPDX-License-Identifier: MIT
#pragma once

#import "platform/macos/windows/CocoaView.h"

namespace tarvik::macdesktop {

/// An image as an NSImageView. Main thread only.
class CocoaImageView final : public CocoaView, public platform::View {
  public:
    explicit CocoaImageView(const platform::ImageViewDescription& description);
};

}  // namespace tarvik::macdesktop
