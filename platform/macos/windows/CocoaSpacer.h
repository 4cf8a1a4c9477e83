// SPDX-License-Identifier: MIT
#pragma once

#import "platform/macos/windows/CocoaView.h"

namespace tarvik::macdesktop {

/// An empty NSView that only takes space. Main thread only.
class CocoaSpacer final : public CocoaView, public platform::View {
  public:
    explicit CocoaSpacer(const platform::ViewLayout& layout);
};

}  // namespace tarvik::macdesktop
