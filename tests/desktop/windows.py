"""The application's windows as the window manager and the user have them."""

import re

from desktop import wait_for

CLASS = "^tarvik-dictate$"


class Window:
    def __init__(self, desktop, number):
        self._desktop = desktop
        self.number = number

    @property
    def is_active(self):
        return active_window(self._desktop) == self.number

    @property
    def is_visible(self):
        return self.number in visible_windows(self._desktop)

    @property
    def frame(self):
        """Left, top, width and height on the screen, with what the window manager has put around."""
        shape = self._desktop.run(["xwininfo", "-id", self.number])
        left, top, width, height = (
            int(re.search(rf"{key}: +(-?\d+)", shape).group(1))
            for key in ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"))
        borders = self._desktop.run(["xprop", "-id", self.number, "_NET_FRAME_EXTENTS"])
        before, after, above, below = map(int, borders.partition("=")[2].split(","))
        return left - before, top - above, width + before + after, height + above + below

    def property(self, name):
        return self._desktop.run(["xprop", "-id", self.number, name]).partition("=")[2].strip()

    def activate(self):
        """Puts it in front, as a click on it does."""
        self._desktop.run(["xdotool", "windowactivate", "--sync", self.number])

    def close(self):
        """Closes it as a user does, by a key, and returns when it is gone."""
        wait_for(lambda: self.is_active, "the window in front")
        self._desktop.run(["xdotool", "key", "ctrl+w"])
        self.wait_until_gone()

    def wait_until_gone(self, deadline=10.0):
        wait_for(lambda: not self.is_visible, "the end of the window", deadline)


def active_window(desktop):
    """The number of the window in front; empty when there is none."""
    return desktop.run(["xdotool", "getactivewindow"], check=False).strip()


def visible_windows(desktop):
    """The numbers of the application's windows; a menu or an icon is none."""
    managed = desktop.run(["xprop", "-root", "_NET_CLIENT_LIST"]).partition("#")[2]
    numbers = {int(number, 16) for number in managed.replace(",", " ").split()}
    return [number for number in desktop.run(
        ["xdotool", "search", "--onlyvisible", "--classname", CLASS], check=False).split()
        if int(number) in numbers]


def wait_for_window(desktop, deadline=15.0, besides=()):
    """A window of the application, one that is not among `besides`, as soon as it is in front."""
    def found():
        new = [number for number in visible_windows(desktop) if number not in besides]
        return Window(desktop, new[0]) if new else None

    window = wait_for(found, "a window of the application", deadline)
    wait_for(lambda: window.is_active, "the application's window in front")
    return window
