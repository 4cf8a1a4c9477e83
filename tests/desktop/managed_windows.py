# SPDX-License-Identifier: MIT

"""The windows of an X server, asked over a connection that stays open: a program for each question would
take more of the processor than what is tested."""

from Xlib import X
from Xlib.display import Display
from Xlib.error import BadWindow, ConnectionClosedError


class ManagedWindows:
    """The windows that the window manager knows. A server or a window that has ended has none of what is
    asked."""

    def __init__(self, name):
        self._display = Display(name)
        self._root = self._display.screen().root.id

    def close(self):
        self._display.close()

    @property
    def active(self):
        """The number of the window with the keyboard; None when there is none."""
        active = next(iter(self._windows("_NET_ACTIVE_WINDOW")), None)
        # The window manager names the window before the server gives the keyboard to the window.
        return active if active and self._has_focus(active) else None

    @property
    def visible(self):
        """The numbers of the windows that can be seen, where no other window hides them."""
        return [window for window in self._windows("_NET_CLIENT_LIST") if self._is_viewable(window)]

    def title(self, window):
        return self._text(window, "_NET_WM_NAME") or self._text(window, "WM_NAME")

    def instance(self, window):
        """The first part of the window's class."""
        return self._text(window, "WM_CLASS").partition("\0")[0]

    def _has_focus(self, window):
        """Whether the keys go to the window, or to a window in it."""
        focused = self._ask(self._root, lambda _: self._display.get_input_focus().focus)
        # Without a focus, or with that of the pointer, the answer is a number and no window.
        while focused and not isinstance(focused, int):
            if focused.id == window:
                return True
            tree = self._ask(focused.id, lambda resource: resource.query_tree())
            focused = tree.parent if tree else None
        return False

    def _windows(self, name):
        return list(self._property(self._root, name) or ())

    def _text(self, window, name):
        return bytes(self._property(window, name) or b"").decode(errors="replace")

    def _is_viewable(self, window):
        attributes = self._ask(window, lambda resource: resource.get_attributes())
        return attributes is not None and attributes.map_state == X.IsViewable

    def _property(self, window, name):
        """The values of a property; None where there is no such property."""
        value = self._ask(window, lambda resource: resource.get_full_property(
            self._display.get_atom(name), X.AnyPropertyType))
        return None if value is None else value.value

    def _ask(self, window, question):
        try:
            return question(self._display.create_resource_object("window", window))
        except (BadWindow, ConnectionClosedError):
            return None
