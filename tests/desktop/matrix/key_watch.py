#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Counts the keys that are pressed on a display, whichever program the keys reach.

Prints "ready", and then for each line on standard input the number of presses so far.
"""

import ctypes
import os
import select
import sys

RAW_KEY_PRESS = 13
ALL_MASTER_DEVICES = 1
GENERIC_EVENT = 35


class EventMask(ctypes.Structure):
    _fields_ = [("device", ctypes.c_int), ("length", ctypes.c_int), ("mask", ctypes.c_char_p)]


class EventCookie(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("send_event", ctypes.c_int),
                ("display", ctypes.c_void_p), ("extension", ctypes.c_int),
                ("event_type", ctypes.c_int), ("rest", ctypes.c_long * 24)]


def main():
    x11 = ctypes.CDLL("libX11.so.6")
    xinput = ctypes.CDLL("libXi.so.6")
    x11.XOpenDisplay.restype = ctypes.c_void_p
    display = ctypes.c_void_p(x11.XOpenDisplay(os.environ["DISPLAY"].encode()))
    x11.XDefaultRootWindow.restype = ctypes.c_ulong
    # Only a program that knows version 2.1 gets the keys that another program has grabbed.
    major, minor = ctypes.c_int(2), ctypes.c_int(2)
    xinput.XIQueryVersion(display, ctypes.byref(major), ctypes.byref(minor))
    bits = bytes((0, 1 << RAW_KEY_PRESS - 8, 0, 0))
    mask = EventMask(ALL_MASTER_DEVICES, len(bits), bits)
    xinput.XISelectEvents(display, ctypes.c_ulong(x11.XDefaultRootWindow(display)),
                          ctypes.byref(mask), 1)
    x11.XSync(display, 0)
    print("ready", flush=True)
    event = EventCookie()
    presses = 0
    while True:
        select.select([0, x11.XConnectionNumber(display)], [], [])
        # The reply of the server comes after all events before it.
        x11.XSync(display, 0)
        while x11.XPending(display):
            x11.XNextEvent(display, ctypes.byref(event))
            presses += event.type == GENERIC_EVENT and event.event_type == RAW_KEY_PRESS
        if select.select([0], [], [], 0)[0]:
            if not sys.stdin.buffer.raw.readline():
                return
            print(presses, flush=True)


if __name__ == "__main__":
    main()
