#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Text dictated into programs with accessible text fields."""

import contextlib
import subprocess
import threading
import unittest

from desktop import wait_for
from dictation_test import DictationTest
from scripted_service import transcript

MIXED = "Zażółć, мир, 日本語, 😀!"
# A property of the root window that nothing else changes.
MARK = "_TARVIK_MARK"


@contextlib.contextmanager
def active_windows(desktop):
    """Yields a set. On exit the set is filled with every window that was active in the meantime."""
    numbers, lines = set(), []

    def mark(word):
        desktop.run(["xprop", "-root", "-f", MARK, "8s", "-set", MARK, word])

    def has_seen(word):
        mark(word)
        return any(word in line for line in lines)

    # xprop does not watch a property whose name does not exist yet.
    mark("name")
    spy = desktop.spawn(["xprop", "-spy", "-root", "_NET_ACTIVE_WINDOW", MARK],
                        stdout=subprocess.PIPE, text=True)

    def read():
        with spy.stdout:
            for line in spy.stdout:
                lines.append(line)

    threading.Thread(target=read, daemon=True).start()
    wait_for(lambda: has_seen("begin"), "the watch of the window in front", process=spy)
    yield numbers
    # All changes before the mark are reported before the mark.
    wait_for(lambda: has_seen("end"), "the end of the watch", process=spy)
    desktop.end(spy)
    numbers.update(str(int(line.split("#")[1].split(",")[0], 16))
                   for line in lines if line.startswith("_NET_ACTIVE_WINDOW"))


