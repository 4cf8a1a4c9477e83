#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A user types into another program while windows of the application appear. Every character arrives
there, in order."""

import time
import unittest

from accessible import ScreenReader
from bus import Bus
from desktop import wait_for
from dictation_test import DictationTest
from fake_program import FakeProgram
from keyboard import Typist
from window_scenarios import MICROPHONE_DENIED, TEN_MINUTES
from windows import wait_for_window

KEY = "deepgramApiKey"


class KeyboardStays(DictationTest):
    def setUp(self):
        self.service = self.start_scripted_service()
        self.target = self.start_target("gtk3")

    def stored_keys(self):
        return [line for line in self.settings_file.read_text().splitlines() if KEY in line]

    def check_that_all_arrived(self, typist):
        self.target.wait_for_text(typist.text)
        self.assertTrue(self.target.is_active)

    def test_while_the_application_starts(self):
        with Typist(self.keyboard) as typist:
            self.start_application(self.service, closes_setup=False)
            window = wait_for_window(self.desktop)
            typist.type_on()
        self.check_that_all_arrived(typist)
        self.assertTrue(window.is_visible)
        self.assertEqual(self.stored_keys(), ["deepgramApiKey=a-key"])

    def test_while_it_asks_for_permissions_and_welcomes_a_new_user(self):
        self.withdraw_permissions()
        with Typist(self.keyboard) as typist:
            self.start_application(self.service, settings={KEY: ""}, closes_setup=False,
                                   ready=(MICROPHONE_DENIED,))
            window = wait_for_window(self.desktop)
            typist.type_on()
        self.check_that_all_arrived(typist)
        self.assertTrue(window.is_visible)
        self.assertEqual(self.stored_keys(), ["deepgramApiKey="])

    def withdraw_permissions(self):
        self.microphone.pull_out()
        self.desktop.run(["pactl", "unload-module", "module-pipe-source"])
        self.addCleanup(self.microphone.plug_in)
        self.addCleanup(self.desktop.plug_microphone)
        bus = Bus(self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
        bus.set("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Status", "IsEnabled", "b", False)
        bus.close()

    def test_while_the_call_to_action_appears(self):
        browser = FakeProgram(self.desktop, "xdg-open")
        self.application = self.start_application(
            self.service, settings={"totalDictationSeconds": TEN_MINUTES - 1},
            environment=browser.environment)
        self.target.activate()
        reader = ScreenReader(self.desktop)
        self.addCleanup(reader.close)
        with Typist(self.keyboard) as typist:
            self.record_for_more_than_a_second()
            window = wait_for_window(self.desktop)
            reader.window_with("Maybe later")
            typist.type_on()
        self.check_that_all_arrived(typist)
        self.assertTrue(window.is_visible)
        self.assertIn("_NET_WM_STATE_ABOVE", window.property("_NET_WM_STATE"))
        self.assertEqual(browser.calls, [])
        self.assertNotIn("ctaPermanentlyDismissed", self.settings_file.read_text())

    def record_for_more_than_a_second(self):
        """Records without a key of the hotkey, which would change what is being typed."""
        self.toggle()
        self.service.stream()
        begin = time.monotonic()
        wait_for(lambda: time.monotonic() - begin > 1.1, "a second of usage")
        self.toggle()
        self.application.log.wait_for("stopRecording")

    def toggle(self):
        self.desktop.run(
            ["gdbus", "call", "--session", "--timeout", "5", "--dest", "com.tarvik.dictate",
             "--object-path", "/com/tarvik/dictate", "--method",
             "org.freedesktop.Application.ActivateAction", "toggle", "[]", "{}"])


if __name__ == "__main__":
    unittest.main()
