# SPDX-License-Identifier: MIT

"""Finds the application's icon and its menu on a real panel."""

import re
import subprocess

from demonstrate import PANEL_HEIGHT
from desktop import wait_for
from tray import is_red
from windows import INSTANCE, visible_windows

# The minimum contrast at which a graphical object is visible on its background.
VISIBLE = 3.0
# In pixels. Red spots of other programs are smaller.
MIN_ICON_SIZE = 8


def luminance(color):
    """The relative luminance of a colour, 0 to 1."""
    linear = [part / 12.92 if part <= 0.04045 else ((part + 0.055) / 1.055) ** 2.4
              for part in (channel / 255 for channel in color)]
    return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]


def contrast(first, second):
    """The contrast ratio of two colours, 1 to 21."""
    dark, bright = sorted((luminance(first), luminance(second)))
    return (bright + 0.05) / (dark + 0.05)


class Pixels:
    """The current pixels of an area of the screen, given as left, top, width and height."""

    def __init__(self, desktop, area):
        self.area = area
        left, top, self._width, height = area
        data = subprocess.run(
            ["import", "-window", "root", "-crop", f"{self._width}x{height}+{left}+{top}",
             "-depth", "8", "rgb:-"],
            env=desktop.environment, capture_output=True, check=True, timeout=30).stdout
        self.colors = list(zip(data[0::3], data[1::3], data[2::3]))

    def box(self, condition):
        """The bounding box of the pixels whose colours meet the condition, or None."""
        found = [divmod(i, self._width) for i, color in enumerate(self.colors) if condition(*color)]
        if not found:
            return None
        rows, columns = zip(*found)
        return (self.area[0] + min(columns), self.area[1] + min(rows),
                max(columns) - min(columns) + 1, max(rows) - min(rows) + 1)


class PanelIcon:
    """The application's icon on the panel at the top of the screen. The red icon shows its place,
    because nothing else on the panel is red."""

    def __init__(self, desktop, scale=1):
        self._desktop = desktop
        width = int(desktop.size.partition("x")[0])
        self._panel = (0, 0, width, PANEL_HEIGHT * scale)
        self.place = None

    def _red_place(self):
        box = Pixels(self._desktop, self._panel).box(is_red)
        return box if box and min(box[2:]) >= MIN_ICON_SIZE else None

    def wait_until_red(self):
        self.place = wait_for(self._red_place, "a red icon on the panel")

    def wait_until_idle(self):
        wait_for(lambda: not self._red_place() and self.is_visible, "the idle icon on the panel")

    @property
    def is_visible(self):
        """Whether enough pixels in the icon's place have contrast to the panel."""
        colors = Pixels(self._desktop, self.place).colors
        background = Pixels(self._desktop, self._beside).colors[0]
        return sum(contrast(color, background) > VISIBLE for color in colors) > len(colors) // 10

    @property
    def _beside(self):
        """A pixel of the panel next to the icon."""
        left, top, _, height = self.place
        return left - MIN_ICON_SIZE, top + height // 2, 1, 1

    def click(self):
        left, top, width, height = self.place
        self._desktop.run(["xdotool", "mousemove", str(left + width // 2), str(top + height // 2),
                           "click", "1"])

    def open_menu(self):
        """Clicks the icon; returns left, top, width and height of the menu."""
        self.click()
        return wait_for(self.menu, "the menu")

    def menu(self):
        """Left, top, width and height of the menu; None while it is closed."""
        managed = visible_windows(self._desktop)
        for number in self._desktop.run(
                ["xdotool", "search", "--onlyvisible", "--classname", f"^{INSTANCE}$"],
                check=False).split():
            if number not in managed:
                shape = self._desktop.run(["xwininfo", "-id", number])
                return tuple(int(re.search(rf"{key}: +(-?\d+)", shape).group(1)) for key in (
                    "Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"))
        return None
