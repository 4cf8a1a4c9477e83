"""The keys of the private desktop, pressed through XTest like those of a real keyboard."""


# Nobody presses two keys within the same millisecond. A window manager that is told of a new
# keyboard takes its combinations back; whoever else wants them needs this long to follow.
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
        """Lets Alt+Space go, `first` first."""
        second = "Alt_L" if first == "space" else "space"
        self._xdotool("keyup", first, "keyup", second)

    def hold_again(self):
        """Lets Space go and presses it again, Alt being held."""
        self._xdotool("keyup", "space", *BETWEEN_KEYS, "keydown", "space")

    def toggle(self, seconds=0):
        """Presses Alt+Shift+Space and lets it go after the seconds."""
        self._xdotool("keydown", "Alt_L", "keydown", "Shift_L", *BETWEEN_KEYS, "keydown", "space",
                      "sleep", str(seconds), "keyup", "space", "keyup", "Shift_L", "keyup", "Alt_L")

    def press(self, keys):
        """Taps a key or a combination, such as "ctrl+a"."""
        self._xdotool("key", keys)

    def type(self, text):
        self._xdotool("type", text)
