#pragma once

#include <cstdint>

class QWidget;

namespace tarvik::linuxdesktop {

/// Raises `window`, which is shown already, above the windows of other applications and asks for
/// the keyboard, as if the user had chosen it in a task list. `time` is the X server's time of what
/// the user did to that end, 0 for now. Main thread; does not wait.
void bringToFront(QWidget& window, std::uint32_t time = 0);

}  // namespace tarvik::linuxdesktop
