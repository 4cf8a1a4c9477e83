#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The launches at which the setup window appears by itself."""

import time
import unittest

from application import VERSION, Application
from desktop import wait_for
from dictation_test import BINARIES, DictationTest
from setup_window import NOT_SET, SAVED, SetupWindow
from windows import wait_for_window

KEY = "deepgramApiKey"
SHOWN = "lastWelcomeShownForVersion"
WELCOME_DELAY = 4.0
ORDINARY_DELAY = 0.4
# In seconds, for start and drawing on a busy machine.
TOLERANCE = 2.5


class Welcome(DictationTest):
    def start(self, **settings):
        """Starts the application; returns the seconds from the end of the launch to its window."""
        self.application = self.start_application(
            self.start_scripted_service(), settings=settings, closes_setup=False)
        launched = time.monotonic()
        self.window = wait_for_window(self.desktop)
        return time.monotonic() - launched

    def check_delay(self, seconds, delay):
        # The launch ended slightly before its last log line was read.
        self.assertGreater(seconds, delay - 0.2)
        self.assertLess(seconds, delay + TOLERANCE)

    def test_an_ordinary_launch_shows_it_soon(self):
        self.check_delay(self.start(), ORDINARY_DELAY)

    def test_a_new_version_shows_it_later_and_once(self):
        self.check_delay(self.start(**{SHOWN: "0.0.9"}), WELCOME_DELAY)
        self.check_that_the_version_is_stored()
        self.assertEqual(self.application.close(), 0)

        again = Application(self.desktop, BINARIES, {})
        self.addCleanup(again.close)
        launched = time.monotonic()
        wait_for_window(self.desktop)
        self.check_delay(time.monotonic() - launched, ORDINARY_DELAY)

    def test_a_missing_key_shows_it_later_although_the_version_is_known(self):
        self.check_delay(self.start(**{KEY: ""}), WELCOME_DELAY)
        self.check_status(NOT_SET)

    def test_the_version_is_stored_before_the_window_is_seen(self):
        self.start_application(self.start_scripted_service(), settings={SHOWN: "0.0.9"},
                               closes_setup=False)
        launched = time.monotonic()
        self.check_that_the_version_is_stored()
        self.assertLess(time.monotonic() - launched, WELCOME_DELAY)

    def check_that_the_version_is_stored(self):
        wait_for(lambda: f"{SHOWN}={VERSION}" in self.settings_file.read_text(),
                 "the stored version")

    def check_status(self, status):
        setup = SetupWindow(self.desktop, self.keyboard)
        self.addCleanup(setup.close)
        setup.wait_for_key_status(status)

    def test_a_first_launch_makes_the_settings_and_shows_it(self):
        self.start(**{KEY: ""})
        self.assertEqual(self.application.close(), 0)
        self.settings_file.unlink()
        first = Application(self.desktop, BINARIES, {})
        self.addCleanup(first.close)
        launched = time.monotonic()
        wait_for_window(self.desktop)
        self.check_delay(time.monotonic() - launched, WELCOME_DELAY)
        self.check_that_the_version_is_stored()
        self.check_status(NOT_SET)

    def test_a_broken_settings_file_is_set_aside_and_a_new_one_begun(self):
        self.start()
        self.assertEqual(self.application.close(), 0)
        broken = b"\0\xff no settings at all \n{[(\n"
        self.settings_file.write_bytes(broken)
        application = Application(self.desktop, BINARIES, {})
        self.addCleanup(application.close)
        wait_for_window(self.desktop)
        self.check_that_the_version_is_stored()
        setup = SetupWindow(self.desktop, self.keyboard)
        self.addCleanup(setup.close)
        setup.enter_key("new-key")
        setup.click(setup.button("Save"))
        setup.wait_for_key_status(SAVED)
        kept = [path for path in self.settings_file.parent.iterdir()
                if path != self.settings_file and path.read_bytes() == broken]
        self.assertEqual(len(kept), 1)


if __name__ == "__main__":
    unittest.main()
