# SPDX-License-Identifier: MIT

"""The status icon's menu, read and clicked over D-Bus as a panel does."""

import dataclasses
import re
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
        """Opens the menu; returns its entries."""
        self._call("AboutToShow", "(i)", ROOT)
        _, (_, _, children) = self._call("GetLayout", "(iias)", ROOT, WHOLE_DEPTH, [])
        return [self._entry(*child) for child in children]

    @staticmethod
    def _entry(number, properties, _children):
        return Entry(
            number=number,
            # A single underscore marks an entry's access key; a double underscore is an underscore.
            title=re.sub("_(_?)", r"\1", properties.get("label", "")),
            is_enabled=properties.get("enabled", True),
            is_separator=properties.get("type") == "separator",
            shortcut=tuple(map(tuple, properties.get("shortcut", ()))),
        )

    def click(self, title):
        """Opens the menu and clicks the entry with this title."""
        number = next(entry.number for entry in self.open() if entry.title == title)
        self._bus.call(self._name, self._path, INTERFACE, "Event", "(isvu)", number, "clicked",
                       GLib.Variant("i", 0), int(time.monotonic() * 1000) & 0xFFFFFFFF)

    def close(self):
        self._bus.close()

