#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The prompt for the API key, which the hotkey opens when no key is stored."""

import time
import unittest

from accessible import ScreenReader
from clipboard import Clipboard
from desktop import wait_for
from dictation_test import DictationTest
from windows import visible_windows, wait_for_window

QUESTION = "Deepgram API Key"
EXPLANATION = ("Paste your Deepgram API key. It will be stored in your settings file, which only "
               "you can read.")
KEY = "deepgramApiKey"
# In seconds. The X server repeats a key that is held for more than 0.66 s.
REPEATING_HOLD = 1.5


class Prompt(DictationTest):
    def setUp(self):
        self.reader = ScreenReader(self.desktop)
        self.addCleanup(self.reader.close)
        self.service = self.start_scripted_service()
        self.application = self.start_application(self.service, settings={KEY: ""})
        self.other = self.start_target("gtk3")
        self.open_prompt()

    def open_prompt(self):
        """Presses the hotkey and waits for the prompt."""
        self.hold()
        self.window = wait_for_window(self.desktop).wait_until_active()
        self.keyboard.release()
        self.dialog = self.reader.window_with(EXPLANATION)
        self.field = next(part for part in self.dialog.controls if part.role == "text")
        wait_for(lambda: self.field.has("focused"), "the focus in the field")

    @property
    def stored_key(self):
        """The API key in the settings file; None when there is none."""
        for line in self.settings_file.read_text().splitlines():
            if line.startswith(KEY + "="):
                return line.removeprefix(KEY + "=")
        return None

    def wait_until_stored(self, key):
        wait_for(lambda: self.stored_key == key, f"the stored key {key!r}")

    def check_that_it_dictates_with(self, key):
        self.other.activate()
        stream = self.dictate(self.service, "Works")
        self.assertEqual(stream.protocols.replace(" ", ""), "token," + key)
        self.other.wait_for_text("Works")

    def test_it_comes_in_front_with_an_empty_field_and_nothing_is_recorded(self):
        self.assertIn(QUESTION, [part.name for part in self.dialog.descendants
                                 if part.role == "label"])
        self.assertEqual(self.field.text, "")
        self.assertEqual([part.name for part in self.dialog.controls if part.role == "push button"],
                         ["Save", "Cancel"])
        self.assertTrue(self.window.is_active)
        self.assertEqual(self.application.log.count("startRecording"), 0)
        self.assertFalse(self.tray.shows_recording)

    def test_a_hotkey_that_is_held_asks_once(self):
        self.keyboard.press("Escape")
        self.window.wait_until_gone()
        self.hold()
        wait_for_window(self.desktop).wait_until_active()
        begin = time.monotonic()
        wait_for(lambda: time.monotonic() - begin > REPEATING_HOLD, "the repeats of the key")
        self.keyboard.release()
        self.assertEqual(len(visible_windows(self.desktop)), 1)
        self.keyboard.press("Escape")
        wait_for(lambda: not visible_windows(self.desktop), "no question")

    def test_a_press_meanwhile_asks_no_second_time(self):
        self.hold()
        self.keyboard.release()
        self.keyboard.type("typed-key")
        self.keyboard.press("Return")
        self.window.wait_until_gone()
        self.assertEqual(visible_windows(self.desktop), [])

    def test_a_typed_key_is_saved_by_return_and_used(self):
        self.keyboard.type("typed-key")
        self.keyboard.press("Return")
        self.window.wait_until_gone()
        self.wait_until_stored("typed-key")
        # The press that opened the prompt does not start a recording afterwards.
        self.assertEqual(self.application.log.count("startRecording"), 0)
        self.check_that_it_dictates_with("typed-key")

    def test_a_pasted_key_loses_the_space_around_it_and_the_clipboard_stays(self):
        clipboard = Clipboard(self.desktop, "  pasted key\n")
        self.addCleanup(clipboard.close)
        self.keyboard.press("ctrl+v")
        wait_for(lambda: "pasted key" in self.field.text, "the pasted text")
        self.keyboard.press("Return")
        self.wait_until_stored("pasted key")
        self.assertEqual(self.application.close(), 0)
        self.assertTrue(clipboard.is_owner)
        self.assertEqual(clipboard.content, "  pasted key\n")

    def test_the_usual_keys_edit_the_field(self):
        self.keyboard.type("wrong")
        wait_for(lambda: self.field.text == "wrong", "the typed text")
        self.keyboard.press("ctrl+a")
        wait_for(lambda: self.field.selected_text == "wrong", "everything selected")
        self.keyboard.type("right")
        wait_for(lambda: self.field.text == "right", "the text typed over it")
        self.keyboard.press("ctrl+z")
        wait_for(lambda: self.field.text != "right", "the text taken back")

    def test_an_empty_field_leaves_no_key_and_the_question_comes_again(self):
        self.keyboard.type("  ")
        self.keyboard.press("Return")
        self.window.wait_until_gone()
        self.wait_until_stored(None)
        self.open_prompt()
        self.assertEqual(self.field.text, "")

    def test_escape_changes_nothing(self):
        before = self.settings_file.read_bytes()
        self.keyboard.type("x")
        self.keyboard.press("Escape")
        self.check_that_nothing_has_changed(before)

    def test_cancel_changes_nothing(self):
        before = self.settings_file.read_bytes()
        self.keyboard.type("x")
        for title in ("Save", "Cancel"):
            self.keyboard.press("Tab")
            button = self.dialog.find(title, "push button")
            wait_for(lambda: button.has("focused"), "the focus on " + title)
        self.keyboard.press("space")
        self.check_that_nothing_has_changed(before)

    def check_that_nothing_has_changed(self, before):
        self.window.wait_until_gone()
        self.assertEqual(self.settings_file.read_bytes(), before)
        self.open_prompt()
        self.assertEqual(self.field.text, "")


if __name__ == "__main__":
    unittest.main()
