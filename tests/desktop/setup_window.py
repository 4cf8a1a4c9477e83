"""The setup window, as somebody who looks at it and works with it has it."""

import subprocess

from accessible import ScreenReader
from desktop import wait_for
from windows import wait_for_window

RESTART = "Restart Tarvik Dictate"
GRANTED, NOT_GRANTED = "✓ Granted", "✗ Not granted"
SAVED, NOT_SET = "✓ Saved", "✗ Not set"


class SetupWindow:
    """Returns from its construction when the window is there, in front."""

    def __init__(self, desktop, keyboard, deadline=15.0):
        self._desktop = desktop
        self._keyboard = keyboard
        self.window = wait_for_window(desktop, deadline)
        self._reader = ScreenReader(desktop)
        self.content = self._reader.window_with(RESTART)

    def close(self):
        self._reader.close()

    @property
    def labels(self):
        return [part.name for part in self.content.descendants if part.role == "label"]

    @property
    def key_field(self):
        return next(part for part in self.content.controls if part.role == "password text")

    @property
    def key_status(self):
        """What stands below the field of the key."""
        return next(text for text in self.labels if text in (SAVED, NOT_SET))

    @property
    def checkbox(self):
        return next(part for part in self.content.controls if part.role == "check box")

    def row(self, name):
        """The parts of the row with that name: the name, its status, and its button."""
        parts = list(self.content.descendants)
        index = next(i for i, part in enumerate(parts) if part.name == name and part.role == "label")
        return parts[index:index + 3]

    def wait_for_row(self, name, status, deadline=3.0):
        wait_for(lambda: self.row(name)[1].name == status, f"“{status}” at {name}", deadline)

    def wait_for_key_status(self, status):
        wait_for(lambda: self.key_status == status, f"“{status}” below the key", 3.0)

    def button(self, title):
        return self.content.find(title, "push button")

    def click(self, part):
        """Clicks in the middle of a part with the mouse."""
        click_at(self._desktop, part.extents)

    def enter_key(self, text):
        """Types over what is in the field of the key."""
        self.click(self.key_field)
        wait_for(lambda: self.key_field.has("focused"), "the focus in the field")
        self._keyboard.press("ctrl+a")
        if text:
            self._keyboard.type(text)
        else:
            self._keyboard.press("Delete")


def click_at(desktop, extents):
    """Clicks in the middle of a place on the screen."""
    left, top, width, height = extents
    desktop.run(["xdotool", "mousemove", str(left + width // 2), str(top + height // 2),
                 "click", "1"])


def pixels_per_unit(desktop, window, content):
    """How many pixels the screen has to one of a screen reader's: toolkits differ in whether they
    tell places in points."""
    shape = desktop.run(["xdotool", "getwindowgeometry", "--shell", window.number])
    width = int(next(line for line in shape.splitlines() if line.startswith("WIDTH="))[6:])
    return width / content.extents[2]


def shows(desktop, extents, status):
    """Whether a place on the screen has the colour of the status; for when nobody can read it."""
    def is_drawn(color):
        red, green, blue = color
        strong, weak = (green, red) if status in (GRANTED, SAVED) else (red, green)
        return strong > weak + 60 and strong > blue + 40
    return any(map(is_drawn, colors_in(desktop, extents)))


def colors_in(desktop, extents):
    """The colours of a place on the screen, as triples."""
    left, top, width, height = extents
    pixels = subprocess.run(
        ["import", "-window", "root", "-crop", f"{width}x{height}+{left}+{top}", "-depth", "8",
         "rgb:-"], env=desktop.environment, capture_output=True, check=True, timeout=30).stdout
    return set(zip(pixels[0::3], pixels[1::3], pixels[2::3]))
