// SPDX-License-Identifier: MIT
#pragma once

#import <AppKit/AppKit.h>

#include "platform/Appearance.h"
#include "platform/Window.h"

// Conversions of colours, fonts and rectangles to and from AppKit. Main thread only.
namespace tarvik::macdesktop {

NSColor* nsColor(const platform::Color& color);
NSFont* nsFont(const platform::Font& font);

/// The same rectangle; AppKit's y axis grows upwards, too.
platform::Rect rectFrom(NSRect rect);

}  // namespace tarvik::macdesktop
