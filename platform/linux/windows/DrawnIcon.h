// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QIcon>
#include <QList>
#include <QPainter>
#include <QSize>
#include <functional>

namespace tarvik::linuxdesktop {

/// An icon that is drawn anew for each size that is asked for, and keeps no pixels. `drawing` draws
/// into the rectangle from (0, 0) to `extent`; the icon keeps that shape. `sizes` are those that
/// the icon offers to a panel or a window list. Main thread only.
QIcon drawnIcon(QSize extent, QList<QSize> sizes, std::function<void(QPainter&)> drawing);

/// The same with a drawing in SVG, in its own size.
QIcon svgIcon(const QByteArray& drawing, QList<QSize> sizes);

}  // namespace tarvik::linuxdesktop
