#pragma once

#include <QColor>
#include <algorithm>
#include <cmath>

namespace tarvik::tests {

/// As the eye weighs a colour, from 0 to 1.
inline double luminance(const QColor& color) {
    const auto linear = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

/// The ratio by which a text stands out from the opaque ground it is drawn on, from 1 to 21. Small
/// text needs 4.5, a symbol 3.
inline double contrast(const QColor& text, const QColor& ground) {
    const auto over = [&](float a, float b) { return a * text.alphaF() + b * (1 - text.alphaF()); };
    const QColor seen =
        QColor::fromRgbF(over(text.redF(), ground.redF()), over(text.greenF(), ground.greenF()),
                         over(text.blueF(), ground.blueF()));
    const auto [darker, lighter] = std::minmax({luminance(seen), luminance(ground)});
    return (lighter + 0.05) / (darker + 0.05);
}

}  // namespace tarvik::tests
