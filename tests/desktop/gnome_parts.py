# SPDX-License-Identifier: MIT

"""What stands on a GNOME desktop: the keyboard, and programs to dictate into."""

import time

from pressed_keys import SHIFT, PressedKeys
from target import FootTerminal, Target, WidgetTarget

REMOTE = "org.gnome.Mutter.RemoteDesktop"
# Seconds between two taps of one hotkey. GNOME runs the same command for a press and for a repeat. Where
# no text field has the keyboard, a press half a second after another one counts as its repeat.
BETWEEN_TAPS = 0.8


class GnomeKeyboard(PressedKeys):
    """The keyboard of the desktop."""

    def __init__(self, desktop):
        super().__init__()
        self._bus = desktop.bus
        self._session = self._bus.call(REMOTE, "/org/gnome/Mutter/RemoteDesktop", REMOTE,
                                       "CreateSession")[0]
        self._call("Start")
        self._tap_end = 0.0
        # The first key makes it a keyboard of the seat.
        self.tap(SHIFT)

    def toggle(self):
        time.sleep(max(0.0, self._tap_end + BETWEEN_TAPS - time.monotonic()))
        super().toggle()
        self._tap_end = time.monotonic()

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
