#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

#include "platform/Appearance.h"

namespace tarvik::linuxdesktop {

/// The desktop's font at the size and weight.
QFont qtFont(const platform::Font& font);

QColor qtColor(const platform::RgbColor& color);

/// The colour for text on the window that `palette` describes. A system colour depends on whether
/// that window is light or dark and has to be asked for again when the palette changes.
QColor qtColor(const platform::Color& color, const QPalette& palette);

/// `base` with disabled text that is legible, and weaker than other text.
QPalette withLegibleDisabledText(QPalette base);

/// `base` for a window with a background of its own: text and controls that are legible on it.
QPalette paletteOn(const QColor& background, const QPalette& base);

}  // namespace tarvik::linuxdesktop
