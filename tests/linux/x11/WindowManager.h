// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/RealTimeQueue.h"

namespace tarvik::tests {

/// Waits until the window manager has followed every change so far, as one of the keyboard map,
/// after which it grabs its keys again. False when it takes more than ten seconds.
bool waitForWindowManager(RealTimeQueue& mainQueue);

}  // namespace tarvik::tests
