# SPDX-License-Identifier: MIT

"""Starts the unmodified application and reads its log."""

import pathlib
import re
import subprocess
import threading

from desktop import wait_for

# The log lines of a finished launch. A private desktop has a microphone and accessibility. A launch
# that did not wait for their state would report one of them as denied.
READY = ("TarvikDictate: mic status 3 ", "TarvikDictate: accessibility trusted → true")

VERSION = re.search(
    r"project\(TarvikDictate VERSION ([0-9.]+)",
    (pathlib.Path(__file__).parents[2] / "CMakeLists.txt").read_text(encoding="utf-8")).group(1)


class Log:
    """The lines of a stream so far. A test can wait for a line."""

    def __init__(self, stream):
        self.lines = []
        self._thread = threading.Thread(target=self._read, args=(stream,), daemon=True)
        self._thread.start()

    def _read(self, stream):
        with stream:
            for line in stream:
                self.lines.append(line.rstrip("\n"))

    def read_to_end(self):
        """Waits until the writer has ended and all of its lines have been read."""
        self._thread.join()

    def wait_for(self, part, timeout=10.0, since=0):
        """Waits for a line that contains `part`, from index `since` on; returns the line."""
        try:
            return wait_for(
                lambda: next((line for line in self.lines[since:] if part in line), None),
                f"the log line “{part}”", timeout)
        except TimeoutError as error:
            raise AssertionError(f"{error}; the log:\n" + "\n".join(self.lines)) from None

    def count(self, part):
        return sum(part in line for line in self.lines)

    def __len__(self):
        return len(self.lines)


def write_settings(environment, values):
    """Writes the application's settings file; returns its path."""
    path = pathlib.Path(environment["XDG_CONFIG_HOME"]) / "Tarvik" / "Tarvik Dictate.conf"
    path.parent.mkdir(mode=0o700, exist_ok=True)
    path.write_text("[General]\n" + "".join(f"{key}={value}\n" for key, value in values.items()))
    path.chmod(0o600)
    return path


class Application:
    """The running application. The constructor waits for all log lines of `ready`. `command` is the
    beginning of the command, for a program that runs the application."""

    def __init__(self, desktop, binaries, environment, ready=READY, command=()):
        self._desktop = desktop
        self.process = desktop.spawn(
            [*command, binaries / "tarvik-dictate"], env=desktop.environment | environment,
            stderr=subprocess.PIPE, text=True, errors="replace",
        )
        self.log = Log(self.process.stderr)
        try:
            for line in ready:
                self.log.wait_for(line)
        except BaseException:
            self.close()
            raise

    @property
    def pid(self):
        return self.process.pid

    def close(self):
        """Terminates the application; returns its exit status, which is negative for a signal."""
        status = self._desktop.end(self.process, timeout=10.0)
        self.log.read_to_end()
        return status
