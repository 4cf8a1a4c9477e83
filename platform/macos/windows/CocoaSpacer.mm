// SPDX-License-Identifier: MIT

#import "platform/macos/windows/CocoaSpacer.h"

namespace tarvik::macdesktop {

CocoaSpacer::CocoaSpacer(const platform::ViewLayout& layout)
    : CocoaView([[NSView alloc] initWithFrame:NSZeroRect], layout) {}

}  // namespace tarvik::macdesktop
