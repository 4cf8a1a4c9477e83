#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Text typed into programs without accessible text fields."""

import signal
import time
import unittest

from desktop import wait_for
from dictation_test import DictationTest

MIXED = "Hold: Zażółć, мир, 日本語 😀 ok!"


class Typing(DictationTest):
    def setUp(self):
        self.service = self.start_scripted_service()
        self.application = self.start_application(self.service)

    def test_text_is_typed_into_a_terminal_while_the_keys_are_held(self):
        target = self.start_terminal()
        self.dictate(self.service, MIXED, "second piece")
        target.wait_for_text(MIXED + " second piece")
        self.assertNotIn("stopRecording", "\n".join(self.application.log.lines))
        self.keyboard.release()
        self.application.log.wait_for("stopRecording (session=1)")
        # The window manager's menu is also on Alt+Space. An open menu would take these keys.
        self.keyboard.type("typed by hand")
        target.wait_for_text(MIXED + " second piecetyped by hand")

    def test_text_is_typed_after_the_release(self):
        self.service.closes_at_end = False
        target = self.start_terminal()
        stream = self.dictate(self.service)
        wait_for(lambda: stream.audio, "sound from the application")
        self.keyboard.release()
        self.application.log.wait_for("audio.stop (session=1)")
        stream.say(MIXED)
        target.wait_for_text(MIXED)

    def test_no_shortcut_fires_in_a_program_with_a_menu_bar(self):
        target = self.start_target("gtk3", menu_bar=True, environment={"NO_AT_BRIDGE": "1"})
        text = "fFqQ File Quit " + MIXED
        self.dictate(self.service, text)
        target.wait_for_text(text)
        self.assertIsNone(target.process.poll())

    def test_long_text_is_typed_whole(self):
        target = self.start_terminal()
        text = " ".join(f"Wörd{number}" for number in range(60))
        self.dictate(self.service, text)
        target.wait_for_text(text, timeout=15)

    def test_text_for_a_stopped_terminal_arrives_whole_afterwards(self):
        for number, press in enumerate((self.keyboard.hold, self.keyboard.toggle), start=1):
            target = self.start_terminal()
            press()
            self.application.log.wait_for(f"startRecording (session={number})")
            stream = self.service.stream(number)
            target.process.send_signal(signal.SIGSTOP)
            self.addCleanup(target.process.send_signal, signal.SIGCONT)
            stream.say("Müller's café is closed.")
            # The time that the terminal is stopped.
            time.sleep(1.2)
            stream.say(MIXED)
            time.sleep(1.2)
            target.process.send_signal(signal.SIGCONT)
            target.wait_for_text("Müller's café is closed. " + MIXED)
            if press == self.keyboard.hold:
                self.keyboard.release()
            else:
                press()
            self.application.log.wait_for(f"audio.stop (session={number})")

    def test_caps_lock_and_num_lock_change_nothing(self):
        for key in ("Caps_Lock", "Num_Lock"):
            self.keyboard.press(key)
            self.addCleanup(self.keyboard.press, key)
        target = self.start_terminal()
        self.dictate(self.service, "Mixed Case 123")
        target.wait_for_text("Mixed Case 123")
        self.keyboard.release()
        self.application.log.wait_for("stopRecording")

    def test_it_works_again_after_a_layout_switch(self):
        target = self.start_terminal()
        self.addCleanup(self.desktop.run, ["setxkbmap", "us"])
        for number, layout in enumerate(("de", "ru", "us"), start=1):
            self.desktop.run(["setxkbmap", layout])
            # At a change of the layout the window manager grabs the combination again. The
            # application follows with its own grab.
            self.start_recording_after_a_switch(number)
            stream = self.service.stream(number)
            text = f"{layout}: yz {MIXED}"
            before = target.text
            stream.say(text)
            target.wait_for_text(before + text)
            self.keyboard.release()
            self.application.log.wait_for(f"audio.stop (session={number})")

    def start_recording_after_a_switch(self, number):
        """Presses the hotkey, a second time if needed. The first press may come before the
        application's new grab, which is complete 0.6 s after the switch."""
        started = f"startRecording (session={number})"
        self.addCleanup(self.keyboard.release)
        self.keyboard.hold()
        try:
            self.application.log.wait_for(started, timeout=1)
        except AssertionError:
            self.keyboard.release()
            self.keyboard.press("Escape")
            self.keyboard.hold()
            self.application.log.wait_for(started)

    def test_typed_text_never_lands_in_another_window(self):
        first = self.start_terminal(title="first")
        second = self.start_terminal(title="second")
        first.activate()
        stream = self.dictate(self.service, "Here")
        first.wait_for_text("Here")
        second.activate()
        stream.say("and not there")
        first.wait_for_text("Here and not there")
        self.assertEqual(second.text, "")
        wait_for(lambda: second.is_active, "the focus back where the user has put it")


if __name__ == "__main__":
    unittest.main()
