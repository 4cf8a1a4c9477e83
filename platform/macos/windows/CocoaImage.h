#pragma once

#import <AppKit/AppKit.h>

#include <memory>

#include "platform/Appearance.h"

namespace tarvik::macdesktop {

/// A picture as an NSImage, shared with whatever shows it. Main thread only.
class CocoaImage final : public platform::Image {
  public:
    explicit CocoaImage(NSImage* image) : image_(image) {}

    void setTemplate(bool isTemplate) override;

    NSImage* nsImage() const { return image_; }

  private:
    NSImage* image_;
};

/// The picture, or empty when the system had none to give.
std::shared_ptr<platform::Image> imageOrNone(NSImage* image);
/// nil for an empty one.
NSImage* nsImageOf(const std::shared_ptr<platform::Image>& image);

}  // namespace tarvik::macdesktop
