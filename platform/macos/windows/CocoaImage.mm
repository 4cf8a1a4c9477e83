// SPDX-License-Identifier: MIT

#import "platform/macos/windows/CocoaImage.h"

namespace tarvik::macdesktop {

void CocoaImage::setTemplate(bool isTemplate) {
    [image_ setTemplate:isTemplate];
}

std::shared_ptr<platform::Image> imageOrNone(NSImage* image) {
    return image != nil ? std::make_shared<CocoaImage>(image) : nullptr;
}

NSImage* nsImageOf(const std::shared_ptr<platform::Image>& image) {
    return image ? static_cast<const CocoaImage&>(*image).nsImage() : nil;
}

}  // namespace tarvik::macdesktop
