#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Dictation in a GNOME session: with real keys into real programs, and what GNOME keeps afterwards."""

import os
import signal
import time
import unittest

from accessible import ScreenReader
from application import READY
from desktop import wait_for
from gnome import GnomeDesktop, missing
from gnome_parts import BETWEEN_TAPS, GnomeFootTarget, GnomeKeyboard, GnomeWidgetTarget
from pressed_keys import ALT, SHIFT, SPACE
from session_test import EXACT, SessionTest
from setup_window import RESTART
from sway import become_ordinary_user
from x_programs import XTypingTests

ENGINE = "xkb:us::eng"
WINDOW_KEYS = "org.gnome.desktop.wm.keybindings"
WINDOW_MENU = "activate-window-menu"
MEDIA_KEYS = "org.gnome.settings-daemon.plugins.media-keys"
# Seconds without a repeat of the keys, by which a hold has ended where no text field has the keyboard.
WITHOUT_REPEATS = 1.5
# Programs that accessibility does not reach get the text by typing alone.
WITHOUT_ACCESSIBILITY = {"GTK_A11Y": "none", "NO_AT_BRIDGE": "1"}


class OnGnomeTest(SessionTest):
    @classmethod
    def make_keyboard(cls):
        return GnomeKeyboard(cls.desktop)

    def start_widget(self, toolkit, **options):
        return self.start(GnomeWidgetTarget, toolkit, **options)


class OnGnomeWithXPrograms(XTypingTests, OnGnomeTest):
    @staticmethod
    def make_desktop():
        return GnomeDesktop(a11y=True, audio=True, xwayland=True)

    def test_a_hold_in_an_x_program_ends_with_its_keys_alone(self):
        """GNOME tells no repeat while its service stands still, nor after Shift."""
        service = self.start_scripted_service()
        application = self.start_application(service)
        terminal = self.start_x_terminal()
        media_keys = self.desktop.media_keys
        self.addCleanup(media_keys.send_signal, signal.SIGCONT)
        for number, (first, second) in enumerate(((SPACE, ALT), (ALT, SPACE)), 1):
            with self.subTest(number=number):
                self.keyboard.hold()
                stream = service.stream(number)
                media_keys.send_signal(signal.SIGSTOP)
                self.keyboard.tap(SHIFT)
                time.sleep(WITHOUT_REPEATS)
                self.assertEqual(application.log.count("stopRecording"), number - 1)
                stream.say("Still here.")
                wait_for(lambda: terminal.text.endswith("Still here."), "the text in the terminal")
                self.keyboard.release(first)
                start = time.monotonic()
                application.log.wait_for(f"stopRecording (session={number})")
                self.assertLess(time.monotonic() - start, 0.3)
                self.keyboard.release(second)
                media_keys.send_signal(signal.SIGCONT)
                time.sleep(BETWEEN_TAPS)
        self.assertEqual(application.log.count("startRecording"), 2)


