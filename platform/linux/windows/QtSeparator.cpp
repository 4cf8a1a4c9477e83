// SPDX-License-Identifier: MIT

#include "platform/linux/windows/QtSeparator.h"

#include <QPainter>
#include <algorithm>

#include "platform/linux/windows/Scaling.h"

namespace tarvik::linuxdesktop {

QtSeparator::QtSeparator() {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFixedHeight(std::max(1, pixels(1)));
}

void QtSeparator::paintEvent(QPaintEvent*) {
    constexpr float faint = 0.2F;
    QColor color = palette().color(QPalette::WindowText);
    color.setAlphaF(faint);
    QPainter(this).fillRect(rect(), color);
}

}  // namespace tarvik::linuxdesktop
