#pragma once

#import "platform/macos/system/CocoaView.h"

namespace tarvik::macdesktop {

/// A picture as an NSImageView. Main thread only.
class CocoaImageView final : public CocoaView, public platform::View {
  public:
    explicit CocoaImageView(const platform::ImageViewDescription& description);
};

/// A line across the window, as an NSBox.
class CocoaSeparator final : public CocoaView, public platform::View {
  public:
    CocoaSeparator();
};

/// A place that stays empty.
class CocoaSpacer final : public CocoaView, public platform::View {
  public:
    explicit CocoaSpacer(const platform::ViewLayout& layout);
};

}  // namespace tarvik::macdesktop
