// SPDX-License-Identifier: MIT

#import "platform/macos/windows/CocoaImageView.h"

#import "platform/macos/windows/CocoaImage.h"

namespace tarvik::macdesktop {

namespace {

NSImageView* makeImageView(const platform::ImageViewDescription& description) {
    NSImageView* view = [[NSImageView alloc] initWithFrame:NSZeroRect];
    [view setImage:nsImageOf(description.image)];
    [view setImageScaling:static_cast<NSImageScaling>(description.scaling)];
    return view;
}

}  // namespace

CocoaImageView::CocoaImageView(const platform::ImageViewDescription& description)
    : CocoaView(makeImageView(description), description.layout) {}

}  // namespace tarvik::macdesktop
