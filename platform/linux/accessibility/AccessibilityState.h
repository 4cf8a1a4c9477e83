// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>

#include "base/AtomicReference.h"
#include "platform/linux/accessibility/FocusSnapshot.h"

namespace tarvik::linuxdesktop {

/// The state of the desktop's accessibility. The worker writes, the main thread reads. Any thread.
struct AccessibilityState {
    AtomicReference<const FocusSnapshot> focus;
    /// Whether programs report their focus.
    std::atomic<bool> isConnected = false;
    /// Whether accessibility is switched on in the desktop.
    std::atomic<bool> isEnabled = false;
};

}  // namespace tarvik::linuxdesktop
