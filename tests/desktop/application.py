"""The application, unmodified, and what it writes to its log."""

import pathlib
import re
import subprocess
import threading

from desktop import wait_for

# Written after the hotkeys were registered. A private desktop has a microphone and accessibility, and
# a launch that did not wait for their answers would deny one of them.
READY = ("TarvikDictate: mic status 3 ", "TarvikDictate: accessibility trusted → true")

VERSION = re.search(
    r"project\(TarvikDictate VERSION ([0-9.]+)",
    (pathlib.Path(__file__).parents[2] / "CMakeLists.txt").read_text(encoding="utf-8")).group(1)


class Log:
    """Every line so far; lines can be waited for."""

    def __init__(self, stream):
        self.lines = []
        self._thread = threading.Thread(target=self._read, args=(stream,), daemon=True)
        self._thread.start()

    def _read(self, stream):
        with stream:
            for line in stream:
                self.lines.append(line.rstrip("\n"))

    def read_to_end(self):
        """Returns when the writer has ended and all of its lines are here."""
        self._thread.join()

    def wait_for(self, part, deadline=10.0, since=0):
        """The first line that contains `part`, from line number `since` on."""
        try:
            return wait_for(lambda: next((line for line in self.lines[since:] if part in line), None),
                            f"the log line “{part}”", deadline)
        except TimeoutError as error:
            raise AssertionError(f"{error}; the log:\n" + "\n".join(self.lines)) from None

    def count(self, part):
        return sum(part in line for line in self.lines)

    def __len__(self):
        return len(self.lines)


def write_settings(environment, values):
    """Writes the settings file as the application keeps it; its path."""
    path = pathlib.Path(environment["XDG_CONFIG_HOME"]) / "Tarvik" / "Tarvik Dictate.conf"
    path.parent.mkdir(mode=0o700, exist_ok=True)
    path.write_text("[General]\n" + "".join(f"{key}={value}\n" for key, value in values.items()))
    path.chmod(0o600)
    return path


class Application:
    """Returns from its construction when its log has all the lines of `ready`."""

    def __init__(self, desktop, binaries, environment, ready=READY):
        self._desktop = desktop
        self.process = desktop.spawn(
            [binaries / "tarvik-dictate"], env=desktop.environment | environment,
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
        """Asks it to end; its exit status, which is negative for a signal."""
        status = self._desktop.end(self.process, deadline=10.0)
        self.log.read_to_end()
        return status
