// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

#include "platform/Appearance.h"

namespace tarvik::linuxdesktop {

// Fonts and colours of the user interface in Qt's types. Main thread only.

/// The desktop's font at the size and weight of `font`.
QFont qtFont(const platform::Font& font);

QColor qtColor(const platform::RgbColor& color);

/// The colour for text on a window with `palette`. A system colour depends on whether the window is
/// light or dark: ask again when the palette changes.
QColor qtColor(const platform::Color& color, const QPalette& palette);

/// `base` with disabled text that is legible and weaker than other text.
QPalette withLegibleDisabledText(QPalette base);

/// Whether the desktop's theme is one of high contrast: black or white windows, and text that
/// stands out from them as far as can be. Controls need a border of their own there, because styles
/// derive the border from the colour of the window.
bool hasHighContrast();

/// The palette of a window with its own `background`: text and controls are legible on the
/// background, and the accent is that of `base`.
QPalette paletteOn(const QColor& background, const QPalette& base);

}  // namespace tarvik::linuxdesktop
