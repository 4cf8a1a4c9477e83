# SPDX-License-Identifier: MIT

"""The windows of an X server, asked over a connection that stays open: a program for each question would
take more of the processor than what is tested."""

import ctypes

POINTER = ctypes.c_void_p
CARDINAL = ctypes.c_uint32
ANY_TYPE = 0
# In units of four bytes.
MAX_PROPERTY_LENGTH = 4096
# Where the replies have these fields, in bytes.
ATOM_OFFSET, MAP_STATE_OFFSET = 8, 26
VIEWABLE = 2


class Cookie(ctypes.Structure):
    _fields_ = [("sequence", ctypes.c_uint)]


class ScreenIterator(ctypes.Structure):
    _fields_ = [("screen", POINTER), ("rest", ctypes.c_int), ("index", ctypes.c_int)]


def _library():
    xcb = ctypes.CDLL("libxcb.so.1")
    for name, result, arguments in (
        ("connect", POINTER, (ctypes.c_char_p, POINTER)),
        ("connection_has_error", ctypes.c_int, (POINTER,)),
        ("disconnect", None, (POINTER,)),
        ("get_setup", POINTER, (POINTER,)),
        ("setup_roots_iterator", ScreenIterator, (POINTER,)),
        ("intern_atom", Cookie, (POINTER, ctypes.c_uint8, ctypes.c_uint16, ctypes.c_char_p)),
        ("get_property", Cookie, (POINTER, ctypes.c_uint8, *[CARDINAL] * 5)),
        ("get_property_value", POINTER, (POINTER,)),
        ("get_property_value_length", ctypes.c_int, (POINTER,)),
        ("get_window_attributes", Cookie, (POINTER, CARDINAL)),
        *((f"{request}_reply", POINTER, (POINTER, Cookie, POINTER))
          for request in ("intern_atom", "get_property", "get_window_attributes")),
    ):
        function = getattr(xcb, "xcb_" + name)
        function.restype, function.argtypes = result, arguments
    return xcb


class XWindows:
    """The windows that the window manager knows. A server or a window that has ended has none of what is
    asked."""

    def __init__(self, display):
        self._xcb, self._libc = _library(), ctypes.CDLL(None)
        self._connection = POINTER(self._xcb.xcb_connect(display.encode(), None))
        if self._xcb.xcb_connection_has_error(self._connection):
            raise RuntimeError(f"no X server at {display}")
        screen = self._xcb.xcb_setup_roots_iterator(self._xcb.xcb_get_setup(self._connection)).screen
        self._root = CARDINAL.from_address(screen).value
        self._atoms = {}

    def close(self):
        self._xcb.xcb_disconnect(self._connection)

    @property
    def active(self):
        """The number of the window with the keyboard; None when there is none."""
        return next(iter(self._windows("_NET_ACTIVE_WINDOW")), None) or None

    @property
    def visible(self):
        """The numbers of the windows that can be seen, where no other window hides them."""
        return [window for window in self._windows("_NET_CLIENT_LIST") if self._is_viewable(window)]

    def title(self, window):
        return (self._property(window, "_NET_WM_NAME") or self._property(window, "WM_NAME")).decode(
            errors="replace")

    def instance(self, window):
        """The first part of the window's class."""
        return self._property(window, "WM_CLASS").partition(b"\0")[0].decode(errors="replace")

    def _windows(self, name):
        numbers = self._property(self._root, name)
        return [int.from_bytes(numbers[i:i + 4], "little") for i in range(0, len(numbers), 4)]

    def _reply(self, request, *arguments):
        """The address of the reply; None without a reply."""
        cookie = getattr(self._xcb, "xcb_" + request)(self._connection, *arguments)
        return getattr(self._xcb, f"xcb_{request}_reply")(self._connection, cookie, None)

    def _field(self, reply, kind, offset):
        """One field of a reply, which is freed; 0 without a reply."""
        if not reply:
            return 0
        value = kind.from_address(reply + offset).value
        self._libc.free(POINTER(reply))
        return value

    def _atom(self, name):
        if name not in self._atoms:
            self._atoms[name] = self._field(
                self._reply("intern_atom", 0, len(name), name.encode()), CARDINAL, ATOM_OFFSET)
        return self._atoms[name]

    def _property(self, window, name):
        """The bytes of a property; none where there is no such property."""
        reply = self._reply(
            "get_property", 0, window, self._atom(name), ANY_TYPE, 0, MAX_PROPERTY_LENGTH)
        if not reply:
            return b""
        value = ctypes.string_at(self._xcb.xcb_get_property_value(reply),
                                 self._xcb.xcb_get_property_value_length(reply))
        self._libc.free(POINTER(reply))
        return value

    def _is_viewable(self, window):
        return self._field(self._reply("get_window_attributes", window), ctypes.c_uint8,
                           MAP_STATE_OFFSET) == VIEWABLE
