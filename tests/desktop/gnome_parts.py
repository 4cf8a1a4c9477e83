# SPDX-License-Identifier: MIT

"""What stands on a GNOME desktop: the keyboard, and programs to dictate into."""

import os

from accessible import ScreenReader
from bus import NoReply
from desktop import wait_for
from setup_window import RESTART
from target import TERMINAL_SCRIPT, Target, WidgetTarget

ALT, SHIFT, SPACE = 56, 42, 57
ESCAPE, F4 = 1, 62
REMOTE = "org.gnome.Mutter.RemoteDesktop"


class GnomeKeyboard:
    """The keyboard of the desktop. Keys have the kernel's numbers."""

    def __init__(self, desktop):
        self._bus = desktop.bus
        self._down = []
        self._session = self._bus.call(REMOTE, "/org/gnome/Mutter/RemoteDesktop", REMOTE,
                                       "CreateSession")[0]
        self._call("Start")
        # The first key makes it a keyboard of the seat.
        self.tap(SHIFT)

    def _call(self, method, signature="()", *arguments):
        self._bus.call(REMOTE, self._session, f"{REMOTE}.Session", method, signature, *arguments)

    def press(self, *keys):
        for key in keys:
            self._down.append(key)
            self._call("NotifyKeyboardKeycode", "(ub)", key, True)

    def release(self, *keys):
        for key in keys:
            self._down.remove(key)
            self._call("NotifyKeyboardKeycode", "(ub)", key, False)

    def release_all(self):
        self.release(*reversed(self._down))

    def tap(self, *keys):
        self.press(*keys)
        self.release(*reversed(keys))

    def hold(self):
        self.press(ALT, SPACE)

    def toggle(self):
        self.tap(ALT, SHIFT, SPACE)


class GnomeTarget(Target):
    def _find_window(self, *_):
        """GNOME tells no program which window is in front. The target has told of its own focus."""


class GnomeWidgetTarget(GnomeTarget, WidgetTarget):
    """As WidgetTarget."""


class GnomeFootTarget(GnomeTarget):
    """A terminal. The accessibility interface does not know it."""

    def __init__(self, desktop, title=None):
        super().__init__(desktop, title)
        self.process = desktop.spawn(
            ["foot", "--title", self.title, "--override", "locked-title=yes",
             "sh", "-c", TERMINAL_SCRIPT, str(self.out)])
        wait_for(lambda: os.path.exists(f"{self.out}.ready"), "the terminal", process=self.process)


def close_setup_window(desktop, keyboard):
    """Waits until the setup window has the keyboard, and closes it by a key."""
    reader = ScreenReader(desktop)
    window = reader.window_with(RESTART)
    wait_for(lambda: window.has("active"), "the setup window in front")
    keyboard.tap(ALT, F4)

    def is_gone():
        try:
            return not window.has("showing")
        except NoReply:
            return True

    wait_for(is_gone, "the end of the setup window")
    reader.close()
