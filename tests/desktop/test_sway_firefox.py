#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Alt that goes down and up without another key in Firefox, whose menu bar comes then, in a Sway session."""

import time
import unittest

from desktop import wait_for
from pressed_keys import A, ALT, ESCAPE, SPACE
from sway import become_ordinary_user
from sway_parts import firefox
from test_sway import OnSwayTest

# Seconds for which the keys stay down after the press has been heard. In the longest one they repeat.
DURATIONS = (0, 0.3, 1.0)
REPETITIONS = 3


class FirefoxOnSway(OnSwayTest):
    def type_a_letter(self):
        """Types a letter, which the page reads after every key before it. A menu bar that has the
        keyboard would take it."""
        before = self.target.text
        self.keyboard.tap(A)
        wait_for(lambda: self.target.text == before + "a", "the letter in the page")

    def check_that_alt_shows_the_menu_bar(self):
        """What the test relies on."""
        before = self.target.sizes
        self.keyboard.tap(ALT)
        wait_for(lambda: self.target.sizes > before, "the menu bar")
        shown = self.target.sizes
        self.keyboard.tap(ESCAPE)
        wait_for(lambda: self.target.sizes > shown, "the end of the menu bar")

    def hold(self, number, duration, first, second):
        self.keyboard.press(ALT, SPACE)
        self.application.log.wait_for(f"startRecording (session={number})")
        time.sleep(duration)
        self.keyboard.release(first)
        self.keyboard.release(second)
        self.application.log.wait_for(f"stopRecording (session={number})")

    def test_a_hold_without_text_shows_no_menu_bar(self):
        self.application = self.start_application(self.start_scripted_service())
        self.target = firefox(self.desktop)
        self.addCleanup(self.target.close)
        wait_for(lambda: self.keyboard.tap(A) or self.target.text, "the keyboard in the page")
        self.keyboard.tap(SPACE)
        wait_for(lambda: self.target.text.endswith(" "), "the last key in the page")
        self.check_that_alt_shows_the_menu_bar()
        number = 0
        for duration in DURATIONS * REPETITIONS:
            for keys in ((SPACE, ALT), (ALT, SPACE)):
                with self.subTest(duration=duration, keys=keys):
                    number += 1
                    sizes = self.target.sizes
                    self.hold(number, duration, *keys)
                    # Firefox shows its menu bar when the page has left Alt unused.
                    self.type_a_letter()
                    self.type_a_letter()
                    self.assertEqual(self.target.sizes, sizes)
        self.check_that_alt_shows_the_menu_bar()


if __name__ == "__main__":
    become_ordinary_user()
    unittest.main()
