// SPDX-License-Identifier: MIT
#pragma once

#import "platform/macos/windows/CocoaView.h"

namespace tarvik::macdesktop {

/// A line across the window as an NSBox. Main thread only.
class CocoaSeparator final : public CocoaView, public platform::View {
  public:
    CocoaSeparator();
};

}  // namespace tarvik::macdesktop
