# SPDX-License-Identifier: MIT

"""The setup window, as a user sees and operates it."""

import subprocess

from accessible import ScreenReader
from desktop import wait_for
from windows import wait_for_window

RESTART = "Restart Tarvik Dictate"
GRANTED, NOT_GRANTED = "✓ Granted", "✗ Not granted"
SAVED, NOT_SET = "✓ Saved", "✗ Not set"


class SetupWindow:
    """The constructor waits until the window is shown."""

    def __init__(self, desktop, keyboard, timeout=15.0):
        self._desktop = desktop
        self._keyboard = keyboard
        self.window = wait_for_window(desktop, timeout)
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
        """The status below the key field."""
        return next(text for text in self.labels if text in (SAVED, NOT_SET))

    @property
    def checkbox(self):
        return next(part for part in self.content.controls if part.role == "check box")

    def row(self, name):
        """The parts of the row with this name: name, status and button."""
        parts = list(self.content.descendants)
        index = next(i for i, part in enumerate(parts) if part.name == name and part.role == "label")
        return parts[index:index + 3]

    def wait_for_row(self, name, status):
        wait_for(lambda: self.row(name)[1].name == status, f"“{status}” at {name}")

    def wait_for_key_status(self, status):
        wait_for(lambda: self.key_status == status, f"“{status}” below the key")

    def button(self, title):
        return self.content.find(title, "push button")

    def click(self, part):
        """Clicks the middle of a part with the mouse."""
        click_at(self._desktop, part.extents)

    def enter_key(self, text):
        """Replaces the text in the key field by typing."""
        self.click(self.key_field)
        wait_for(lambda: self.key_field.has("focused"), "the focus in the field")
        self._keyboard.press("ctrl+a")
        if text:
            self._keyboard.type(text)
        else:
            self._keyboard.press("Delete")


def click_at(desktop, extents):
    """Clicks the middle of an area of the screen."""
    left, top, width, height = extents
    desktop.run(["xdotool", "mousemove", str(left + width // 2), str(top + height // 2),
                 "click", "1"])


def pixels_per_unit(desktop, window, content):
    """The number of screen pixels per unit of the accessibility interface. Some toolkits report
    extents in points."""
    shape = desktop.run(["xdotool", "getwindowgeometry", "--shell", window.number])
    width = int(next(line for line in shape.splitlines() if line.startswith("WIDTH="))[6:])
    return width / content.extents[2]


def has_status_color(desktop, extents, status):
    """Whether an area of the screen has the colour of `status`. Works without accessibility."""
    def is_drawn(color):
        red, green, blue = color
        strong, weak = (green, red) if status in (GRANTED, SAVED) else (red, green)
        return strong > weak + 60 and strong > blue + 40
    return any(map(is_drawn, colors_in(desktop, extents)))


def colors_in(desktop, extents):
    """The colours of an area of the screen, as triples."""
    left, top, width, height = extents
    pixels = subprocess.run(
        ["import", "-window", "root", "-crop", f"{width}x{height}+{left}+{top}", "-depth", "8",
         "rgb:-"], env=desktop.environment, capture_output=True, check=True, timeout=30).stdout
    return set(zip(pixels[0::3], pixels[1::3], pixels[2::3]))
