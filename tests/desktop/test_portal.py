#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Dictation in a Wayland session whose portal has the hotkeys, with a portal of the test's own."""

import subprocess
import unittest

from desktop import wait_for
from dictation_test import BINARIES
from session_test import SessionTest
from sway import SwayDesktop, become_ordinary_user
from target import WidgetWithoutTitle
from test_wayland_bindings import AnyCompositor

HOLD, TOGGLE = "alt-space", "alt-shift-space"


class Portal:
    """The portal of a desktop, and who presses its shortcuts."""

    def __init__(self, desktop):
        self._desktop = desktop
        self._process = desktop.spawn(
            [BINARIES / "portal-service"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self._process.stdout.readline()

    def _tell(self, verb, name):
        self._process.stdin.write(f"{verb} {name}\n")
        self._process.stdin.flush()
        answer = self._process.stdout.readline().strip()
        if answer != "done":
            raise RuntimeError(f"{verb} {name}: {answer}")

    def press(self, name):
        self._tell("press", name)

    def release(self, name):
        self._tell("release", name)

    def close(self):
        self._desktop.end(self._process)
        self._process.stdout.close()


class WithAPortal(AnyCompositor, SessionTest):
    @staticmethod
    def make_desktop():
        return SwayDesktop(tells=False, a11y=True, audio=True)

    def setUp(self):
        super().setUp()
        self.portal = Portal(self.desktop)
        self.addCleanup(self.portal.close)

    def begin(self):
        self.portal.press(HOLD)

    def end(self):
        self.portal.release(HOLD)

    def start_application(self, service):
        application = super().start_application(service)
        application.log.wait_for("hotkeys by the portal: the portal offers it")
        return application

    def test_a_long_dictation_is_switched_on_and_off(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        target = self.start(WidgetWithoutTitle, "gtk3")
        self.portal.press(TOGGLE)
        self.portal.release(TOGGLE)
        service.stream(1).say("Long.")
        target.wait_for_text("Long.", timeout=10)
        self.assertEqual(application.log.count("stopRecording"), 0)
        self.portal.press(TOGGLE)
        self.portal.release(TOGGLE)
        application.log.wait_for("stopRecording (session=1)")

    def test_a_portal_that_dies_ends_the_hold_and_the_next_one_serves(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        target = self.start(WidgetWithoutTitle, "gtk3")
        self.begin()
        service.stream(1).say("Before.")
        target.wait_for_text("Before.", timeout=10)
        self.portal.close()
        application.log.wait_for("stopRecording (session=1)")
        application.log.wait_for("the desktop's portal is gone, and is asked again")
        self.portal = Portal(self.desktop)
        self.addCleanup(self.portal.close)
        self.begin()
        service.stream(2).say(" After.")
        target.wait_for_text("Before. After.", timeout=10)
        self.end()
        application.log.wait_for("stopRecording (session=2)")

    def test_a_program_from_a_build_folder_makes_its_desktop_file_and_removes_it(self):
        entry = self.desktop.folder / "data/applications/com.tarvik.dictate.desktop"
        application = self.start_application(self.start_scripted_service())
        application.log.wait_for("no installed desktop file tells the portal of")
        wait_for(entry.exists, "the desktop file")
        application.close()
        self.assertFalse(entry.exists())


if __name__ == "__main__":
    become_ordinary_user()
    unittest.main()
