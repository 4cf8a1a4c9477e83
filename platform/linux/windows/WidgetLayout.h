#pragma once

#include <QWidget>

#include "platform/Views.h"

namespace tarvik::linuxdesktop {

/// Gives `widget` what `layout` asks for. A place for text never becomes narrower than its text,
/// whatever the width that was asked for: `neededWidth`, in pixels.
void applyLayout(QWidget& widget, const platform::ViewLayout& layout, int neededWidth = 0);

/// The widget that a view of this user interface is. Its layout and window show it; it belongs to
/// whoever holds the view.
QWidget& widgetOf(platform::View& view);

}  // namespace tarvik::linuxdesktop
