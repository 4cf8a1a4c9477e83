#pragma once

#include "tests/conformance/X11MainQueue.h"

namespace tarvik::conformance {

/// Waits until the window manager has followed every change so far, as one of the keyboard map,
/// after which it grabs its keys again. False when it takes more than ten seconds.
bool waitForWindowManager(X11MainQueue& mainQueue);

}  // namespace tarvik::conformance
