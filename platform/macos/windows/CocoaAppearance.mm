// SPDX-License-Identifier: MIT

#import "platform/macos/windows/CocoaAppearance.h"

namespace tarvik::macdesktop {

namespace {

NSColor* nsSystemColor(platform::SystemColor color) {
    switch (color) {
        case platform::SystemColor::label:
            break;
        case platform::SystemColor::secondaryLabel:
            return NSColor.secondaryLabelColor;
        case platform::SystemColor::tertiaryLabel:
            return NSColor.tertiaryLabelColor;
        case platform::SystemColor::green:
            return NSColor.systemGreenColor;
        case platform::SystemColor::red:
            return NSColor.systemRedColor;
    }
    return NSColor.labelColor;
}

}  // namespace

NSColor* nsColor(const platform::Color& color) {
    if (const auto* system = std::get_if<platform::SystemColor>(&color)) {
        return nsSystemColor(*system);
    }
    const auto& fixed = std::get<platform::RgbColor>(color);
    return [NSColor colorWithSRGBRed:fixed.red green:fixed.green blue:fixed.blue alpha:fixed.alpha];
}

NSFont* nsFont(const platform::Font& font) {
    switch (font.weight) {
        case platform::FontWeight::regular:
            break;
        case platform::FontWeight::medium:
            return [NSFont systemFontOfSize:font.size weight:NSFontWeightMedium];
        case platform::FontWeight::semibold:
            return [NSFont systemFontOfSize:font.size weight:NSFontWeightSemibold];
        case platform::FontWeight::bold:
            return [NSFont boldSystemFontOfSize:font.size];
    }
    return [NSFont systemFontOfSize:font.size];
}

platform::Rect rectFrom(NSRect rect) {
    return {{rect.origin.x, rect.origin.y}, {rect.size.width, rect.size.height}};
}

}  // namespace tarvik::macdesktop
