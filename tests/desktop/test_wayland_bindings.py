#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Dictation with a compositor of which only the protocols of wlroots are known. Its own bindings call
the application: Sway that does not tell its socket, and labwc where it is installed."""

import ctypes
import os
import shutil
import signal
import unittest

from desktop import wait_for
from dictation_test import BINARIES
from pressed_keys import A, ALT, B, SPACE
from session_test import EXACT, SessionTest, close_setup_window
from sway import LabwcDesktop, SwayDesktop, become_ordinary_user
from sway_parts import FootTarget, WaylandKeyboard
from target import WidgetWithoutTitle

SERVED = ("typing by a virtual keyboard in Wayland: the compositor offers it",
          "the front window by Wayland and AT-SPI: the compositor offers it",
          "accessibility trusted → true")


def qt_version():
    version = ctypes.CDLL("libQt6Core.so.6").qVersion
    version.restype = ctypes.c_char_p
    return tuple(map(int, version().decode().split(".")))


class Terminal(FootTarget):
    """Nobody tells that it has the keyboard."""

    def _find_window(self, *_):
        pass


class AnyCompositor:
    """The tests; a class beside it has the desktop."""

    @classmethod
    def make_keyboard(cls):
        return WaylandKeyboard(cls.desktop, BINARIES)

    def start_application(self, service, ready=SERVED, **options):
        return super().start_application(service, ready=ready, **options)

    def start_terminal(self):
        """Starts a terminal, and types into it until it has the keyboard."""
        terminal = self.start(Terminal)
        wait_for(lambda: self.keyboard.tap(A) or terminal.text, "the keyboard in the terminal")
        self.keyboard.tap(B)
        wait_for(lambda: terminal.text.endswith("b"), "the last key in the terminal")
        return terminal

    def dictate_into(self, target, service, application):
        before = target.text
        number = len(service.streams) + 1
        self.begin()
        stream = service.stream(number)
        stream.say(EXACT)
        target.wait_for_text(before + EXACT, timeout=10)
        stream.say("More.")
        target.wait_for_text(before + EXACT + " More.", timeout=10)
        self.end()
        application.log.wait_for(f"stopRecording (session={number})")

    def test_the_words_go_into_the_window_where_it_began(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        self.dictate_into(self.start(WidgetWithoutTitle, "gtk3"), service, application)
        self.dictate_into(self.start(WidgetWithoutTitle, "qt6"), service, application)
        self.dictate_into(self.start_terminal(), service, application)

    def test_the_words_stay_in_a_terminal_when_another_window_takes_the_keyboard(self):
        service = self.start_scripted_service()
        self.start_application(service)
        terminal = self.start_terminal()
        before = terminal.text
        self.begin()
        stream = service.stream(1)
        stream.say("Here.")
        terminal.wait_for_text(before + "Here.", timeout=10)
        other = self.start(WidgetWithoutTitle, "gtk3")
        stream.say("There.")
        terminal.wait_for_text(before + "Here. There.", timeout=10)
        self.assertEqual(other.text, "")

    def test_the_words_go_to_the_terminal_in_front_of_a_program_that_hangs(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        widget = self.start(WidgetWithoutTitle, "gtk3")
        self.dictate_into(widget, service, application)
        widget.process.send_signal(signal.SIGSTOP)
        self.addCleanup(widget.process.send_signal, signal.SIGCONT)
        self.dictate_into(self.start_terminal(), service, application)
        widget.process.send_signal(signal.SIGCONT)
        widget.tell("publish")
        # The first of the user's own keys came before the terminal had the keyboard.
        self.assertEqual(widget.text.rstrip("a"), EXACT + " More.")


class BoundActions(AnyCompositor):
    """As AnyCompositor, where the compositor's bindings call the actions. The hotkeys of a portal are
    not asked for again."""

    @unittest.skipIf(qt_version() >= (6, 8), "Qt 6.8 itself waits for the session bus")
    def test_a_session_bus_that_is_silent_at_the_start_is_used_once_it_answers(self):
        service = self.start_scripted_service()
        bus = self.desktop.session_bus.pid
        os.kill(bus, signal.SIGSTOP)
        self.addCleanup(os.kill, bus, signal.SIGCONT)
        application = self.start_application(service, ready=SERVED[:1], closes_setup=False)
        os.kill(bus, signal.SIGCONT)
        # The bindings call the application over the bus.
        application.log.wait_for("the session bus is back")
        application.log.wait_for("accessibility trusted → true")
        close_setup_window(self.desktop, self.keyboard)
        self.dictate_into(self.start(WidgetWithoutTitle, "gtk3"), service, application)
        self.dictate_into(self.start_terminal(), service, application)


class OnSwayWithoutItsSocket(BoundActions, SessionTest):
    @staticmethod
    def make_desktop():
        return SwayDesktop(tells=False, a11y=True, audio=True)

    def begin(self):
        self.keyboard.hold()

    def end(self):
        self.keyboard.end_hold()


@unittest.skipUnless(shutil.which("labwc"), "labwc is not installed")
class OnLabwc(BoundActions, SessionTest):
    """labwc binds a combination once, so that nothing is called at the release."""

    @staticmethod
    def make_desktop():
        return LabwcDesktop(a11y=True, audio=True)

    def begin(self):
        self.keyboard.tap(ALT, SPACE)

    end = begin


if __name__ == "__main__":
    become_ordinary_user()
    unittest.main()
