#pragma once

#include <atomic>

#include "base/AtomicReference.h"
#include "platform/linux/accessibility/FocusSnapshot.h"

namespace tarvik::linuxdesktop {

/// What is known of the desktop: the worker writes it, the main thread reads it. Any thread.
struct AccessibilityState {
    AtomicReference<const FocusSnapshot> focus;
    /// Programs report their focus.
    std::atomic<bool> isConnected = false;
    /// The desktop's switch for accessibility.
    std::atomic<bool> isEnabled = false;
};

}  // namespace tarvik::linuxdesktop
