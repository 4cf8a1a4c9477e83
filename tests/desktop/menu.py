"""The status icon's menu, read and clicked as a panel does it."""

import dataclasses
import time

from bus import Bus, GLib

INTERFACE = "com.canonical.dbusmenu"
ROOT = 0
WHOLE_DEPTH = -1


@dataclasses.dataclass(frozen=True)
class Entry:
    number: int
    title: str
    is_enabled: bool
    is_separator: bool
    shortcut: tuple


class Menu:
    def __init__(self, desktop, name, path):
        self._bus = Bus(desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
        self._name, self._path = name, path

    def _call(self, method, *arguments):
        return self._bus.call(self._name, self._path, INTERFACE, method, *arguments)

    def open(self):
        """Opens it; what it shows."""
        self._call("AboutToShow", "(i)", ROOT)
        _, (_, _, children) = self._call("GetLayout", "(iias)", ROOT, WHOLE_DEPTH, [])
        return [self._entry(*child) for child in children]

    @staticmethod
    def _entry(number, properties, _children):
        return Entry(
            number=number,
            # An underscore marks the key of an entry; two of them stand for one.
            title=properties.get("label", "").replace("__", "\0").replace("_", "").replace("\0", "_"),
            is_enabled=properties.get("enabled", True),
            is_separator=properties.get("type") == "separator",
            shortcut=tuple(map(tuple, properties.get("shortcut", ()))),
        )

    def click(self, title):
        """Opens it and clicks the entry."""
        number = next(entry.number for entry in self.open() if entry.title == title)
        self._bus.call(self._name, self._path, INTERFACE, "Event", "(isvu)", number, "clicked",
                       GLib.Variant("i", 0), int(time.monotonic() * 1000) & 0xFFFFFFFF)

    def close(self):
        self._bus.close()

