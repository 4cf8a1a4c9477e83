#import "platform/macos/system/CocoaImageView.h"

#import "platform/macos/system/CocoaImage.h"

namespace tarvik::macdesktop {

namespace {

NSImageView* makeImageView(const platform::ImageViewDescription& description) {
    NSImageView* view = [[NSImageView alloc] initWithFrame:NSZeroRect];
    [view setImage:nsImageOf(description.image)];
    [view setImageScaling:static_cast<NSImageScaling>(description.scaling)];
    return view;
}

NSBox* makeSeparatorBox() {
    NSBox* box = [[NSBox alloc] initWithFrame:NSZeroRect];
    [box setBoxType:NSBoxSeparator];
    return box;
}

}  // namespace

CocoaImageView::CocoaImageView(const platform::ImageViewDescription& description)
    : CocoaView(makeImageView(description), description.layout) {}

CocoaSeparator::CocoaSeparator() : CocoaView(makeSeparatorBox(), true) {}

CocoaSpacer::CocoaSpacer(const platform::ViewLayout& layout)
    : CocoaView([[NSView alloc] initWithFrame:NSZeroRect], layout) {}

}  // namespace tarvik::macdesktop
