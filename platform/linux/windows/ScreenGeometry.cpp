// SPDX-License-Identifier: MIT

#include "platform/linux/windows/ScreenGeometry.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>
#include <cstdlib>

#include "platform/linux/windows/Scaling.h"

namespace tarvik::linuxdesktop {

namespace {

// The main screen with panels; an empty rectangle without a screen.
QRect mainScreen() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen != nullptr ? screen->geometry() : QRect();
}

// The new start along one axis when `length` becomes `newLength`.
int resizedStart(int start, int length, int newLength, int areaStart, int areaLength) {
    const int before = start - areaStart;
    const int after = areaStart + areaLength - (start + length);
    // A window in the middle may be off by half a pixel.
    if (std::abs(before - after) <= 1) {
        return areaStart + (areaLength - newLength) / 2;
    }
    return before < after ? start : start + length - newLength;
}

}  // namespace

platform::Rect toPoints(const QRect& frame) {
    const QRect screen = mainScreen();
    const double scale = pixelsPerPoint();
    return {{(frame.x() - screen.x()) / scale,
             (screen.y() + screen.height() - frame.y() - frame.height()) / scale},
            {frame.width() / scale, frame.height() / scale}};
}

QPoint topLeftOf(platform::Point origin, QSize size) {
    const QRect screen = mainScreen();
    return {screen.x() + pixels(origin.x),
            screen.y() + screen.height() - pixels(origin.y) - size.height()};
}

std::optional<QRect> mainScreenArea() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen != nullptr ? std::optional(screen->availableGeometry()) : std::nullopt;
}

QRect screenAreaAt(QPoint position) {
    const QScreen* screen = QGuiApplication::screenAt(position);
    return screen != nullptr ? screen->availableGeometry() : mainScreenArea().value_or(QRect());
}

QPoint menuPosition(const QRect& anchor, QSize size, const QRect& area) {
    const bool fitsBelow = anchor.bottom() + size.height() <= area.bottom();
    const int top = fitsBelow ? anchor.bottom() + 1 : anchor.top() - size.height();
    return movedInto(area, {{anchor.left(), top}, size}).topLeft();
}

QRect movedInto(const QRect& area, QRect frame) {
    const QPoint last =
        area.topLeft() + QPoint(area.width() - frame.width(), area.height() - frame.height());
    // A frame that is too large keeps its upper left corner visible.
    frame.moveTopLeft({std::max(area.x(), std::min(frame.x(), last.x())),
                       std::max(area.y(), std::min(frame.y(), last.y()))});
    return frame;
}

QRect resized(const QRect& frame, QSize size, const QRect& area) {
    return {{resizedStart(frame.x(), frame.width(), size.width(), area.x(), area.width()),
             resizedStart(frame.y(), frame.height(), size.height(), area.y(), area.height())},
            size};
}

}  // namespace tarvik::linuxdesktop
