#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Dictation in a Sway session: with real keys into real programs, and what Sway keeps afterwards."""

import os
import signal
import unittest

from desktop import wait_for
from dictation_test import BINARIES
from display_loss import DisplayLossTests
from pressed_keys import A, ALT, B, ESCAPE, F9, SPACE
from processes import processes_named
from session_test import EXACT, SessionTest
from sway import SwayDesktop, become_ordinary_user
from sway_parts import (FootTarget, SwayWidgetTarget, WaylandKeyboard, wait_for_sway_window,
                        windows)
from target import WidgetWithoutTitle
from x_programs import AS_X_PROGRAM, HungServerTest, XTerminal, XTypingTests


class OnSwayTest(SessionTest):
    """A private Sway desktop with a microphone and a keyboard, for all tests of the class."""

    @staticmethod
    def make_desktop():
        return SwayDesktop(a11y=True, audio=True)

    @classmethod
    def make_keyboard(cls):
        return WaylandKeyboard(cls.desktop, BINARIES)

    def start_widget(self, toolkit="gtk3", **options):
        return self.start(SwayWidgetTarget, toolkit, **options)

    def start_foot(self):
        return self.start(FootTarget)


class OnSwayWithXPrograms(XTypingTests, HungServerTest, OnSwayTest):
    @staticmethod
    def make_desktop():
        return SwayDesktop(a11y=True, audio=True, xwayland="enable")

    def wait_for_x_server(self, application):
        application.log.wait_for("typing into X programs by XTEST")

    def test_an_x_program_may_ask_for_the_whole_keyboard_after_a_text(self):
        service = self.start_scripted_service()
        self.start_application(service)
        self.start_x_terminal()
        target = self.start_foot()
        self.keyboard.hold()
        service.stream(1).say(EXACT)
        target.wait_for_text(EXACT)
        self.desktop.run(["xkbcomp", "-w0", self.desktop.environment["DISPLAY"], "-"])
        self.keyboard.end_hold()

    def test_a_hold_in_an_x_program_opens_no_menu(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        target = self.start(WidgetWithoutTitle, "qt6", menu_bar=True,
                            environment=AS_X_PROGRAM | {"QT_QPA_PLATFORM": "xcb"})
        self.wait_for_x_server(application)
        for number in (1, 2, 3):
            self.keyboard.hold()
            application.log.wait_for(f"startRecording (session={number})")
            # With accessibility Qt 6 takes an Alt that goes up right after the key for a lone one.
            wait_for(lambda number=number: target.silent_keys == number, "the key beside Alt")
            self.keyboard.end_hold()
            application.log.wait_for(f"stopRecording (session={number})")
            self.keyboard.tap(A)
            target.wait_for_text("a" * number)

    def check_text_behind(self, start, open_other):
        """Dictates into what start() starts. In the middle open_other() opens another window, and
        returns what reads its text. That window has the keyboard afterwards."""
        service = self.start_scripted_service()
        self.start_application(service)
        target = start()
        expected = target.text + "Here."
        self.keyboard.toggle()
        stream = service.stream(1)
        stream.say("Here.")
        target.wait_for_text(expected)
        text_of_other = open_other(target)
        # A field may select its text when it gets the keyboard back, so that a key replaces the text.
        for key, character in ((A, "a"), (B, "b"), (A, "a"), (B, "b")):
            stream.say(EXACT)
            expected += " " + EXACT
            target.wait_for_text(expected)
            self.wait_until_back()
            self.keyboard.tap(key)
            wait_for(lambda: text_of_other().endswith(character), "the key in the other window")
        self.assertEqual(target.text, expected)
        self.keyboard.toggle()

    def wait_until_back(self):
        """Waits until the window has the keyboard again that the user has opened last."""
        newest = max(window["id"] for window in windows(self.desktop))
        wait_for_sway_window(self.desktop, lambda window: window["id"] == newest
                             and window["focused"], "the keyboard back in the newest window")

    def test_a_window_of_x_in_front_keeps_the_keyboard_after_a_text_for_another_one(self):
        def open_other(_terminal):
            other = self.start(XTerminal)
            self.wait_until_back()
            return lambda: other.text

        self.check_text_behind(self.start_x_terminal, open_other)

    def test_a_window_of_the_same_x_program_keeps_the_keyboard_after_a_text_for_the_other(self):
        def open_other(widget):
            second = widget.out.with_name(widget.out.name + ".second")
            widget.process.send_signal(signal.SIGUSR1)
            wait_for(second.exists, "the keyboard in the second window")
            return second.read_text

        self.check_text_behind(self.start_x_widget, open_other)

    def test_a_window_on_another_workspace_gets_the_text(self):
        def open_other(_terminal):
            self.desktop.run(["swaymsg", "workspace", "other"])
            other = self.start_foot()
            return lambda: other.text

        self.addCleanup(self.desktop.run, ["swaymsg", "workspace", "1"])
        self.check_text_behind(self.start_x_terminal, open_other)

    def test_the_words_stay_in_a_terminal_when_an_x_program_takes_the_keyboard(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        target = self.start_foot()
        self.keyboard.toggle()
        stream = service.stream(1)
        stream.say("Here.")
        target.wait_for_text("Here.")
        terminal = self.start(XTerminal)
        wait_for(lambda: not target.is_active, "the keyboard in the other terminal")
        stream.say(EXACT)
        target.wait_for_text("Here. " + EXACT)
        self.assertEqual(terminal.text, "")
        self.keyboard.toggle()
        application.log.wait_for("stopRecording (session=1)")


class OnSwayWithAnUnusedXServer(OnSwayTest):
    @staticmethod
    def make_desktop():
        return SwayDesktop(a11y=True, audio=True, xwayland="enable")

    def test_a_dictation_starts_no_x_server(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        target = self.start_foot()
        self.keyboard.hold()
        service.stream(1).say(EXACT)
        target.wait_for_text(EXACT)
        self.keyboard.end_hold()
        application.log.wait_for("stopRecording (session=1)")
        self.assertEqual(processes_named(self.desktop, "Xwayland"), [])


class OnSway(OnSwayTest):
    def test_speech_becomes_words_in_a_terminal_and_in_a_field(self):
        application = self.start_application(self.start_local_service())
        self.speak_into(self.start_foot())
        self.speak_into(self.start_widget())
        self.assertEqual(application.log.count("startRecording"), 2)
        wait_for(lambda: application.log.count("stopRecording") == 2, "the end of both recordings")

    def test_a_long_dictation_is_switched_on_and_off(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        target = self.start_foot()
        self.keyboard.toggle()
        stream = service.stream(1)
        stream.say(EXACT)
        target.wait_for_text(EXACT)
        self.assertEqual(application.log.count("stopRecording"), 0)
        self.keyboard.toggle()
        application.log.wait_for("stopRecording (session=1)")
        self.assertEqual(application.log.count("startRecording"), 1)

    def test_text_is_exact_while_the_keys_are_held(self):
        service = self.start_scripted_service()
        self.start_application(service)
        for number, target in enumerate(
                (self.start_foot(), self.start_widget("gtk3"), self.start_widget("gtk4"),
                 self.start_widget("qt6", menu_bar=True)), 1):
            target.activate()
            wait_for(lambda: target.is_active, "the target")
            with self.subTest(number=number):
                self.keyboard.hold()
                stream = service.stream(number)
                stream.say(EXACT)
                target.wait_for_text(EXACT)
                stream.say("More.")
                target.wait_for_text(EXACT + " More.")
                self.keyboard.release(ALT, SPACE)

    def test_a_hold_ends_though_another_key_is_pressed(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        self.start_foot()
        self.keyboard.hold()
        application.log.wait_for("startRecording (session=1)")
        self.keyboard.tap(A)
        self.keyboard.end_hold()
        application.log.wait_for("stopRecording (session=1)")

    def test_bindings_of_the_users_own_give_a_hold(self):
        call = ("gdbus call --session --dest com.tarvik.dictate --object-path /com/tarvik/dictate "
                "--method org.freedesktop.Application.ActivateAction {} [] {{}}")
        service = self.start_scripted_service()
        application = self.start_application(service)
        target = self.start_foot()
        environment = " ".join(f"{name}={self.desktop.environment[name]}"
                               for name in ("DBUS_SESSION_BUS_ADDRESS",))
        for flag, action in (("--no-repeat", "press"), ("--release", "release")):
            self.desktop.run(["swaymsg", "--", "bindsym", flag, "F9", "exec", "env", environment,
                              call.format(action)])
        self.keyboard.press(F9)
        service.stream(1).say("By a pedal.")
        target.wait_for_text("By a pedal.")
        self.assertEqual(application.log.count("stopRecording"), 0)
        self.keyboard.release(F9)
        application.log.wait_for("stopRecording (session=1)")

    def test_a_killed_instance_leaves_nothing_that_the_next_one_minds(self):
        service = self.start_scripted_service()
        killed = self.start_application(service, is_killed=True)
        self.keyboard.hold()
        killed.log.wait_for("startRecording")
        os.kill(killed.pid, signal.SIGKILL)
        self.keyboard.end_hold()
        application = self.start_application(service)
        target = self.start_foot()
        self.keyboard.hold()
        application.log.wait_for("startRecording (session=1)")
        self.keyboard.end_hold()
        application.log.wait_for("stopRecording (session=1)")
        self.assertEqual(target.text, "")

    def test_the_prompt_has_the_keyboard(self):
        application = self.start_application(settings={"deepgramApiKey": ""})
        self.start_foot()
        self.keyboard.hold()
        self.keyboard.end_hold()
        wait_for_sway_window(
            self.desktop, lambda window: window["pid"] == application.pid and window["focused"],
            "the prompt with the keyboard")
        self.keyboard.tap(ESCAPE)
        wait_for(lambda: all(window["pid"] != application.pid for window in windows(self.desktop)),
                 "the end of the prompt")

    def check_setup_window(self, application):
        window = wait_for_sway_window(
            self.desktop, lambda window: window["pid"] == application.pid
            and window["type"] == "floating_con" and window["sticky"], "the floating setup window")
        wait_for_sway_window(
            self.desktop, lambda now: now["id"] == window["id"] and now["focused"]
            and 640 < now["rect"]["width"] < 1280, "its own size, which is not half the screen")

    def test_the_setup_window_floats_in_its_own_size(self):
        self.start_foot()
        self.check_setup_window(self.start_application(closes_setup=False))

    def test_the_setup_window_floats_after_a_reload_too(self):
        self.start_foot()
        application = self.start_application(self.start_scripted_service())
        self.desktop.run(["swaymsg", "reload"])

        def is_heard():
            self.keyboard.tap(ALT, SPACE)
            return application.log.count("startRecording") > 0

        wait_for(is_heard, "the hotkeys, which come back last after the reload")
        self.desktop.run([BINARIES / "tarvik-dictate"])
        self.check_setup_window(application)

    def test_sway_has_none_of_our_bindings_afterwards(self):
        application = self.start_application()
        application.close()
        for combination in ("Mod1+space", "Mod1+Shift+space"):
            for form in ([], ["--release"]):
                self.assertFalse(self.desktop.succeeds(
                    ["swaymsg", "--", "unbindsym", *form, combination]), combination)


class SwayLoss(DisplayLossTests, OnSwayTest):
    def start_display(self):
        return self.desktop.start_sway("other")

    def start_target(self):
        return self.start_widget()

    def test_a_recording_is_closed_and_counted_when_sway_crashes(self):
        self.check_that_a_recording_is_closed(lambda sway: sway.kill())

    def test_without_a_recording_it_ends_at_once_when_sway_crashes(self):
        sway, variables = self.start_display()
        application = self.start_on(variables, self.start_scripted_service())
        sway.kill()
        self.check_end(application)


if __name__ == "__main__":
    become_ordinary_user()
    unittest.main()
