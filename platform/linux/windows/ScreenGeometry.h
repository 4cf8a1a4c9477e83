#pragma once

#include <QRect>
#include <optional>

#include "platform/Window.h"

namespace tarvik::linuxdesktop {

/// A rectangle of the main screen, in points with y upwards from that screen's lower left corner.
/// `frame` is in Qt's coordinates. Main thread only.
platform::Rect toPoints(const QRect& frame);

/// Where the upper left corner of a frame of `size` is in Qt's coordinates when its lower left
/// corner is at `origin`.
QPoint topLeftOf(platform::Point origin, QSize size);

/// The main screen without panels, in Qt's coordinates; nothing without a screen.
std::optional<QRect> mainScreenArea();

/// The screen that `place` is on, without panels; the main one where `place` is on none.
QRect screenAreaAt(QPoint place);

/// Where the upper left corner of a menu of `size` belongs that comes out of `anchor`: below it or,
/// where `area` has no room there, above it, and with the whole menu in `area`.
QPoint menuPlace(const QRect& anchor, QSize size, const QRect& area);

/// `frame`, moved as little as it takes to lie in `area`.
QRect within(const QRect& area, QRect frame);

/// `placed` was where a frame of another size was meant to be. The place for one of `size` that
/// keeps the distance to the edges of `area` to which `placed` is nearest, or its middle where
/// `placed` was in the middle.
QRect replaced(const QRect& placed, QSize size, const QRect& area);

}  // namespace tarvik::linuxdesktop
