#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The launches at which the setup window appears by itself."""

import time
import unittest

from application import VERSION, Application
from desktop import wait_for
from dictation_test import BINARIES, DictationTest
from setup_window import NOT_SET, SAVED, SetupWindow
from timing import check_within
from windows import wait_for_window

KEY = "deepgramApiKey"
SHOWN = "lastWelcomeShownForVersion"
WELCOME_DELAY = 4.0
ORDINARY_DELAY = 0.4
# In seconds, for start and drawing. Less than the difference of the two delays.
TOLERANCE = 2.5
LATE_READING = 0.2


class Welcome(DictationTest):
    def start(self, delay, **settings):
        """Starts the application and checks that its window comes `delay` seconds later."""
        service = self.start_scripted_service()
        self.application = None

        def attempt():
            if self.application:
                self.application.close()
            self.application = self.start_application(
                service, settings=settings, closes_setup=False)
            return self.time_to_window(delay)

        check_within(delay + TOLERANCE, attempt)

    def time_to_window(self, delay):
        launched = time.monotonic()
        self.window = wait_for_window(self.desktop)
        seconds = time.monotonic() - launched
        # The launch ended slightly before its last log line was read.
        self.assertGreater(seconds, delay - LATE_READING)
        return seconds

    def time_to_window_again(self, delay):
        """Starts the application with the settings as they are."""
        self.application = Application(self.desktop, BINARIES, {})
        self.addCleanup(self.application.close)
        return self.time_to_window(delay)

    def test_an_ordinary_launch_shows_it_soon(self):
        self.start(ORDINARY_DELAY)

    def test_a_new_version_shows_it_later_and_once(self):
        self.start(WELCOME_DELAY, **{SHOWN: "0.0.9"})
        self.check_that_the_version_is_stored()

        def attempt():
            self.assertEqual(self.application.close(), 0)
            return self.time_to_window_again(ORDINARY_DELAY)

        check_within(ORDINARY_DELAY + TOLERANCE, attempt)

    def test_a_missing_key_shows_it_later_although_the_version_is_known(self):
        self.start(WELCOME_DELAY, **{KEY: ""})
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
        self.start(WELCOME_DELAY, **{KEY: ""})

        def attempt():
            self.assertEqual(self.application.close(), 0)
            self.settings_file.unlink()
            return self.time_to_window_again(WELCOME_DELAY)

        check_within(WELCOME_DELAY + TOLERANCE, attempt)
        self.check_that_the_version_is_stored()
        self.check_status(NOT_SET)

    def test_a_broken_settings_file_is_set_aside_and_a_new_one_begun(self):
        self.start(ORDINARY_DELAY)
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
