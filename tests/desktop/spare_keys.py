# SPDX-License-Identifier: MIT

"""The keys of the keyboard map that have no symbol."""

from Xlib import XK
from Xlib.display import Display


class SpareKeys:
    def __init__(self, desktop):
        self._display = Display(desktop.environment["DISPLAY"])
        self._filled = []

    def keep(self, count):
        """Gives the spare keys a symbol, but for the last `count` of them."""
        first = self._display.display.info.min_keycode
        last = self._display.display.info.max_keycode
        symbols = self._display.get_keyboard_mapping(first, last - first + 1)
        spare = [first + index for index, each in enumerate(symbols) if not any(each)]
        self._filled = spare[:-count]
        self._set(XK.XK_F24)

    def _set(self, symbol):
        for key in self._filled:
            self._display.change_keyboard_mapping(key, [(symbol,)])
        self._display.sync()

    def close(self):
        self._set(0)
        self._display.close()
