// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <vector>

#import "platform/macos/windows/CocoaView.h"

namespace tarvik::macdesktop {

/// A row or column as an NSStackView. A stretchable view has the whole width of its column. The
/// spare height of a column stays empty: below the views, or around centred views. Main thread
/// only.
class CocoaStack final : public CocoaView, public platform::View {
  public:
    explicit CocoaStack(const platform::StackDescription& description);

  private:
    std::vector<std::shared_ptr<platform::View>> views_;
};

}  // namespace tarvik::macdesktop
