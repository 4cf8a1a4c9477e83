# SPDX-License-Identifier: MIT

"""What stands on a GNOME desktop: the keyboard, and programs to dictate into."""

from accessible import ScreenReader
from bus import NoReply
from desktop import wait_for
from pressed_keys import ALT, F4, SHIFT, PressedKeys
from setup_window import RESTART
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
