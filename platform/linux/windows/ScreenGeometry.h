// SPDX-License-Identifier: MIT
#pragma once

#include <QRect>
#include <optional>

#include "platform/Window.h"

namespace tarvik::linuxdesktop {

// Positions on the screens. Rectangles and points of Qt are in Qt's coordinates. Main thread only.

/// `frame` in points, with y upwards from the lower left corner of the main screen.
platform::Rect toPoints(const QRect& frame);

/// The upper left corner of a frame of `size` whose lower left corner is at `origin`.
QPoint topLeftOf(platform::Point origin, QSize size);

/// The main screen without panels; empty without a screen.
std::optional<QRect> mainScreenArea();

/// The screen at `position`, without panels; the main screen where there is none at `position`.
QRect screenAreaAt(QPoint position);

/// The upper left corner of a menu of `size` that opens from `anchor`. The menu is below the anchor
/// or, where `area` has no room there, above it, and lies in `area` as a whole.
QPoint menuPosition(const QRect& anchor, QSize size, const QRect& area);

/// `frame`, moved as little as possible so that it lies in `area`.
QRect movedInto(const QRect& area, QRect frame);

/// `frame` with another size. The result keeps the distance to the nearest edges of `area`; a frame
/// in the middle of `area` stays in the middle.
QRect resized(const QRect& frame, QSize size, const QRect& area);

}  // namespace tarvik::linuxdesktop
