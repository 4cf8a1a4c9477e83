# SPDX-License-Identifier: MIT

"""The base class of the end-to-end tests in a Wayland session."""

import signal

from accessible import ScreenReader
from application import READY
from bus import NoReply
from desktop import wait_for
from dictation_test import DictationTest
from pressed_keys import CTRL, W
from setup_window import RESTART

SENTENCE = "the quick brown fox jumps over the lazy dog"
EXACT = "Zażółć – 日本語 😀, done."
REGISTERED = ("hold-to-talk registered", "tap-to-toggle registered")


def close_setup_window(desktop, keyboard):
    """Waits until the setup window has the keyboard, and closes it by a key. A window that is still to
    come would take the keyboard away from a program."""
    reader = ScreenReader(desktop)
    window = reader.window_with(RESTART)
    wait_for(lambda: window.has("active"), "the setup window in front")
    keyboard.tap(CTRL, W)

    def is_gone():
        try:
            return not window.has("showing")
        except NoReply:
            return True

    wait_for(is_gone, "the end of the setup window")
    reader.close()


class SessionTest(DictationTest):
    """A derived class says which desktop and which keyboard. The application registers its hotkeys, and
    may be killed by the test."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.addClassCleanup(cls.keyboard.close)

    def setUp(self):
        self.may_be_killed = False

    def start_application(self, service=None, ready=(*READY, *REGISTERED), is_killed=False,
                          closes_setup=True, **options):
        self.may_be_killed |= is_killed
        application = super().start_application(service, closes_setup=False, ready=ready, **options)
        if closes_setup:
            close_setup_window(self.desktop, self.keyboard)
        return application

    def end_application(self, application):
        self.keyboard.release_all()
        status = application.close()
        if status != 0 or self.has_failed():
            print(f"The application's log in {self.id()}:", *application.log.lines, sep="\n  ")
        expected = (0, -signal.SIGKILL) if self.may_be_killed else (0,)
        self.assertIn(status, expected, "exit status of the application")

    def start(self, target, *arguments, **options):
        """Starts a program of the class `target`, until the end of the test."""
        started = target(self.desktop, *arguments, **options)
        self.addCleanup(started.close)
        return started

    def speak_into(self, target):
        self.keyboard.hold()
        self.wait_until_listening()
        self.microphone.speak(SENTENCE)
        self.wait_until_heard(target, SENTENCE)
        self.keyboard.end_hold()
