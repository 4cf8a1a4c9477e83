# SPDX-License-Identifier: MIT

"""What stands on a GNOME desktop: the keyboard, and programs to dictate into."""

from pressed_keys import SHIFT, PressedKeys
from target import FootTerminal, Target, WidgetTarget

REMOTE = "org.gnome.Mutter.RemoteDesktop"


class GnomeKeyboard(PressedKeys):
    """The keyboard of the desktop."""

    def __init__(self, desktop):
        super().__init__()
        self._bus = desktop.bus
        self._session = self._bus.call(REMOTE, "/org/gnome/Mutter/RemoteDesktop", REMOTE,
                                       "CreateSession")[0]
        self._call("Start")
        # The first key makes it a keyboard of the seat.
        self.tap(SHIFT)

    def _call(self, method, signature="()", *arguments):
        self._bus.call(REMOTE, self._session, f"{REMOTE}.Session", method, signature, *arguments)

    def _send(self, key, is_pressed):
        self._call("NotifyKeyboardKeycode", "(ub)", key, is_pressed)


class GnomeTarget(Target):
    def _find_window(self, *_):
        """GNOME tells no program which window is in front. The target has told of its own focus."""


class GnomeWidgetTarget(GnomeTarget, WidgetTarget):
    """As WidgetTarget."""


class GnomeFootTarget(GnomeTarget, FootTerminal):
    """As FootTerminal."""
