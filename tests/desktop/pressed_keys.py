# SPDX-License-Identifier: MIT

"""Keys of a Wayland desktop, by the kernel's numbers."""

ALT, SHIFT, SPACE = 56, 42, 57
ESCAPE, W, RETURN, CTRL, A, B, F9 = 1, 17, 28, 29, 30, 48, 67


class PressedKeys:
    """A keyboard that knows which of its keys are down. A derived class has _send(key, is_pressed)."""

    def __init__(self):
        self._down = []

    def press(self, *keys):
        for key in keys:
            self._down.append(key)
            self._send(key, True)

    def release(self, *keys):
        for key in keys:
            self._down.remove(key)
            self._send(key, False)

    def release_all(self):
        self.release(*reversed(self._down))

    def tap(self, *keys):
        self.press(*keys)
        self.release(*reversed(keys))

    def hold(self):
        self.press(ALT, SPACE)

    def end_hold(self):
        self.release(SPACE, ALT)

    def toggle(self):
        self.tap(ALT, SHIFT, SPACE)

    def close(self):
        """Unplugs the keyboard, if that is not the desktop's business."""
