"""Watches how the application starts itself anew, from the click on."""

import contextlib
import pathlib
import time

from desktop import wait_for
from running import instances, marked


class Restart:
    """Made before the click, while the application runs."""

    def __init__(self, desktop, binaries, application):
        self._desktop, self._binaries = desktop, binaries
        self._application = application
        self._others = marked(desktop) - {application.pid}

    def check(self, test, seconds):
        """Returns when the new instance is there, `seconds` after the end of the old one."""
        waiting = wait_for(lambda: self._wait_before_the_start(), "the wait before the start")
        begin = time.monotonic()
        test.assertEqual(waiting, seconds)
        test.assertEqual(self._application.process.wait(10), 0)
        (successor,) = wait_for(lambda: instances(self._desktop, self._binaries), "the new instance")
        # It was some milliseconds old when it was seen.
        test.assertGreater(time.monotonic() - begin, float(seconds) - 0.2)
        test.assertLess(time.monotonic() - begin, float(seconds) + 3.0)
        test.assertNotEqual(successor, self._application.pid)

    def _wait_before_the_start(self):
        """What the sleep that comes before the start was told."""
        for process in marked(self._desktop) - self._others:
            # It may have ended meanwhile.
            with contextlib.suppress(OSError):
                name, *arguments = pathlib.Path(f"/proc/{process}/cmdline").read_text().split("\0")
                if name == "sleep":
                    return arguments[0]
        return None

    def wait_until_nothing_is_left(self):
        """Returns when no process is there that was not there beside the first instance."""
        wait_for(lambda: marked(self._desktop) <= self._others, "the end of every process")
