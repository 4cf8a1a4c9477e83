#pragma once

class QWidget;

namespace tarvik::linuxdesktop {

/// Makes `window`, whenever it is shown from now on until it is hidden, part of every virtual
/// desktop, where the desktop lets a program say so. Main thread; does not wait.
void showOnAllDesktops(QWidget& window);

}  // namespace tarvik::linuxdesktop
