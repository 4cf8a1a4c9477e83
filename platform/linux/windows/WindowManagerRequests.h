// SPDX-License-Identifier: MIT
#pragma once

class QWidget;

namespace tarvik::linuxdesktop {

// What a window asks of the window manager. Main thread only; nothing waits for the window manager.
// Without an X server only bringToFront has an effect.

/// Shows `window` on every virtual desktop, from the next time that it is shown until it is hidden.
/// Has no effect on a window that is shown.
void showOnAllDesktops(QWidget& window);

/// Makes `window`, which is hidden, appear next without taking the keyboard. Waits for a reply of
/// the X server.
void clearUserTime(QWidget& window);

/// Puts `window`, which is shown, into the layer above the windows of all programs, or takes it out
/// of that layer.
void keepAbove(QWidget& window, bool isAbove);

/// Asks for a dark title bar, whatever the desktop's theme is.
void preferDarkFrame(QWidget& window);

/// Raises `window`, which is shown, above the windows of other applications. During a UserAction
/// the window also asks for the keyboard, as if the user had chosen the window in a task list.
/// Otherwise the keyboard stays where it is.
void bringToFront(QWidget& window);

}  // namespace tarvik::linuxdesktop
