// SPDX-License-Identifier: MIT

#import "platform/macos/windows/CocoaSeparator.h"

namespace tarvik::macdesktop {

namespace {

NSBox* makeSeparatorBox() {
    NSBox* box = [[NSBox alloc] initWithFrame:NSZeroRect];
    [box setBoxType:NSBoxSeparator];
    return box;
}

}  // namespace

CocoaSeparator::CocoaSeparator() : CocoaView(makeSeparatorBox(), true) {}

}  // namespace tarvik::macdesktop
