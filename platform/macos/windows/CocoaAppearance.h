#pragma once

#import <AppKit/AppKit.h>

#include "platform/Appearance.h"
#include "platform/Window.h"

// Colours, fonts and places as AppKit has them. Main thread only.
namespace tarvik::macdesktop {

NSColor* nsColor(const platform::Color& color);
NSFont* nsFont(const platform::Font& font);

/// AppKit's y grows upwards as well.
platform::Rect rectFrom(NSRect rect);

}  // namespace tarvik::macdesktop
