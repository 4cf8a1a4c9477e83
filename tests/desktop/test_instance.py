#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""One instance per session: a second start, and requests from shortcuts of the desktop."""

import os
import signal
import subprocess
import time
import unittest

from application import write_settings
from desktop import wait_for
from dictation_test import BINARIES, DictationTest
from timing import check_within
from windows import wait_for_window

RUNNING = "TarvikDictate: it runs already"


class Instance(DictationTest):
    def second_start(self, **variables):
        """Starts the application a second time; returns the exit status, the lines on standard error
        and the run time in seconds."""
        begin = time.monotonic()
        second = subprocess.run(
            [BINARIES / "tarvik-dictate"], env=self.desktop.environment | variables, timeout=20,
            stdin=subprocess.DEVNULL, capture_output=True, text=True,
        )
        return second.returncode, second.stderr.splitlines(), time.monotonic() - begin

    def call_application(self, member, *arguments, check=True):
        return self.desktop.run(
            ["gdbus", "call", "--session", "--timeout", "5", "--dest", "com.tarvik.dictate",
             "--object-path", "/com/tarvik/dictate", "--method",
             "org.freedesktop.Application." + member, *arguments], check=check)

    def test_a_second_start_brings_up_the_setup_window_of_the_first(self):
        application = self.start_application(self.start_scripted_service())
        status, _, _ = self.second_start()
        self.assertEqual(status, 0)
        window = wait_for_window(self.desktop).wait_until_active()
        self.assertEqual(window.property("_NET_WM_PID"), str(application.pid))
        window.close()

    def test_a_second_start_ends_at_once_and_changes_nothing(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        wait_for(lambda: "loginItemAutoConfigured=true" in self.settings_file.read_text(),
                 "the first settings")
        before = self.settings_file.read_bytes()

        def start():
            status, lines, seconds = self.second_start(DESKTOP_STARTUP_ID="launcher_TIME0")
            self.assertEqual(status, 0)
            self.assertEqual(len(lines), 1, lines)
            self.assertIn(RUNNING, lines[0])
            return seconds

        check_within(1, start)
        self.assertEqual(self.settings_file.read_bytes(), before)
        self.assertIsNone(application.process.poll())
        # The hotkeys still belong to the first instance.
        self.hold()
        service.stream()
        self.keyboard.release()

    def test_a_first_instance_that_hangs_is_reported(self):
        application = self.start_application(self.start_scripted_service())
        os.kill(application.pid, signal.SIGSTOP)
        try:
            status, lines, seconds = self.second_start()
        finally:
            os.kill(application.pid, signal.SIGCONT)
        self.assertEqual(status, 1)
        self.assertEqual(len(lines), 1, lines)
        self.assertIn(RUNNING, lines[0])
        self.assertGreater(seconds, 1.9)
        self.assertLess(seconds, 5)

    def test_a_shortcut_of_the_desktop_toggles_a_dictation(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        self.call_application("ActivateAction", "toggle", "[]", "{}")
        application.log.wait_for("startRecording")
        service.stream()
        self.call_application("ActivateAction", "toggle", "[]", "{}")
        application.log.wait_for("stopRecording")
        self.call_application("ActivateAction", "explode", "[]", "{}", check=False)
        application.log.wait_for("there is no action called explode")

    def test_a_shortcut_with_a_press_and_a_release_is_a_hold(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        target = self.start_target()
        self.call_application("ActivateAction", "press", "[]", "{}")
        self.call_application("ActivateAction", "press", "[]", "{}")
        service.stream().say("While it is held.")
        wait_for(lambda: target.text == "While it is held.", "the text")
        self.assertEqual(application.log.count("stopRecording"), 0)
        self.call_application("ActivateAction", "release", "[]", "{}")
        application.log.wait_for("stopRecording (session=1)")
        self.call_application("ActivateAction", "release", "[]", "{}")
        self.assertEqual(application.log.count("startRecording"), 1)

    def test_it_runs_without_a_session_bus(self):
        service = self.start_scripted_service()
        write_settings(self.desktop.environment, {"deepgramApiKey": "a-key"})
        process = self.desktop.spawn(
            [BINARIES / "tarvik-dictate"],
            env=self.desktop.environment | {
                "SSL_CERT_FILE": str(service.authority),
                "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere/bus"},
            stderr=subprocess.PIPE, text=True)
        lines = []
        for line in process.stderr:
            lines.append(line)
            if "accessibility trusted" in line:
                break
        self.assertEqual(self.desktop.end(process), 0)
        process.stderr.close()
        self.assertEqual(sum("there is no session bus" in line and "second start" in line
                             for line in lines), 1, lines)
        self.assertTrue(any("tap-to-toggle registered" in line for line in lines), lines)


if __name__ == "__main__":
    unittest.main()
