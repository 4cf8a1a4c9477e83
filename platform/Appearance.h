#pragma once

#include <variant>

namespace tarvik::platform {

/// Colours that the desktop's theme decides, each legible on its light and its dark windows.
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

/// The desktop's own font at this size.
struct Font {
    /// In points.
    double size = 13;
    FontWeight weight = FontWeight::regular;

    bool operator==(const Font&) const = default;
};

/// A picture that can stand in the status item or in an image view. Main thread only.
class Image {
  public:
    virtual ~Image() = default;

    /// A template image takes the colour of the panel it stands in; another keeps its own.
    virtual void setTemplate(bool isTemplate) = 0;
};

}  // namespace tarvik::platform
