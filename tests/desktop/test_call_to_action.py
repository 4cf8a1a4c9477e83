#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The counted seconds of dictation, and the call-to-action window."""

import signal
import time
import unittest

from accessible import ScreenReader
from application import VERSION, Application, write_settings
from desktop import wait_for
from dictation_test import BINARIES, DictationTest
from fake_program import FakeProgram
from setup_window import click_at
from windows import wait_for_window

SCREEN = (1280, 800)
VISIT, LATER, NEVER = "Visit tarvik.example", "Maybe later", "Don't show again"
TEN_MINUTES = (
    "Enjoying Tarvik Dictate?",
    "This is one tool from the Tarvik framework — a complete operating system for solo founders and "
    "lean teams. If voice-to-text is useful, the rest of what we've built will blow your mind.",
)
AN_HOUR = (
    "You're getting real value here.",
    "An hour of dictation later — clearly this is sticking. Tarvik Dictate is just one primitive in "
    "a much larger system: agents, skills, frameworks, and an entire operating layer for how solo "
    "operators actually work. Come see how deep this goes.",
)
TOTAL = "totalDictationSeconds"


class CallToAction(DictationTest):
    def setUp(self):
        self.reader = ScreenReader(self.desktop)
        self.addCleanup(self.reader.close)
        self.browser = FakeProgram(self.desktop, "xdg-open")
        self.service = self.start_scripted_service()

    def start(self, total):
        self.application = self.start_application(
            self.service, settings={TOTAL: total}, environment=self.browser.environment)
        self.target = self.start_target("gtk3")

    def record_for_more_than_a_second(self):
        number = len(self.service.streams) + 1
        begin = time.monotonic()
        self.hold()
        self.service.stream(number)
        wait_for(lambda: time.monotonic() - begin > 1.3, "a second of usage")
        self.keyboard.release()
        self.application.log.wait_for(f"stopRecording (session={number})")
        self.stopped = time.monotonic()

    def show_window(self, total, texts):
        """Makes a recording bring the window up and checks it; returns its controls by name."""
        self.start(total)
        self.record_for_more_than_a_second()
        return self.check_the_window(texts)

    def check_the_window(self, texts):
        self.window = wait_for_window(self.desktop)
        self.assertGreater(time.monotonic() - self.stopped, 0.9)
        self.assertLess(time.monotonic() - self.stopped, 3.5)
        wait_for(self.is_centred, "the window in the middle of the screen")
        self.assertIn("_NET_WM_STATE_ABOVE", self.window.property("_NET_WM_STATE"))
        content = self.reader.window_with(NEVER)
        self.assertEqual([part.name for part in content.descendants if part.role == "label"],
                         list(texts))
        self.assertEqual([part.name for part in content.controls], [VISIT, LATER, NEVER])
        return {part.name: part for part in content.controls}

    def is_centred(self):
        left, top, width, height = self.window.frame
        return (abs(left + width / 2 - SCREEN[0] / 2) <= 2
                and abs(top + height / 2 - SCREEN[1] / 2) <= 2)

    def click(self, control):
        click_at(self.desktop, control.extents)
        self.window.wait_until_gone()

    def flags(self):
        return {line for line in self.settings_file.read_text().splitlines()
                if line.startswith("cta")}

    def test_ten_minutes_show_it_once_and_maybe_later_closes_it(self):
        controls = self.show_window(599, TEN_MINUTES)
        self.click(controls[LATER])
        self.assertEqual(self.flags(), {"ctaTenMinuteShown=true"})
        self.assertEqual(self.browser.calls, [])
        wait_for(lambda: self.target.is_active, "the window that was in front")

    def test_a_visit_opens_the_website(self):
        controls = self.show_window(599, TEN_MINUTES)
        self.click(controls[VISIT])
        wait_for(lambda: self.browser.calls == ["https://tarvik.example"], "the website")
        self.assertEqual(self.flags(), {"ctaTenMinuteShown=true"})

    def test_an_hour_comes_before_ten_minutes_and_never_ends_all_calls(self):
        controls = self.show_window(3599, AN_HOUR)
        self.assertEqual(self.flags(), {"ctaSixtyMinuteShown=true"})
        self.click(controls[LATER])
        self.target.activate()
        self.record_for_more_than_a_second()
        controls = self.check_the_window(TEN_MINUTES)
        self.click(controls[NEVER])
        wait_for(lambda: "ctaPermanentlyDismissed=true" in self.flags(), "the stored wish")

    def test_every_control_is_reached_by_keys(self):
        controls = self.show_window(599, TEN_MINUTES)
        self.window.activate()
        for name in (VISIT, LATER, NEVER, VISIT):
            self.keyboard.press("Tab")
            wait_for(lambda: controls[name].has("focused"), "the focus on " + name)
        self.keyboard.press("ctrl+w")
        self.window.wait_until_gone()
        self.assertEqual(self.flags(), {"ctaTenMinuteShown=true"})

    def test_dictation_works_while_it_is_open(self):
        self.show_window(599, TEN_MINUTES)
        self.dictate(self.service, "Still works")
        self.target.wait_for_text("Still works")

    def test_an_overflow_of_the_total_aborts_with_a_log_line(self):
        write_settings(self.desktop.environment, {
            "deepgramApiKey": "a-key", "deepgramHost": self.service.host,
            "lastWelcomeShownForVersion": VERSION, TOTAL: 2**63 - 1})
        self.application = Application(
            self.desktop, BINARIES, {"SSL_CERT_FILE": str(self.service.authority)})
        self.addCleanup(self.application.close)
        wait_for_window(self.desktop).close()
        self.hold()
        self.service.stream()
        begin = time.monotonic()
        wait_for(lambda: time.monotonic() - begin > 1.1, "a second of usage")
        self.keyboard.release()
        self.assertEqual(self.application.process.wait(10), -signal.SIGABRT)
        self.application.log.read_to_end()
        self.assertEqual(self.application.log.count("total dictation time out of range"), 1)


if __name__ == "__main__":
    unittest.main()
