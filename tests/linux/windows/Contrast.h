// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <algorithm>
#include <cmath>

namespace tarvik::tests {

/// The relative luminance of a colour, from 0 to 1.
inline double luminance(const QColor& color) {
    const auto linear = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

/// The contrast ratio of a text to the opaque background that it is drawn on, from 1 to 21. Small
/// text needs 4.5, a symbol 3.
inline double contrast(const QColor& text, const QColor& background) {
    const auto over = [&](float a, float b) { return a * text.alphaF() + b * (1 - text.alphaF()); };
    const QColor seen = QColor::fromRgbF(over(text.redF(), background.redF()),
                                         over(text.greenF(), background.greenF()),
                                         over(text.blueF(), background.blueF()));
    const auto [darker, lighter] = std::minmax({luminance(seen), luminance(background)});
    return (lighter + 0.05) / (darker + 0.05);
}

}  // namespace tarvik::tests
