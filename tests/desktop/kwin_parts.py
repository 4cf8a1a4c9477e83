# SPDX-License-Identifier: MIT

"""What stands on a KWin desktop: the keyboard, and programs to dictate into."""

from sway_parts import WaylandKeyboard
from target import WidgetTarget


class KWinKeyboard(WaylandKeyboard):
    """As WaylandKeyboard."""

    program = "kwin-keyboard"


class KWinWidgetTarget(WidgetTarget):
    """As WidgetTarget. The program itself tells when it has the keyboard."""

    def _find_window(self, *_):
        pass
