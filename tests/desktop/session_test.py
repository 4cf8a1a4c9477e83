# SPDX-License-Identifier: MIT

"""The base class of the end-to-end tests in a Wayland session."""

import signal

from application import READY
from dictation_test import DictationTest
from pressed_keys import ALT, SPACE

SENTENCE = "the quick brown fox jumps over the lazy dog"
EXACT = "Zażółć – 日本語 😀, done."
REGISTERED = ("hold-to-talk registered", "tap-to-toggle registered")


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
                          **options):
        self.may_be_killed |= is_killed
        return super().start_application(service, closes_setup=False, ready=ready, **options)

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
        self.keyboard.release(SPACE, ALT)
