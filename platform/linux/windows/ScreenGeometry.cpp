#include "platform/linux/windows/ScreenGeometry.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>
#include <cstdlib>

#include "platform/linux/windows/Scaling.h"

namespace tarvik::linuxdesktop {

namespace {

// The main screen; an empty one where there is none.
QRect mainScreen() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen != nullptr ? screen->geometry() : QRect();
}

// Along one axis: `start` of a length, for the length that it turned out to be.
int replacedStart(int start, int length, int newLength, int areaStart, int areaLength) {
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

QRect screenAreaAt(QPoint place) {
    const QScreen* screen = QGuiApplication::screenAt(place);
    return screen != nullptr ? screen->availableGeometry() : mainScreenArea().value_or(QRect());
}

QPoint menuPlace(const QRect& anchor, QSize size, const QRect& area) {
    const bool fitsBelow = anchor.bottom() + size.height() <= area.bottom();
    const int top = fitsBelow ? anchor.bottom() + 1 : anchor.top() - size.height();
    return within(area, {{anchor.left(), top}, size}).topLeft();
}

QRect within(const QRect& area, QRect frame) {
    const QPoint last =
        area.topLeft() + QPoint(area.width() - frame.width(), area.height() - frame.height());
    // One that is too large keeps its upper left corner visible.
    frame.moveTopLeft({std::max(area.x(), std::min(frame.x(), last.x())),
                       std::max(area.y(), std::min(frame.y(), last.y()))});
    return frame;
}

QRect replaced(const QRect& placed, QSize size, const QRect& area) {
    return {{replacedStart(placed.x(), placed.width(), size.width(), area.x(), area.width()),
             replacedStart(placed.y(), placed.height(), size.height(), area.y(), area.height())},
            size};
}

}  // namespace tarvik::linuxdesktop
