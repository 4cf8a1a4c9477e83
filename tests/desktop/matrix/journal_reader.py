# SPDX-License-Identifier: MIT

"""Reads the journal of a program while the program writes it."""

import dataclasses
import os


@dataclasses.dataclass(frozen=True)
class Event:
    """A change of the text, or the painted frame after it."""

    kind: str
    time: int
    length: int


class JournalReader:
    def __init__(self, path):
        self.events = []
        self._path = path
        self._position = 0

    def __len__(self):
        return len(self.events)

    @property
    def length(self):
        """The length of the text after the last change."""
        self.update()
        return self.events[-1].length if self.events else 0

    def update(self):
        """Reads the new lines."""
        if not os.path.exists(self._path) or os.stat(self._path).st_size == self._position:
            return
        with open(self._path, "rb") as file:
            file.seek(self._position)
            data = file.read()
        end = data.rfind(b"\n") + 1
        self._position += end
        for line in data[:end].decode().splitlines():
            kind, time, length = line.split()
            self.events.append(Event(kind, int(time), int(length)))

    def first(self, kind, length, since):
        """The first event of a kind with this length, from index `since` on; or None."""
        return next((event for event in self.events[since:]
                     if event.kind == kind and event.length == length), None)

    def last(self, kind, length, since):
        """The same for the last event."""
        return next((event for event in reversed(self.events[since:])
                     if event.kind == kind and event.length == length), None)
