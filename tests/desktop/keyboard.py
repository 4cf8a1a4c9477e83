# SPDX-License-Identifier: MIT

"""The keyboard of the private desktop. Keys are pressed through XTest, like those of a real one."""

import threading

from desktop import wait_for

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


class Typist:
    """A user who types one line after the other, wherever the keyboard is. A context manager that
    types from its beginning to its end. Each line has blanks, which press buttons, and ends with
    Return."""

    def __init__(self, keyboard):
        self._keyboard = keyboard
        self._lines = []
        self._is_done = threading.Event()
        self._thread = threading.Thread(target=self._type, daemon=True)

    def __enter__(self):
        self._thread.start()
        self.type_on()
        return self

    def __exit__(self, *_):
        self._is_done.set()
        self._thread.join()

    def _type(self):
        while not self._is_done.is_set():
            line = f"{len(self._lines)} git status"
            self._keyboard.type(line)
            self._keyboard.press("Return")
            self._lines.append(line + "\n")

    def type_on(self, lines=3):
        """Waits until the user has typed this many more lines."""
        enough = len(self._lines) + lines
        wait_for(lambda: len(self._lines) >= enough, "typed lines")

    @property
    def text(self):
        """Everything that was typed."""
        return "".join(self._lines)
