// SPDX-License-Identifier: MIT
#pragma once

namespace tarvik::linuxdesktop {

// The user interface is described in points. A point grows with the size at which the desktop wants
// its text. Main thread only.

/// The length of a point in device-independent pixels.
double pixelsPerPoint();

/// `points` in whole device-independent pixels.
int pixels(double points);

}  // namespace tarvik::linuxdesktop
