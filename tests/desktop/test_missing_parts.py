#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Desktops on which a part is missing or ends: the application runs and reports the missing part."""

import os
import unittest

from application import VERSION, Application, write_settings
from desktop import Desktop, wait_for
from dictation_test import BINARIES
from keyboard import Keyboard
from processes import kill_processes
from setup_window import GRANTED, NOT_GRANTED, SetupWindow, has_status_color
from windows import wait_for_window

# Logged at every launch, whatever is missing.
LAUNCHED = ("TarvikDictate: accessibility trusted → ",)
NOWHERE = "unix:path=/nowhere/bus"


class MissingParts(unittest.TestCase):
    def make_desktop(self, **parts):
        return self.enterContext(Desktop(**({"wm": True, "a11y": True, "audio": True} | parts)))

    def write_settings(self, desktop):
        write_settings(desktop.environment,
                       {"deepgramApiKey": "a-key", "deepgramHost": "localhost:1",
                        "lastWelcomeShownForVersion": VERSION})

    def start(self, desktop, ready=LAUNCHED, **environment):
        self.write_settings(desktop)
        application = Application(desktop, BINARIES, environment, ready)
        self.addCleanup(self.close_cleanly, application)
        return application

    def close_cleanly(self, application):
        self.assertEqual(application.close(), 0, "\n".join(application.log.lines))

    def check_that_it_lives(self, application, desktop):
        """Checks that the application shows its window and survives the closing of it."""
        wait_for_window(desktop).close()
        self.assertIsNone(application.process.poll())

    def test_no_sound_server(self):
        desktop = self.make_desktop(audio=False)
        self.start(desktop)
        setup = SetupWindow(desktop, Keyboard(desktop))
        self.addCleanup(setup.close)
        setup.wait_for_row("Microphone", NOT_GRANTED)
        setup.wait_for_row("Accessibility", GRANTED)

    def test_a_sound_server_that_comes_later(self):
        desktop = self.make_desktop(audio=False)
        desktop.environment["PULSE_SERVER"] = "unix:" + str(desktop.folder / "runtime/pulse/native")
        self.start(desktop)
        setup = SetupWindow(desktop, Keyboard(desktop))
        self.addCleanup(setup.close)
        setup.wait_for_row("Microphone", NOT_GRANTED)
        desktop.start_sound_server()
        setup.wait_for_row("Microphone", GRANTED)

    def test_no_accessibility(self):
        desktop = self.make_desktop(a11y=False)
        application = self.start(desktop)
        self.check_that_it_lives(application, desktop)
        self.assertEqual(application.log.count("accessibility trusted → false"), 1)

    def test_an_accessibility_bus_that_dies(self):
        desktop = self.make_desktop()
        self.start(desktop)
        setup = SetupWindow(desktop, Keyboard(desktop))
        place = setup.row("Accessibility")[1].extents
        self.assertTrue(has_status_color(desktop, place, GRANTED))
        self.assertGreater(kill_processes(desktop, "accessibility.conf"), 0)
        wait_for(lambda: has_status_color(desktop, place, NOT_GRANTED), "a red status")
        setup.window.close()

    def test_no_session_bus(self):
        desktop = self.make_desktop()
        application = self.start(desktop, DBUS_SESSION_BUS_ADDRESS=NOWHERE)
        application.log.wait_for("there is no session bus")
        self.check_that_it_lives(application, desktop)

    def test_a_session_bus_that_dies(self):
        desktop = self.make_desktop()
        application = self.start(desktop)
        window = wait_for_window(desktop)
        desktop.end(desktop.session_bus)
        window.close()
        keyboard = Keyboard(desktop)
        keyboard.hold()
        application.log.wait_for("startRecording (session=1)")
        keyboard.release()
        application.log.wait_for("stopRecording (session=1)")
        self.assertIsNone(application.process.poll())

    def test_no_window_manager(self):
        desktop = self.make_desktop(wm=False, x11=True)
        application = self.start(desktop)
        wait_for(lambda: "990x" in desktop.run(
            ["xwininfo", "-root", "-tree"]), "the setup window")
        self.assertIsNone(application.process.poll())

    def test_no_standard_streams(self):
        desktop = self.make_desktop()
        self.write_settings(desktop)
        process = desktop.spawn(
            ["sh", "-c", 'exec "$0" <&- >&- 2>&-', str(BINARIES / "tarvik-dictate")])
        wait_for_window(desktop).close()
        streams = {os.readlink(f"/proc/{process.pid}/fd/{number}") for number in range(3)}
        self.assertEqual(streams, {"/dev/null"})
        self.assertEqual(desktop.end(process, timeout=10.0), 0)

    def test_nothing_but_a_display(self):
        desktop = self.make_desktop(wm=True, a11y=False, audio=False)
        application = self.start(desktop, DBUS_SESSION_BUS_ADDRESS=NOWHERE)
        self.check_that_it_lives(application, desktop)


if __name__ == "__main__":
    unittest.main()
