"""A program that only writes down how it was called."""

import os


class FakeProgram:
    """Stands in for the program `name` for whoever runs with `environment`."""

    def __init__(self, desktop, name):
        folder = desktop.folder / "programs"
        folder.mkdir(exist_ok=True)
        self._calls = desktop.folder / f"calls-of-{name}"
        self._calls.unlink(missing_ok=True)
        program = folder / name
        # One write, so that two calls at the same time do not mix.
        program.write_text(f'#!/bin/sh\nprintf "%s\\n" "$*" >> "{self._calls}"\n')
        program.chmod(0o755)
        self.environment = {"PATH": f"{folder}{os.pathsep}{desktop.environment['PATH']}"}

    @property
    def calls(self):
        """The arguments of each call, in one line."""
        return self._calls.read_text().splitlines() if self._calls.exists() else []
