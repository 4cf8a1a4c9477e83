# SPDX-License-Identifier: MIT

"""Windows as the window manager and the user see them, the application's above all."""

import re

from desktop import wait_for

# The first part of the class of each window.
INSTANCE = "tarvik-dictate"


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
        """Left, top, width and height on the screen, including the window manager's frame."""
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
        """Activates the window, as a click on it does."""
        activate(self._desktop, self.number)

    def wait_until_active(self):
        """Waits until the window has the keyboard; returns the window."""
        wait_for(lambda: self.is_active, "the keyboard in the application's window")
        return self

    def close(self):
        """Closes the window by a key, as a user does, and waits until it is gone."""
        self.activate()
        self._desktop.run(["xdotool", "key", "ctrl+w"])
        self.wait_until_gone()

    def wait_until_gone(self, timeout=10.0):
        wait_for(lambda: not self.is_visible, "the end of the window", timeout)


def activate(desktop, number):
    """Activates a window, as a click on it does, and waits until the window has the keyboard."""
    desktop.run(["xdotool", "windowactivate", number])
    wait_for(lambda: active_window(desktop) == number, "the keyboard in the activated window")


def active_window(desktop):
    """The number of the active window; empty when there is none."""
    return str(desktop.windows.active or "")


def window_with_title(desktop, pattern):
    """The number of a visible window of any program whose whole title matches; None without one."""
    windows = desktop.windows
    return next((str(window) for window in windows.visible
                 if re.fullmatch(pattern, windows.title(window))), None)


def visible_windows(desktop):
    """The numbers of the application's visible windows, without menus and icons."""
    windows = desktop.windows
    return [str(window) for window in windows.visible if windows.instance(window) == INSTANCE]


def wait_for_window(desktop, timeout=15.0, besides=()):
    """Waits until the application shows a window, other than those in `besides`; returns the
    window. The window need not have the keyboard."""
    def found():
        new = [number for number in visible_windows(desktop) if number not in besides]
        return Window(desktop, new[0]) if new else None

    return wait_for(found, "a window of the application", timeout)
