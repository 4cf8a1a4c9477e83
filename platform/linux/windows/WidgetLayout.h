// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

#include "platform/Views.h"

namespace tarvik::linuxdesktop {

/// Gives `widget` the sizes and priorities of `layout`. `neededWidth`, in pixels, is the width that
/// the widget's text needs: a smaller `layout.width` becomes `neededWidth`. Main thread only.
void applyLayout(QWidget& widget, const platform::ViewLayout& layout, int neededWidth = 0);

/// The widget that `view` is; every view of this user interface is one. Layouts and windows show
/// the widget, and the holder of the view owns it.
QWidget& widgetOf(platform::View& view);

}  // namespace tarvik::linuxdesktop
