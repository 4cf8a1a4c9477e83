# SPDX-License-Identifier: MIT

"""Tells from the outside whether a text was typed: typed keys are pressed on the display."""

import pathlib
import subprocess


class KeyWatch:
    """Counts pressed keys until its end. A context manager; a process of its own watches the display."""

    def __init__(self, desktop):
        self._desktop = desktop
        self._process = desktop.spawn(
            ["/usr/bin/python3", "-B", pathlib.Path(__file__).with_name("key_watch.py")],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self._process.stdout.readline()

    @property
    def presses(self):
        """The number of keys that were pressed so far."""
        self._process.stdin.write(b"\n")
        self._process.stdin.flush()
        return int(self._process.stdout.readline())

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._desktop.end(self._process)
        self._process.stdout.close()
