# SPDX-License-Identifier: MIT

"""Runs the project's own speech service, as a user would."""

import subprocess

STARTED = "listening on wss://localhost:"


class LocalService:
    def __init__(self, desktop, binaries):
        state = desktop.folder / "speech-service"
        self._desktop = desktop
        self._process = desktop.spawn(
            [binaries / "tarvik-speech-service", "--port", "0", "--state-directory", state],
            stdout=subprocess.PIPE, text=True,
        )
        line = self._process.stdout.readline()
        if not line.startswith(STARTED):
            raise RuntimeError("the speech service did not start: " + desktop.services_log())
        self.host = "localhost:" + line.removeprefix(STARTED).partition("/")[0]
        self.authority = state / "ca.pem"

    def close(self):
        """Terminates the service; returns its exit status."""
        self._process.stdout.close()
        return self._desktop.end(self._process)
