// SPDX-License-Identifier: MIT

#import "platform/macos/windows/CocoaStack.h"

#include <algorithm>

namespace tarvik::macdesktop {

namespace {

bool hasStretchableView(const platform::StackDescription& description) {
    return std::any_of(description.views.begin(), description.views.end(),
                       [](const auto& view) { return cocoaViewOf(*view).isStretchable(); });
}

void fillRow(NSStackView* stack, const platform::StackDescription& description) {
    [stack setDistribution:NSStackViewDistributionFill];
    for (const std::shared_ptr<platform::View>& view : description.views) {
        [stack addArrangedSubview:cocoaViewOf(*view).nsView()];
    }
}

void fillColumn(NSStackView* stack, const platform::StackDescription& description) {
    const NSStackViewGravity gravity = description.alignment == platform::StackAlignment::centerX
                                           ? NSStackViewGravityCenter
                                           : NSStackViewGravityTop;
    const CGFloat insets = description.edgeInsets.left + description.edgeInsets.right;
    for (const std::shared_ptr<platform::View>& view : description.views) {
        const CocoaView& shown = cocoaViewOf(*view);
        [stack addView:shown.nsView() inGravity:gravity];
        if (shown.isStretchable()) {
            NSLayoutConstraint* wide =
                [shown.nsView().widthAnchor constraintEqualToAnchor:stack.widthAnchor
                                                         multiplier:1
                                                           constant:-insets];
            [NSLayoutConstraint activateConstraints:@[ wide ]];
        }
    }
}

NSStackView* makeStackView(const platform::StackDescription& description) {
    NSStackView* stack = [[NSStackView alloc] initWithFrame:NSZeroRect];
    [stack setOrientation:static_cast<NSUserInterfaceLayoutOrientation>(description.orientation)];
    [stack setAlignment:static_cast<NSLayoutAttribute>(description.alignment)];
    [stack setSpacing:description.spacing];
    const platform::EdgeInsets& insets = description.edgeInsets;
    [stack setEdgeInsets:{insets.top, insets.left, insets.bottom, insets.right}];
    if (description.orientation == platform::Orientation::horizontal) {
        fillRow(stack, description);
    } else {
        fillColumn(stack, description);
    }
    return stack;
}

}  // namespace

CocoaStack::CocoaStack(const platform::StackDescription& description)
    : CocoaView(makeStackView(description), hasStretchableView(description)),
      views_(description.views) {}

}  // namespace tarvik::macdesktop