class OnGnome(OnGnomeTest):
    @staticmethod
    def make_desktop():
        return GnomeDesktop(a11y=True, audio=True)

    def start_foot(self):
        return self.start(GnomeFootTarget)

    def engine(self):
        return self.desktop.run(["ibus", "engine"], check=False).strip()

    def wait_for_layout(self):
        wait_for(lambda: self.engine() == ENGINE, "the user's engine")

    def begins_recording(self, application):
        """Whether a press of the hold hotkey begins the first recording, as a condition."""
        def begins():
            self.keyboard.hold()
            self.keyboard.end_hold()
            try:
                return application.log.wait_for("startRecording (session=1)", timeout=3)
            except AssertionError:
                return None
        return begins

    def targets(self):
        """One after the other, each in front while it is used."""
        for start in (lambda: self.start_widget("gtk4"), lambda: self.start_widget("qt6"),
                      lambda: self.start_widget("gtk4", environment=WITHOUT_ACCESSIBILITY),
                      self.start_foot):
            target = start()
            yield target
            target.close()

    def test_speech_becomes_words_in_fields(self):
        application = self.start_application(self.start_local_service())
        for toolkit in ("gtk4", "qt6"):
            target = self.start_widget(toolkit)
            self.speak_into(target)
            target.close()
        self.assertEqual(application.log.count("startRecording"), 2)
        wait_for(lambda: application.log.count("stopRecording") == 2, "the end of both recordings")
        self.wait_for_layout()

    def test_text_is_exact_while_the_keys_are_held(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        for number, target in enumerate(self.targets(), 1):
            with self.subTest(number=number):
                self.keyboard.hold()
                stream = service.stream(number)
                stream.say(EXACT)
                target.wait_for_text(EXACT)
                stream.say("More.")
                target.wait_for_text(EXACT + " More.")
                self.assertEqual(application.log.count("stopRecording"), number - 1)
                self.keyboard.release(ALT, SPACE)
                application.log.wait_for(f"stopRecording (session={number})")
                self.wait_for_layout()

    def test_a_long_dictation_is_switched_on_and_off(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        for number, target in enumerate(self.targets(), 1):
            with self.subTest(number=number):
                self.keyboard.toggle()
                stream = service.stream(number)
                stream.say(EXACT)
                target.wait_for_text(EXACT)
                self.assertEqual(application.log.count("stopRecording"), number - 1)
                self.keyboard.toggle()
                application.log.wait_for(f"stopRecording (session={number})")
                self.wait_for_layout()
        self.assertEqual(application.log.count("startRecording"), number)

    def test_shift_in_the_middle_of_a_hold_ends_nothing(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        for number, start in enumerate((lambda: self.start_widget("gtk4"), self.start_foot), 1):
            with self.subTest(number=number):
                target = start()
                self.keyboard.hold()
                stream = service.stream(number)
                stream.say("First.")
                target.wait_for_text("First.")
                self.keyboard.press(SHIFT)
                stream.say("Second.")
                target.wait_for_text("First. Second.")
                time.sleep(WITHOUT_REPEATS)
                self.keyboard.release(SHIFT)
                time.sleep(WITHOUT_REPEATS)
                stream.say("Third.")
                target.wait_for_text("First. Second. Third.")
                self.assertEqual(application.log.count("startRecording"), number)
                self.assertEqual(application.log.count("stopRecording"), number - 1)
                self.keyboard.end_hold()
                application.log.wait_for(f"stopRecording (session={number})")
                target.close()
        self.wait_for_layout()

    def test_a_killed_instance_leaves_nothing_that_the_next_one_minds(self):
        service = self.start_scripted_service()
        killed = self.start_application(service, is_killed=True)
        target = self.start_foot()
        self.keyboard.hold()
        service.stream(1).say("Before.")
        target.wait_for_text("Before.")
        os.kill(killed.pid, signal.SIGKILL)
        killed.process.wait()
        self.keyboard.end_hold()
        self.assertNotEqual(self.engine(), ENGINE)
        self.start_application(service)
        self.wait_for_layout()

    def test_gnome_has_none_of_our_shortcuts_afterwards(self):
        application = self.start_application()
        self.assertIn("tarvik-dictate", self.desktop.get(MEDIA_KEYS, "custom-keybindings"))
        application.close()
        self.assertEqual(self.desktop.get(MEDIA_KEYS, "custom-keybindings"), "@as []")
        self.assertEqual(self.engine(), ENGINE)

    def test_the_menu_of_windows_gives_its_shortcut_up_at_a_click(self):
        self.desktop.set(WINDOW_KEYS, WINDOW_MENU, "['<Alt>space']")
        self.addCleanup(self.desktop.set, WINDOW_KEYS, WINDOW_MENU, "[]")
        untrusted = (READY[0], "accessibility trusted → false", "hold register failed: -9878",
                     "Alt+Space belongs to GNOME's shortcut: the menu of windows")
        application = self.start_application(self.start_scripted_service(), closes_setup=False,
                                             ready=untrusted)
        self.assertEqual(self.desktop.get(WINDOW_KEYS, WINDOW_MENU), "['<Alt>space']")
        reader = ScreenReader(self.desktop)
        self.addCleanup(reader.close)
        window = reader.window_with(RESTART)
        window.find("Grant Accessibility").press()
        application.log.wait_for("the menu of windows has given Alt+Space up")
        self.assertEqual(self.desktop.get(WINDOW_KEYS, WINDOW_MENU), "@as []")
        # Without a restart.
        application.log.wait_for("a hotkey is registered now: Alt+Space")
        self.assertIn("tarvik-dictate-hold", self.desktop.get(MEDIA_KEYS, "custom-keybindings"))

        # GNOME hears of the shortcut a little later.
        wait_for(self.begins_recording(application), "a recording")
        application.log.wait_for("stopRecording (session=1)")
        application.close()
        self.assertEqual(self.desktop.get(WINDOW_KEYS, WINDOW_MENU), "['<Alt>space']")
        # The agreement holds for the next start.
        self.start_application(closes_setup=False)
        self.assertEqual(self.desktop.get(WINDOW_KEYS, WINDOW_MENU), "@as []")


if __name__ == "__main__":
    if missing():
        print(f"Skipped: {missing()}.")
        raise SystemExit(77)
    become_ordinary_user()
    unittest.main()
