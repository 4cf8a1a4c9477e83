// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>
#include <functional>

namespace tarvik::linuxdesktop {

/// Lets the application end in order when the X server or the Wayland compositor is gone. Qt
/// reports the loss in a message, and ends the process right after the message. Made and destroyed
/// on the main thread, after the QApplication was made; one at a time.
class DisplayLoss {
  public:
    /// Calls `onLoss` in the place of that message, on the main thread. Qt's loop does not run any
    /// more until `onLoss` returns. When `onLoss` returns, the process ends with the status 1, and
    /// nothing is destroyed.
    explicit DisplayLoss(std::function<void()> onLoss);
    ~DisplayLoss();
    DisplayLoss(const DisplayLoss&) = delete;
    DisplayLoss& operator=(const DisplayLoss&) = delete;
};

}  // namespace tarvik::linuxdesktop
