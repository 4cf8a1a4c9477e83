#pragma once

namespace tarvik::linuxdesktop {

/// Device-independent pixels to a point of the user interface, which grows with the size at which
/// the desktop wants its text. Main thread only.
double pixelsPerPoint();

/// A length in whole device-independent pixels.
int pixels(double points);

}  // namespace tarvik::linuxdesktop
