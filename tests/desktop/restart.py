# SPDX-License-Identifier: MIT

"""Checks that the application restarts itself."""

import contextlib
import pathlib
import time

from desktop import wait_for
from processes import application_processes, desktop_processes


class RestartCheck:
    """Watches one restart. Made before the click that restarts, while the application runs."""

    def __init__(self, desktop, binaries, application):
        self._desktop, self._binaries = desktop, binaries
        self._application = application
        self._others = desktop_processes(desktop) - {application.pid}

    def check(self, test, seconds):
        """Waits for the new instance, which starts `seconds` after the end of the old one."""
        delay = wait_for(self._sleep_argument, "the wait before the start")
        begin = time.monotonic()
        test.assertEqual(delay, seconds)
        test.assertEqual(self._application.process.wait(10), 0)
        (successor,) = wait_for(
            lambda: application_processes(self._desktop, self._binaries), "the new instance")
        # The sleep had begun some milliseconds before it was seen.
        test.assertGreater(time.monotonic() - begin, float(seconds) - 0.2)
        test.assertLess(time.monotonic() - begin, float(seconds) + 3.0)
        test.assertNotEqual(successor, self._application.pid)

    def _sleep_argument(self):
        """The argument of the sleep command that runs before the start; None without one."""
        for process in desktop_processes(self._desktop) - self._others:
            # The process may have ended in the meantime.
            with contextlib.suppress(OSError):
                name, *arguments = pathlib.Path(f"/proc/{process}/cmdline").read_text().split("\0")
                if name == "sleep":
                    return arguments[0]
        return None

    def wait_until_all_ended(self):
        """Waits until only those processes are left that ran before, besides the first instance."""
        wait_for(lambda: desktop_processes(self._desktop) <= self._others,
                 "the end of every process")
