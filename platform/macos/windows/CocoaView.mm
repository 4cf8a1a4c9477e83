// SPDX-License-Identifier: MIT

#import "platform/macos/windows/CocoaView.h"

#include "platform/macos/Conversions.h"

namespace tarvik::macdesktop {

namespace {

void applyLayout(NSView* view, const platform::ViewLayout& layout) {
    NSMutableArray<NSLayoutConstraint*>* constraints = [NSMutableArray array];
    if (layout.width) {
        [constraints addObject:[view.widthAnchor constraintEqualToConstant:*layout.width]];
    }
    if (layout.minimumWidth) {
        [constraints addObject:[view.widthAnchor
                                   constraintGreaterThanOrEqualToConstant:*layout.minimumWidth]];
    }
    if (layout.height) {
        [constraints addObject:[view.heightAnchor constraintEqualToConstant:*layout.height]];
    }
    [NSLayoutConstraint activateConstraints:constraints];
    [view setContentHuggingPriority:contentHugging(layout)
                     forOrientation:NSLayoutConstraintOrientationHorizontal];
    if (layout.horizontalCompressionResistance) {
        [view setContentCompressionResistancePriority:*layout.horizontalCompressionResistance
                                       forOrientation:NSLayoutConstraintOrientationHorizontal];
    }
}

}  // namespace

CocoaView::CocoaView(NSView* view, const platform::ViewLayout& layout)
    : CocoaView(view, takesSpareWidth(layout)) {
    applyLayout(view, layout);
}

CocoaView::CocoaView(NSView* view, bool isStretchable)
    : view_(view), isStretchable_(isStretchable) {
    [view setTranslatesAutoresizingMaskIntoConstraints:NO];
}

CocoaView& cocoaViewOf(platform::View& view) {
    return dynamic_cast<CocoaView&>(view);
}

}  // namespace tarvik::macdesktop
