// SPDX-License-Identifier: MIT
#pragma once

#import <AppKit/AppKit.h>

#include <memory>

#include "platform/Appearance.h"

namespace tarvik::macdesktop {

/// An image as an NSImage, shared with the views that show it. Main thread only.
class CocoaImage final : public platform::Image {
  public:
    explicit CocoaImage(NSImage* image) : image_(image) {}

    void setTemplate(bool isTemplate) override;

    NSImage* nsImage() const { return image_; }

  private:
    NSImage* image_;
};

/// `image`; empty for nil.
std::shared_ptr<platform::Image> imageOrNone(NSImage* image);
/// The NSImage of `image`; nil for an empty `image`.
NSImage* nsImageOf(const std::shared_ptr<platform::Image>& image);

}  // namespace tarvik::macdesktop
