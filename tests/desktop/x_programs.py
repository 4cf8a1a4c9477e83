# SPDX-License-Identifier: MIT

"""Tests of dictation into the X programs of a Wayland session."""

import os
import signal

from desktop import wait_for
from pressed_keys import A, B
from processes import processes_named
from session_test import EXACT
from target import TerminalTarget, WidgetWithoutTitle

LONG = "Zażółć gęślą jaźń, съешь же ещё, 明日の朝九時に. " * 8
# The last character is on no keyboard.
RARE = "plain words, ćwierć, ᚠ"
RARE_SYMBOL = str(0x01000000 + ord("ᚠ"))
# What a program of X11 is without accessibility, and without the input method of Wayland's programs.
AS_X_PROGRAM = {"GDK_BACKEND": "x11", "NO_AT_BRIDGE": "1", "GTK_IM_MODULE": "gtk-im-context-simple"}


class XTerminal(TerminalTarget):
    """Nobody tells that it has the keyboard."""

    def _find_window(self, *_):
        pass


class XProgramTests:
    """A class beside it has the desktop, with an X server for programs."""

    def start_x_terminal(self):
        """Starts a terminal, and types into it until it has the keyboard."""
        terminal = self.start(XTerminal)
        wait_for(lambda: self.keyboard.tap(A) or terminal.text, "the keyboard in the terminal")
        self.keyboard.tap(B)
        wait_for(lambda: terminal.text.endswith("b"), "the last key in the terminal")
        return terminal

    def start_x_widget(self):
        return self.start(WidgetWithoutTitle, "gtk3", environment=AS_X_PROGRAM)

    def test_x_programs_get_the_exact_text(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        number = 0
        for start in (self.start_x_terminal, self.start_x_widget):
            target = start()
            for begin, end in ((self.keyboard.hold, self.keyboard.end_hold),
                               (self.keyboard.toggle, self.keyboard.toggle)):
                number += 1
                before = target.text
                begin()
                stream = service.stream(number)
                stream.say(EXACT)
                target.wait_for_text(before + EXACT)
                stream.say(LONG)
                target.wait_for_text(f"{before}{EXACT} {LONG}")
                end()
                application.log.wait_for(f"stopRecording (session={number})")
            target.close()

    def test_the_words_stay_in_an_x_program_when_another_window_takes_the_keyboard(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        terminal = self.start_x_terminal()
        before = terminal.text
        self.keyboard.toggle()
        stream = service.stream(1)
        stream.say("Here.")
        terminal.wait_for_text(before + "Here.")
        other = self.start_widget("gtk4")
        stream.say("There.")
        terminal.wait_for_text(before + "Here. There.")
        self.assertEqual(other.text, "")
        self.keyboard.toggle()
        application.log.wait_for("stopRecording (session=1)")

    def test_a_dictation_goes_elsewhere_after_one_into_an_x_program(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        terminal = self.start_x_terminal()
        before = terminal.text
        other = self.start_widget("gtk4")
        self.keyboard.hold()
        service.stream(1).say(EXACT)
        other.wait_for_text(EXACT)
        self.keyboard.end_hold()
        application.log.wait_for("stopRecording (session=1)")
        self.assertEqual(terminal.text, before)


class XTypingTests(XProgramTests):
    """As XProgramTests, where the X server types."""

    def test_a_stopped_x_program_reads_the_exact_text_after_the_hold(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        terminal = self.start_x_terminal()
        self.wait_for_x_server(application)
        before = terminal.text
        self.keyboard.hold()
        application.log.wait_for("startRecording (session=1)")
        terminal.process.send_signal(signal.SIGSTOP)
        self.addCleanup(terminal.process.send_signal, signal.SIGCONT)
        service.stream(1).say(RARE)
        wait_for(lambda: RARE_SYMBOL in self.lent_keys(), "the key of the last character")
        self.keyboard.end_hold()
        application.log.wait_for("stopRecording (session=1)")
        terminal.process.send_signal(signal.SIGCONT)
        terminal.wait_for_text(before + RARE)

    def wait_for_x_server(self, application):
        """Waits until the application types through the X server, where it does not begin with the
        recording."""

    def lent_keys(self):
        return self.desktop.run(["xprop", "-root", "_TARVIK_DICTATE_REMAPPED_KEYS"])


class HungServerTest:
    """Not in GNOME, whose shell waits for its X server. XProgramTests stands beside it."""

    def test_an_x_server_that_hangs_holds_up_no_text_for_other_programs(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        terminal = self.start_x_terminal()
        self.keyboard.toggle()
        service.stream(1).say("Here.")
        wait_for(lambda: terminal.text.endswith("Here."), "the text in the terminal")
        self.keyboard.toggle()
        application.log.wait_for("stopRecording (session=1)")
        other = self.start_widget("gtk4")
        (server,) = processes_named(self.desktop, "Xwayland")
        os.kill(server, signal.SIGSTOP)
        self.addCleanup(os.kill, server, signal.SIGCONT)
        self.keyboard.hold()
        application.log.wait_for("startRecording (session=2)")
        service.stream(2).say(EXACT)
        other.wait_for_text(EXACT)
        self.keyboard.end_hold()
        application.log.wait_for("stopRecording (session=2)")
        os.kill(server, signal.SIGCONT)
        self.assertTrue(terminal.text.endswith("Here."))
