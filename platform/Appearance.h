// SPDX-License-Identifier: MIT
#pragma once

#include <variant>

namespace tarvik::platform {

/// Colours of the desktop's theme. Each is legible on light and on dark windows.
enum class SystemColor { label, secondaryLabel, tertiaryLabel, green, red };

/// A fixed colour in sRGB; each component from 0 to 1.
struct RgbColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    bool operator==(const RgbColor&) const = default;
};

inline constexpr RgbColor black{0, 0, 0};
inline constexpr RgbColor white{1, 1, 1};

using Color = std::variant<SystemColor, RgbColor>;

enum class FontWeight { regular, medium, semibold, bold };

/// The desktop's default font in one size and weight.
struct Font {
    /// In points.
    double size = 13;
    FontWeight weight = FontWeight::regular;

    bool operator==(const Font&) const = default;
};

/// A picture for the status item or for an image view. Main thread only.
class Image {
  public:
    virtual ~Image() = default;

    /// A template image takes the colour of the panel around it. Any other image keeps its colours.
    virtual void setTemplate(bool isTemplate) = 0;
};

}  // namespace tarvik::platform
