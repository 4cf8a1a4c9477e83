#pragma once

#include <memory>
#include <vector>

#import "platform/macos/windows/CocoaView.h"

namespace tarvik::macdesktop {

/// A row or column as an NSStackView. A column gives the whole width to a view that stretches; what
/// is left of its height stays empty: below the views, or around them where they stand in the
/// middle. Main thread only.
class CocoaStack final : public CocoaView, public platform::View {
  public:
    explicit CocoaStack(const platform::StackDescription& description);

  private:
    std::vector<std::shared_ptr<platform::View>> views_;
};

}  // namespace tarvik::macdesktop
