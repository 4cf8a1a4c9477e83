#!/usr/bin/python3
"""Where dictated text lands in programs whose text fields are accessible."""

import unittest

from dictation_test import DictationTest

MIXED = "Zażółć, мир, 日本語, 😀!"


class Insertion(DictationTest):
    def setUp(self):
        self.service = self.start_scripted_service()
        self.application = self.start_application(self.service)

    def test_pieces_are_separated_by_one_space_and_interim_ones_are_left_out(self):
        target = self.start_target("gtk3")
        stream = self.dictate(self.service, "One")
        stream.say("two interim", final=False)
        stream.say("two")
        stream.say("three.")
        target.wait_for_text("One two three.")

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
        target.wait_for_text(f"before 😀 {MIXED} and more after")

    def test_a_long_text_arrives_whole(self):
        target = self.start_target("gtk3")
        text = " ".join(f"word{number}" for number in range(400))
        self.dictate(self.service, text)
        target.wait_for_text(text)

    def test_what_is_recognised_after_the_release_arrives_too(self):
        self.service.closes_at_end = False
        target = self.start_target("gtk3")
        stream = self.dictate(self.service, "Before")
        target.wait_for_text("Before")
        self.keyboard.release()
        self.application.log.wait_for("audio.stop (session=1)")
        stream.say("and after.")
        target.wait_for_text("Before and after.")

    def test_text_lands_where_the_recording_began_when_the_focus_moves(self):
        first = self.start_target("gtk3", title="first")
        second = self.start_target("gtk3", title="second")
        first.activate()
        stream = self.dictate(self.service, "Here")
        first.wait_for_text("Here")
        second.activate()
        stream.say("and still here")
        first.wait_for_text("Here and still here")
        self.assertEqual(second.text, "")
        self.assertTrue(second.is_active)


if __name__ == "__main__":
    unittest.main()
