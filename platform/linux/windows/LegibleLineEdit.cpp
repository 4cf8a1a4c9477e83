// SPDX-License-Identifier: MIT

#include "platform/linux/windows/LegibleLineEdit.h"

#include <QEvent>
#include <QPainter>
#include <limits>

#include "platform/linux/windows/QtAppearance.h"

namespace tarvik::linuxdesktop {

namespace {

// Weaker than entered text, and still a contrast of 4.5 on the usual fields.
constexpr float placeholderAlpha = 0.6F;

}  // namespace

LegibleLineEdit::LegibleLineEdit(QWidget* parent) : QLineEdit(parent) {
    setMaxLength(std::numeric_limits<int>::max());
    colorPlaceholder();
}

void LegibleLineEdit::changeEvent(QEvent* event) {
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        colorPlaceholder();
    }
}

void LegibleLineEdit::paintEvent(QPaintEvent* event) {
    QLineEdit::paintEvent(event);
    // The style shows the focus by a border of its own.
    if (hasHighContrast() && !hasFocus()) {
        QPainter painter(this);
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

void LegibleLineEdit::colorPlaceholder() {
    QColor color = palette().color(QPalette::Text);
    color.setAlphaF(placeholderAlpha);
    // Setting the palette leads here again.
    if (palette().color(QPalette::PlaceholderText) != color) {
        QPalette changed;
        changed.setColor(QPalette::PlaceholderText, color);
        setPalette(changed);
    }
}

}  // namespace tarvik::linuxdesktop
