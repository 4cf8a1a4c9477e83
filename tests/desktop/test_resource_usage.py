#!/usr/bin/python3
"""What it costs that the application is there, and that its setup window is open."""

import time
import unittest

from cost import processor_time, wakeups
from desktop import wait_for
from dictation_test import DictationTest
from windows import wait_for_window

SETTLING = 3.0
SECONDS = 20.0
# Of one core.
OPEN_SHARE = 0.005
# Ticks of the clock that counts: what began before the measurement may end in it.
CLOSED_SECONDS = 0.02
# Far fewer than any timer that was left behind makes, and room for a message of the desktop's.
CLOSED_WAKEUPS = 5


class Cost(DictationTest):
    def used_in(self, seconds):
        """Seconds of processor time and wake-ups of the application in the next `seconds`."""
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
        self.wait(SETTLING)
        used, _ = self.used_in(SECONDS)
        self.assertLess(used, OPEN_SHARE * SECONDS)
        window.close()
        self.wait(SETTLING)
        used, woken = self.used_in(SECONDS)
        self.assertLessEqual(woken, CLOSED_WAKEUPS)
        self.assertLessEqual(used, CLOSED_SECONDS)


if __name__ == "__main__":
    unittest.main()
