#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Dictation in a KWin session: with real keys into real programs, and what KWin keeps afterwards."""

import os
import signal
import sys
import unittest

from accessible import ScreenReader
from application import READY, VERSION, Application, write_settings
from bus import Bus
from desktop import wait_for
from dictation_test import BINARIES
from kwin import SKIPPED, KWinDesktop, kwin_version
from kwin_parts import KWinKeyboard, KWinWidgetTarget
from pressed_keys import ALT, SPACE
from session_test import EXACT, SessionTest
from setup_window import NOT_GRANTED, RESTART
from sway import become_ordinary_user
from x_programs import HungServerTest, XTypingTests

ACCEL = "org.kde.kglobalaccel"
# As Qt numbers keys.
ALT_SPACE = 0x08000020


class OnKWinTest(SessionTest):
    @classmethod
    def make_keyboard(cls):
        return KWinKeyboard(cls.desktop, BINARIES)

    def start_widget(self, toolkit, environment=None):
        return self.start(KWinWidgetTarget, toolkit, environment=environment)


class OnKWinWithXPrograms(XTypingTests, HungServerTest, OnKWinTest):
    @staticmethod
    def make_desktop():
        return KWinDesktop(a11y=True, audio=True, xwayland=True)


class OnKWin(OnKWinTest):
    @staticmethod
    def make_desktop():
        return KWinDesktop(a11y=True, audio=True)

    def start_inaccessible_widget(self):
        """A field that accessibility does not know."""
        return self.start_widget("gtk3", {"NO_AT_BRIDGE": "1"})

    def test_text_is_exact_while_the_keys_are_held(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        for number, toolkit in enumerate(("gtk3", "gtk4", "qt6"), 1):
            target = self.start_widget(toolkit)
            with self.subTest(toolkit=toolkit):
                self.keyboard.hold()
                stream = service.stream(number)
                stream.say(EXACT)
                target.wait_for_text(EXACT)
                stream.say("More.")
                target.wait_for_text(EXACT + " More.")
                self.keyboard.release(ALT, SPACE)
                application.log.wait_for(f"stopRecording (session={number})")

    def test_text_is_typed_where_accessibility_takes_none(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        target = self.start_inaccessible_widget()
        self.keyboard.hold()
        service.stream(1).say(EXACT)
        target.wait_for_text(EXACT)
        self.keyboard.end_hold()
        application.log.wait_for("stopRecording (session=1)")
        settings = self.desktop.folder / "config" / "kwinrc"
        self.assertIn("tarvik-dictate-input-method", settings.read_text())
        application.close()
        self.assertNotIn("tarvik-dictate-input-method", settings.read_text())

    def test_a_long_dictation_is_switched_on_and_off(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        target = self.start_widget("qt6")
        self.keyboard.toggle()
        service.stream(1).say(EXACT)
        target.wait_for_text(EXACT)
        self.assertEqual(application.log.count("stopRecording"), 0)
        self.keyboard.toggle()
        application.log.wait_for("stopRecording (session=1)")
        self.assertEqual(application.log.count("startRecording"), 1)

    def test_a_killed_instance_leaves_nothing_that_the_next_one_minds(self):
        service = self.start_scripted_service()
        settings = self.desktop.folder / "config" / "kwinrc"
        killed = self.start_application(service, is_killed=True)
        target = self.start_inaccessible_widget()
        self.keyboard.hold()
        service.stream(1).say(EXACT)
        target.wait_for_text(EXACT)
        os.kill(killed.pid, signal.SIGKILL)
        self.keyboard.end_hold()
        self.assertIn("tarvik-dictate-input-method", settings.read_text())
        application = self.start_application(service)
        application.log.wait_for("KWin's input method is what it was before a killed run")
        self.assertNotIn("tarvik-dictate-input-method", settings.read_text())
        self.keyboard.hold()
        application.log.wait_for("startRecording (session=1)")
        self.keyboard.end_hold()
        application.log.wait_for("stopRecording (session=1)")

    def test_another_program_gives_its_shortcut_up_at_a_click(self):
        bus = Bus(self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
        self.addCleanup(bus.close)
        action = ["other.program", "launch", "Other Program", "Launch"]

        def call(method, signature, *arguments):
            return bus.call(ACCEL, "/kglobalaccel", "org.kde.KGlobalAccel", method, signature,
                            *arguments)

        def owner():
            """The program whose action has Alt+Space."""
            shortcuts = call("globalShortcutsByKey", "((ai)(i))", ([ALT_SPACE, 0, 0, 0],), (0,))[0]
            return shortcuts[0][2] if shortcuts else ""

        call("doRegister", "(as)", action)
        call("setShortcutKeys", "(asa(ai)u)", action, [([ALT_SPACE, 0, 0, 0],)], 6)
        self.addCleanup(call, "unregister", "(ss)", *action[:2])
        untrusted = (READY[0], "accessibility trusted → false", "hold register failed: -9878",
                     "KDE has given Alt+Space to: Other Program, Launch")
        application = self.start_application(self.start_scripted_service(), closes_setup=False,
                                             ready=untrusted)
        self.assertEqual(owner(), "other.program")
        reader = ScreenReader(self.desktop)
        self.addCleanup(reader.close)
        window = reader.window_with(RESTART)

        def state():
            """The texts of the setup window from its row for accessibility on."""
            names = [part.name for part in window.descendants]
            return names[names.index("Accessibility"):]

        self.assertIn(NOT_GRANTED, state())
        window.find("Grant Accessibility").press()
        application.log.wait_for("Other Program, Launch has given Alt+Space up")
        # Without a restart.
        application.log.wait_for("a hotkey is registered now: Alt+Space")
        self.assertEqual(owner(), "com.tarvik.dictate")
        wait_for(lambda: NOT_GRANTED not in state(), "the row of the setup window")
        self.keyboard.hold()
        application.log.wait_for("startRecording (session=1)")
        self.keyboard.end_hold()
        application.log.wait_for("stopRecording (session=1)")
        application.close()
        self.assertEqual(owner(), "other.program")
        # The agreement holds for the next start.
        application = self.start_application()
        self.assertEqual(owner(), "com.tarvik.dictate")
        application.close()
        self.assertEqual(owner(), "other.program")


class Untrusted(unittest.TestCase):
    """KWin asks for desktop files, and the application runs from a build folder."""

    def test_the_application_makes_a_desktop_file_and_removes_it(self):
        desktop = self.enterContext(KWinDesktop(trusts_all=False, a11y=True, audio=True))
        write_settings(desktop.environment,
                       {"deepgramApiKey": "a-key", "lastWelcomeShownForVersion": VERSION})
        application = Application(desktop, BINARIES, {}, [
            "no desktop file lets KWin show its windows to", "the front window by KWin"])
        self.addCleanup(application.close)
        entry = desktop.folder / "data/applications/com.tarvik.dictate.kwin.desktop"
        self.assertIn(f"Exec={BINARIES.resolve()}/tarvik-dictate\n", entry.read_text())
        self.assertEqual(application.close(), 0)
        self.assertFalse(entry.exists())
        self.assertEqual(application.log.count("KWin does not show its windows"), 0)


if __name__ == "__main__":
    if kwin_version() is None:
        print("skipped: kwin_wayland is not installed")
        sys.exit(SKIPPED)
    become_ordinary_user()
    unittest.main()
