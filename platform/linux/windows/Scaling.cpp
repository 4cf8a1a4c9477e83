// SPDX-License-Identifier: MIT

#include "platform/linux/windows/Scaling.h"

#include <QGuiApplication>
#include <QScreen>

namespace tarvik::linuxdesktop {

double pixelsPerPoint() {
    constexpr double usualDotsPerInch = 96;
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen != nullptr ? screen->logicalDotsPerInch() / usualDotsPerInch : 1;
}

int pixels(double points) {
    return qRound(points * pixelsPerPoint());
}

}  // namespace tarvik::linuxdesktop
