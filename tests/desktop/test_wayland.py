#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A Wayland session that no means of the application serves: nothing looks as if it worked."""

import unittest

from accessible import ScreenReader
from application import VERSION, Application, write_settings
from dictation_test import BINARIES
from setup_window import NOT_GRANTED, RESTART
from sway import SwayDesktop, become_ordinary_user

REASON = "the X server belongs to a Wayland session, whose other programs it cannot see"


class OnSway(unittest.TestCase):
    def test_the_log_and_the_setup_window_tell_the_truth(self):
        desktop = self.enterContext(SwayDesktop(tells=False, xwayland="force", a11y=True, audio=True))
        write_settings(desktop.environment,
                       {"deepgramApiKey": "a-key", "lastWelcomeShownForVersion": VERSION})
        application = Application(desktop, BINARIES, {"QT_QPA_PLATFORM": "xcb", "WAYLAND_DISPLAY": ""},
                                  ["TarvikDictate: accessibility trusted → false"])
        self.addCleanup(application.close)
        for line in (f"hotkeys not by XInput 2: {REASON}", "nothing in this session serves hotkeys",
                     f"typing not by XTEST: {REASON}", "nothing in this session serves typing",
                     f"the front window not by the X server: {REASON}",
                     "the front window by AT-SPI: programs",
                     "InstallEventHandler failed: -9868"):
            self.assertEqual(application.log.count("TarvikDictate: " + line), 1, line)
        self.assertEqual(application.log.count("hold-to-talk registered"), 0)
        self.assertEqual(application.log.count("tap-to-toggle registered"), 0)
        reader = ScreenReader(desktop)
        self.addCleanup(reader.close)
        names = [part.name for part in reader.window_with(RESTART).descendants]
        self.assertEqual(names[names.index("Accessibility") + 1], NOT_GRANTED)


if __name__ == "__main__":
    become_ordinary_user()
    unittest.main()
