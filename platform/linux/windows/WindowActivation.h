#pragma once

class QWidget;

namespace tarvik::linuxdesktop {

/// Raises `window`, which is shown already, above the windows of other applications and asks for
/// the keyboard, as if the user had chosen it in a task list: at the time of the UserAction that is
/// being carried out, or now. Main thread; does not wait.
void bringToFront(QWidget& window);

}  // namespace tarvik::linuxdesktop
