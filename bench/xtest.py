# SPDX-License-Identifier: MIT

"""Presses single keys through XTest, without the start of a program for each key."""

import ctypes


class XTest:
    def __init__(self, display):
        self._x11 = ctypes.CDLL("libX11.so.6")
        self._xtst = ctypes.CDLL("libXtst.so.6")
        self._x11.XOpenDisplay.restype = ctypes.c_void_p
        self._x11.XStringToKeysym.restype = ctypes.c_ulong
        self._x11.XKeysymToKeycode.argtypes = [ctypes.c_void_p, ctypes.c_ulong]
        self._x11.XFlush.argtypes = [ctypes.c_void_p]
        self._xtst.XTestFakeKeyEvent.argtypes = [
            ctypes.c_void_p, ctypes.c_uint, ctypes.c_int, ctypes.c_ulong]
        self._display = self._x11.XOpenDisplay(display.encode())
        if not self._display:
            raise RuntimeError(f"no X server at {display}")

    def press(self, key):
        self._fake(key, True)

    def release(self, key):
        self._fake(key, False)

    def _fake(self, key, is_down):
        symbol = self._x11.XStringToKeysym(key.encode())
        code = self._x11.XKeysymToKeycode(self._display, symbol)
        self._xtst.XTestFakeKeyEvent(self._display, code, is_down, 0)
        self._x11.XFlush(self._display)
