# SPDX-License-Identifier: MIT

"""The application's windows as a screen reader sees them."""

from bus import Bus, NoReply, checked_call
from desktop import wait_for

REGISTRY = "org.a11y.atspi.Registry"
ROOT = "/org/a11y/atspi/accessible/root"
INTERFACE = "org.a11y.atspi."
SCREEN_COORDINATES = 0
# Bits of the state, as the interface numbers them.
STATES = {"active": 1, "checked": 4, "editable": 7, "enabled": 8, "focusable": 11, "focused": 12,
          "showing": 25}
CONTROLS = ("push button", "check box", "text", "password text")
PASSWORD_TEXT = 40


class Accessible:
    """One element. A call to an element that has ended raises NoReply."""

    def __init__(self, bus, name, path):
        self._bus, self._service, self._path = bus, name, path

    @property
    def address(self):
        """The name on the bus and the path."""
        return self._service, self._path

    def __eq__(self, other):
        return self.address == other.address

    def _call(self, interface, method, *arguments):
        return checked_call(lambda: self._bus.call(
            self._service, self._path, INTERFACE + interface, method, *arguments))

    def _get(self, interface, key):
        return checked_call(lambda: self._bus.get(
            self._service, self._path, INTERFACE + interface, key))

    @property
    def name(self):
        return self._get("Accessible", "Name")

    @property
    def role(self):
        # For a password field the toolkit reports the right role number, but the name of a text.
        if self._call("Accessible", "GetRole")[0] == PASSWORD_TEXT:
            return "password text"
        return self._call("Accessible", "GetRoleName")[0]

    @property
    def children(self):
        return [Accessible(self._bus, *child)
                for child in self._call("Accessible", "GetChildren")[0]]

    @property
    def descendants(self):
        """This element and everything in it, in the order of the tree."""
        yield self
        for child in self.children:
            yield from child.descendants

    def has(self, state):
        low, high = self._call("Accessible", "GetState")[0]
        return bool((low | high << 32) >> STATES[state] & 1)

    @property
    def text(self):
        return self._call("Text", "GetText", "(ii)", 0, -1)[0]

    @property
    def selected_text(self):
        if self._call("Text", "GetNSelections")[0] == 0:
            return ""
        start, end = self._call("Text", "GetSelection", "(i)", 0)
        return self._call("Text", "GetText", "(ii)", start, end)[0]

    @property
    def extents(self):
        """Left, top, width and height on the screen."""
        return self._call("Component", "GetExtents", "(u)", SCREEN_COORDINATES)[0]

    def press(self):
        """Does what a click on a button does."""
        self._call("Action", "DoAction", "(i)", 0)

    @property
    def texts(self):
        """The names of all descendants that have one."""
        return [name for element in self.descendants if (name := element.name)]

    @property
    def controls(self):
        """The descendants that a user can operate."""
        return [element for element in self.descendants if element.role in CONTROLS]

    def find(self, name, role=None):
        """The first descendant with this name (and role, if given), or None."""
        return next((element for element in self.descendants
                     if element.name == name and role in (None, element.role)), None)


class ScreenReader:
    """Finds the application's windows on the accessibility bus."""

    def __init__(self, desktop):
        session = Bus(desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
        (self.address,) = session.call(
            "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")
        session.close()
        self._bus = Bus(self.address)

    def close(self):
        self._bus.close()

    def window_with(self, text, timeout=10.0):
        """Waits for the window of the application that contains an element named `text`."""
        return wait_for(lambda: self._window_with(text), f"a window with “{text}”", timeout)

    def _window_with(self, text):
        for window in self._windows():
            try:
                if window.find(text):
                    return window
            except NoReply:
                pass  # A window that is being closed does not count.
        return None

    @property
    def applications(self):
        """All programs on the bus."""
        return Accessible(self._bus, REGISTRY, ROOT).children

    def _windows(self):
        for application in self.applications:
            try:
                if application.name == "Tarvik Dictate":
                    yield from (child for child in application.children if child.has("showing"))
            except NoReply:
                pass  # As above.
