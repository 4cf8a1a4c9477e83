// SPDX-License-Identifier: MIT

#include "platform/linux/windows/QtAppearance.h"

#include <QGuiApplication>
#include <cstdlib>
#include <utility>
#include <variant>

namespace tarvik::linuxdesktop {

namespace {

QFont::Weight qtWeight(platform::FontWeight weight) {
    switch (weight) {
        case platform::FontWeight::regular:
            return QFont::Normal;
        case platform::FontWeight::medium:
            return QFont::Medium;
        case platform::FontWeight::semibold:
            return QFont::DemiBold;
        case platform::FontWeight::bold:
            return QFont::Bold;
    }
    return QFont::Normal;
}

QColor withAlpha(QColor color, float alpha) {
    color.setAlphaF(alpha);
    return color;
}

bool isDark(const QColor& color) {
    return color.lightnessF() < 0.5F;
}

QColor mixed(const QColor& color, const QColor& other, float share) {
    const auto mix = [share](float a, float b) { return a + (b - a) * share; };
    return QColor::fromRgbF(mix(color.redF(), other.redF()), mix(color.greenF(), other.greenF()),
                            mix(color.blueF(), other.blueF()));
}

// Text of this opacity still has a contrast of 4.5 on the usual windows.
constexpr float secondaryAlpha = 0.78F;
constexpr float tertiaryAlpha = 0.66F;

QColor qtColor(platform::SystemColor color, const QPalette& palette) {
    const bool isOnDark = isDark(palette.color(QPalette::Window));
    const QColor text = palette.color(QPalette::WindowText);
    switch (color) {
        case platform::SystemColor::label:
            return text;
        case platform::SystemColor::secondaryLabel:
            return withAlpha(text, secondaryAlpha);
        case platform::SystemColor::tertiaryLabel:
            return withAlpha(text, tertiaryAlpha);
        case platform::SystemColor::green:
            return isOnDark ? QColor(74, 201, 110) : QColor(17, 109, 45);
        case platform::SystemColor::red:
            return isOnDark ? QColor(255, 128, 118) : QColor(190, 24, 24);
    }
    return text;
}

}  // namespace

QFont qtFont(const platform::Font& font) {
    // Qt's points are 1/72 of the inch that the desktop assumes.
    constexpr double qtPointsPerPoint = 72.0 / 96.0;
    QFont made = QGuiApplication::font();
    made.setPointSizeF(font.size * qtPointsPerPoint);
    made.setWeight(qtWeight(font.weight));
    return made;
}

QColor qtColor(const platform::RgbColor& color) {
    return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                            static_cast<float>(color.blue), static_cast<float>(color.alpha));
}

QColor qtColor(const platform::Color& color, const QPalette& palette) {
    if (const auto* system = std::get_if<platform::SystemColor>(&color)) {
        return qtColor(*system, palette);
    }
    return qtColor(std::get<platform::RgbColor>(color));
}

QPalette withLegibleDisabledText(QPalette base) {
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        base.setColor(QPalette::Disabled, role,
                      withAlpha(base.color(QPalette::Active, role), tertiaryAlpha));
    }
    return base;
}

bool hasHighContrast() {
    constexpr int nearlyBlack = 5;
    constexpr int nearlyWhite = 250;
    constexpr int minDifference = 200;
    const QPalette palette = QGuiApplication::palette();
    const int window = qGray(palette.color(QPalette::Window).rgb());
    const int text = qGray(palette.color(QPalette::WindowText).rgb());
    return (window <= nearlyBlack || window >= nearlyWhite) &&
           std::abs(window - text) >= minDifference;
}

QPalette paletteOn(const QColor& background, const QPalette& base) {
    const QColor text = isDark(background) ? Qt::white : Qt::black;
    constexpr float buttonShare = 0.16F;
    QPalette made(mixed(background, text, buttonShare), background);
    // Selection and focus keep the desktop's accent.
    for (const auto role : {QPalette::Highlight, QPalette::HighlightedText}) {
        made.setColor(role, base.color(role));
    }
    return made;
}

}  // namespace tarvik::linuxdesktop
