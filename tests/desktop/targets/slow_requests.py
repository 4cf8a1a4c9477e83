#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A program that sends the X server much work in few bytes, and then waits for the server's reply to
the last request. It has no window. Prints "waiting" before the wait and "done" after it.
"""

import ctypes
import ctypes.util
import select

# All requests together fit into what the server reads at a time.
REQUESTS = 180
SIDE = 2000
DEPTH = 24


class Rectangle(ctypes.Structure):
    _fields_ = [("x", ctypes.c_int16), ("y", ctypes.c_int16),
                ("width", ctypes.c_uint16), ("height", ctypes.c_uint16)]


class Cookie(ctypes.Structure):
    _fields_ = [("sequence", ctypes.c_uint)]


class ScreenIterator(ctypes.Structure):
    _fields_ = [("data", ctypes.POINTER(ctypes.c_uint32)), ("rem", ctypes.c_int),
                ("index", ctypes.c_int)]


xcb = ctypes.CDLL(ctypes.util.find_library("xcb"))
xcb.xcb_connect.restype = ctypes.c_void_p
xcb.xcb_get_setup.restype = ctypes.c_void_p
xcb.xcb_get_input_focus.restype = Cookie
xcb.xcb_get_input_focus_reply.restype = ctypes.c_void_p
xcb.xcb_setup_roots_iterator.restype = ScreenIterator
connection = ctypes.c_void_p(xcb.xcb_connect(None, None))
setup = ctypes.c_void_p(xcb.xcb_get_setup(connection))
root = xcb.xcb_setup_roots_iterator(setup).data[0]
pixmap = xcb.xcb_generate_id(connection)
context = xcb.xcb_generate_id(connection)
xcb.xcb_create_pixmap(connection, DEPTH, pixmap, root, SIDE, SIDE)
xcb.xcb_create_gc(connection, context, pixmap, 0, None)
rectangle = Rectangle(0, 0, SIDE, SIDE)
for _ in range(REQUESTS):
    xcb.xcb_poly_fill_rectangle(connection, pixmap, context, 1, ctypes.byref(rectangle))
last = xcb.xcb_get_input_focus(connection)
xcb.xcb_flush(connection)
print("waiting", flush=True)
xcb.xcb_get_input_focus_reply(connection, last, None)
print("done", flush=True)
select.select([0], [], [])
