# SPDX-License-Identifier: MIT

"""A program that records its calls."""

import os


class FakeProgram:
    """Replaces the program `name` for every process with `environment`."""

    def __init__(self, desktop, name):
        folder = desktop.folder / "programs"
        folder.mkdir(exist_ok=True)
        self._calls = desktop.folder / f"calls-of-{name}"
        self._calls.unlink(missing_ok=True)
        program = folder / name
        # A single write, so that the lines of simultaneous calls do not mix.
        program.write_text(f'#!/bin/sh\nprintf "%s\\n" "$*" >> "{self._calls}"\n')
        program.chmod(0o755)
        self.environment = {"PATH": f"{folder}{os.pathsep}{desktop.environment['PATH']}"}

    @property
    def calls(self):
        """The arguments of each call, joined by spaces."""
        return self._calls.read_text().splitlines() if self._calls.exists() else []
