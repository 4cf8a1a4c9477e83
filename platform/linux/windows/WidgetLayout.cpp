// SPDX-License-Identifier: MIT

#include "platform/linux/windows/WidgetLayout.h"

#include <algorithm>

#include "platform/linux/windows/Scaling.h"

namespace tarvik::linuxdesktop {

namespace {

// A view that hugs its content as weakly as this takes the room that is left.
constexpr platform::LayoutPriority weak = 250;

QSizePolicy::Policy without(QSizePolicy::Policy policy, QSizePolicy::PolicyFlag flag) {
    return static_cast<QSizePolicy::Policy>(policy & ~flag);
}

QSizePolicy::Policy with(QSizePolicy::Policy policy, QSizePolicy::PolicyFlag flag) {
    return static_cast<QSizePolicy::Policy>(policy | flag);
}

}  // namespace

void applyLayout(QWidget& widget, const platform::ViewLayout& layout, int neededWidth) {
    QSizePolicy policy = widget.sizePolicy();
    QSizePolicy::Policy horizontal = policy.horizontalPolicy();
    if (layout.horizontalContentHugging) {
        horizontal = *layout.horizontalContentHugging <= weak ? QSizePolicy::Expanding
                                                              : QSizePolicy::Preferred;
    }
    if (layout.horizontalCompressionResistance) {
        horizontal = *layout.horizontalCompressionResistance <= weak
                         ? with(horizontal, QSizePolicy::ShrinkFlag)
                         : without(horizontal, QSizePolicy::ShrinkFlag);
    }
    if (layout.minimumWidth) {
        widget.setMinimumWidth(pixels(*layout.minimumWidth));
    }
    if (layout.width) {
        widget.setFixedWidth(std::max(pixels(*layout.width), neededWidth));
        horizontal = QSizePolicy::Fixed;
    }
    if (layout.height) {
        widget.setFixedHeight(pixels(*layout.height));
    }
    policy.setHorizontalPolicy(horizontal);
    widget.setSizePolicy(policy);
}

QWidget& widgetOf(platform::View& view) {
    return dynamic_cast<QWidget&>(view);
}

}  // namespace tarvik::linuxdesktop
