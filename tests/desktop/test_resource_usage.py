#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The processor time and the wake-ups of the application, with and without its setup window, and what
it loads."""

import pathlib
import time
import unittest

from desktop import wait_for
from dictation_test import DictationTest
from resource_usage import processor_time, wait_until_idle, wakeups
from windows import wait_for_window

# Seconds in which an opened window is drawn completely.
DRAWING_TIME = 3.0
SECONDS = 20.0
# The share of one core.
OPEN_SHARE = 0.005
# Two ticks of the processor clock: work from before the measurement may be counted in it.
CLOSED_SECONDS = 0.02
# Far fewer than any forgotten timer causes, with room for a message of the desktop.
CLOSED_WAKEUPS = 5


class ResourceUsage(DictationTest):
    def usage_in(self, seconds):
        """The application's processor time and wake-ups in the next `seconds`."""
        used, woken = processor_time(self.application.pid), wakeups(self.application.pid)
        self.wait(seconds)
        return (processor_time(self.application.pid) - used,
                wakeups(self.application.pid) - woken)

    @staticmethod
    def wait(seconds):
        end = time.monotonic() + seconds
        wait_for(lambda: time.monotonic() > end, "the end of the measurement", seconds + 5)

    def test_the_open_window_costs_little_and_the_closed_one_nothing(self):
        self.application = self.start_application(
            self.start_scripted_service(), closes_setup=False)
        window = wait_for_window(self.desktop)
        self.wait(DRAWING_TIME)
        used, _ = self.usage_in(SECONDS)
        self.assertLess(used, OPEN_SHARE * SECONDS)
        window.close()
        wait_until_idle(self.application.pid)
        used, woken = self.usage_in(SECONDS)
        self.assertLessEqual(woken, CLOSED_WAKEUPS)
        self.assertLessEqual(used, CLOSED_SECONDS)

    def test_what_another_desktop_needs_is_not_loaded(self):
        application = self.start_application(self.start_scripted_service())
        files = pathlib.Path(f"/proc/{application.pid}/maps").read_text()
        self.assertIn("/libQt6Core.so", files)
        self.assertNotIn("/libgio-2.0.so", files)


if __name__ == "__main__":
    unittest.main()
