# SPDX-License-Identifier: MIT

"""The journal of a measured program: when its text has changed, and when the change was painted."""

import os
import time


class Journal:
    """Appends lines of the form "changed TIME LENGTH" or "painted TIME LENGTH" to a file. The time is
    that of CLOCK_MONOTONIC in nanoseconds. The unit of the length is the program's own."""

    def __init__(self, path):
        self._file = os.open(path, os.O_WRONLY | os.O_APPEND | os.O_CREAT, 0o600)
        self._length = 0
        self._is_painted = True

    def changed(self, length):
        """Called as soon as the text has the new length."""
        self._length = length
        self._is_painted = False
        self._write("changed")

    def painted(self):
        """Called after each painted frame. Only the first frame after a change counts."""
        if not self._is_painted:
            self._is_painted = True
            self._write("painted")

    def _write(self, event):
        # One call: a reader never sees a partial line.
        os.write(self._file, f"{event} {time.monotonic_ns()} {self._length}\n".encode())
