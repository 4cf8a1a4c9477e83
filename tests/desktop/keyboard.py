# SPDX-License-Identifier: MIT

"""The keyboard of the private desktop. Keys are pressed through XTest, like those of a real one."""


# A human does not press two keys within a millisecond. When a new keyboard appears, the window
# manager grabs its combinations again. The application needs this interval to follow with its own.
BETWEEN_KEYS = ("sleep", "0.1")


class Keyboard:
    def __init__(self, desktop):
        self._desktop = desktop

    def _xdotool(self, *arguments):
        self._desktop.run(["xdotool", *arguments])

    def hold(self):
        """Presses Alt+Space and keeps it down."""
        self._xdotool("keydown", "Alt_L", *BETWEEN_KEYS, "keydown", "space")

    def release(self, first="space"):
        """Releases Alt+Space, the key `first` before the other."""
        second = "Alt_L" if first == "space" else "space"
        self._xdotool("keyup", first, "keyup", second)

    def hold_again(self):
        """Releases Space and presses it again while Alt is held."""
        self._xdotool("keyup", "space", *BETWEEN_KEYS, "keydown", "space")

    def toggle(self, seconds=0):
        """Presses Alt+Shift+Space and releases it after `seconds`."""
        self._xdotool("keydown", "Alt_L", "keydown", "Shift_L", *BETWEEN_KEYS, "keydown", "space",
                      "sleep", str(seconds), "keyup", "space", "keyup", "Shift_L", "keyup", "Alt_L")

    def press(self, keys):
        """Taps a key or a combination, such as "ctrl+a"."""
        self._xdotool("key", keys)

    def type(self, text):
        self._xdotool("type", text)