class Insertion(DictationTest):
    def setUp(self):
        self.service = self.start_scripted_service()
        self.application = self.start_application(self.service)

    def check_written(self, target, text):
        """Checks that the text arrives, and not as typed keys: those would lead to the same text."""
        target.wait_for_text(text)
        self.assertEqual(target.typed_keys, 0)

    def test_pieces_are_separated_by_one_space_and_interim_ones_are_left_out(self):
        target = self.start_target("gtk3")
        stream = self.dictate(self.service, "One")
        stream.say("two interim", final=False)
        stream.say("two")
        stream.say("three.")
        self.check_written(target, "One two three.")

    def test_a_piece_that_has_to_be_typed_is_not_overtaken(self):
        """D-Bus carries no null character, so accessibility refuses the second piece."""
        target = self.start_target("gtk3")
        stream = self.dictate(self.service, "One.")
        for piece in ("Two\0two.", "Three.", "Four."):
            stream.say(piece)
        target.wait_for_text("One. Twotwo. Three. Four.")

    def test_line_breaks_and_tabs_are_written_as_they_were_said(self):
        target = self.start_target("gtk3")
        stream = self.dictate(self.service, "One.")
        for piece in ("Two\r\ntwo.", "Three\n\tthree.", "Four."):
            stream.say(piece)
        # Reading as text would hide a changed line break.
        wait_for(lambda: target.out.read_bytes() == b"One. Two\r\ntwo. Three\n\tthree. Four.",
                 "the text with its line breaks")
        self.assertEqual(target.typed_keys, 0)

    def test_a_selection_in_a_gtk3_entry_is_replaced(self):
        self.check_selection("gtk3", "entry")

    def test_a_selection_in_a_gtk3_text_is_replaced(self):
        self.check_selection("gtk3", "text")

    def test_a_selection_in_a_gtk4_text_is_replaced(self):
        self.check_selection("gtk4", "text")

    def test_a_selection_in_a_gtk4_entry_is_replaced(self):
        self.check_selection("gtk4", "entry")

    def test_a_selection_in_a_qt_entry_is_replaced(self):
        self.check_selection("qt6", "entry")

    def test_a_selection_in_a_qt_text_is_replaced(self):
        self.check_selection("qt6", "text")

    def check_selection(self, toolkit, widget):
        target = self.start_target(toolkit, widget=widget, text="before 😀 OLD after", select="9:12")
        self.dictate(self.service, MIXED, "and more")
        self.check_written(target, f"before 😀 {MIXED} and more after")
        self.keyboard.release()
        self.application.log.wait_for("stopRecording (session=1)")
        # Proves that the target counts keys at all.
        self.keyboard.type("x")
        wait_for(lambda: target.typed_keys == 1, "a key typed by hand to be counted")

    def test_a_field_that_refuses_words_leaves_the_other_fields_of_its_window_alone(self):
        target = self.start_target("gtk3")
        target.tell("number")
        self.dictate(self.service, "five")
        # A field for numbers shows neither written nor typed letters.
        wait_for(lambda: target.typed_keys == len("five"), "the text as keys")
        self.keyboard.release()
        self.application.log.wait_for("stopRecording (session=1)")
        target.tell("widget")
        self.dictate(self.service, "Words.")
        target.wait_for_text("Words.")
        self.assertEqual(target.typed_keys, len("five"))

    def test_a_gtk3_entry_without_the_focus_is_not_written_to(self):
        self.check_lost_focus("gtk3")

    def test_a_gtk4_entry_without_the_focus_is_not_written_to(self):
        self.check_lost_focus("gtk4")

    def test_a_qt_entry_without_the_focus_is_not_written_to(self):
        self.check_lost_focus("qt6")

    def check_lost_focus(self, toolkit):
        """A hotkey that is held hides the focus too, and must not count as a lost focus."""
        target = self.start_target(toolkit, widget="entry")
        self.dictate(self.service, "One")
        self.check_written(target, "One")
        self.keyboard.hold_again()
        self.service.stream(2).say(" two")
        self.check_written(target, "One two")
        self.keyboard.release()
        self.application.log.wait_for("stopRecording (session=2)")
        target.tell("nothing")
        self.dictate(self.service, "three")
        # Qt gives the focus back to the entry when the window becomes active again.
        wait_for(lambda: target.typed_keys == len("three"), "the text as keys")

    def test_a_full_qt_entry_keeps_the_text_behind_the_caret(self):
        target = self.start_target("qt6", widget="entry", text="begin end", select="6:6",
                                   max_length="9")
        self.dictate(self.service, "middle")
        # The text is typed after the failed write, into a full line.
        wait_for(lambda: target.typed_keys == len("middle"), "the text as keys")
        target.wait_for_text("begin end")

    def test_a_long_text_arrives_whole(self):
        target = self.start_target("gtk3")
        text = " ".join(f"word{number}" for number in range(400))
        self.dictate(self.service, text)
        self.check_written(target, text)

    def test_a_burst_does_not_hold_up_the_release_and_arrives_whole(self):
        """Each piece is written on the main thread, and all of them take many seconds."""
        self.service.closes_at_end = False
        target = self.start_target("gtk3")
        stream = self.dictate(self.service, "Begin")
        target.wait_for_text("Begin")
        pieces = [f"word{number}" for number in range(2000)]
        stream.send_all([transcript(piece) for piece in pieces])
        stream.wait_until_read()
        wait_for(lambda: pieces[20] in target.text, "the first pieces of the burst")
        self.keyboard.release()
        # Neither the release, which takes two blocks, nor the block 0.3 s later may wait.
        wait_for(lambda: stream.is_audio_ended, "the end of the audio", timeout=30)
        written = target.text.count("word")
        self.tray.wait_for_icon(recording=False)
        self.assertLess(written, len(pieces) // 2, "pieces before the end of the audio")
        target.wait_for_text(" ".join(["Begin", *pieces]), timeout=180)
        self.assertEqual(target.typed_keys, 0)

    def test_what_is_recognised_after_the_release_arrives_too(self):
        self.service.closes_at_end = False
        target = self.start_target("gtk3")
        stream = self.dictate(self.service, "Before")
        target.wait_for_text("Before")
        self.keyboard.release()
        self.application.log.wait_for("audio.stop (session=1)")
        stream.say("and after.")
        self.check_written(target, "Before and after.")

    def test_text_goes_to_the_window_of_the_start_when_the_focus_moves(self):
        first = self.start_target("gtk3", title="first")
        second = self.start_target("gtk3", title="second")
        first.activate()
        stream = self.dictate(self.service, "Here")
        first.wait_for_text("Here")
        second.activate()
        with active_windows(self.desktop) as active:
            stream.say("and still here")
            self.check_written(first, "Here and still here")
        self.assertEqual(second.text, "")
        # Typed text would have made the first window active.
        self.assertEqual(active, {second.window})


if __name__ == "__main__":
    unittest.main()
