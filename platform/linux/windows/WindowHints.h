#pragma once

class QWidget;

namespace tarvik::linuxdesktop {

/// Makes `window`, whenever it is shown from now on until it is hidden, part of every virtual
/// desktop, where the desktop lets a program say so. Main thread; does not wait.
void showOnAllDesktops(QWidget& window);

/// Asks for a dark title bar, whatever the desktop's theme is, where the desktop lets a program
/// ask. Main thread; does not wait.
void preferDarkFrame(QWidget& window);

}  // namespace tarvik::linuxdesktop
