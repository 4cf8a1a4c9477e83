#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""LibreOffice Writer, which drops emoji that are typed, and shows a paragraph page by page."""

import os
import signal
import time
import unittest

from accessible import ScreenReader
from bus import NoReply
from desktop import wait_for
from dictation_test import DictationTest
from matrix.writer import Writer

# Longer than one write is waited for, and shorter than a busy program is waited for.
BUSY_SECONDS = 1.5


def has_focused_paragraph(reader):
    try:
        return any(element.role == "paragraph" and element.has("focused")
                   for application in reader.applications if application.name == "soffice"
                   for element in application.descendants)
    except NoReply:
        return False  # Writer replaces its widgets while it starts.


class DictationIntoWriter(DictationTest):
    def setUp(self):
        if missing := Writer.missing():
            self.skipTest(f"{missing} is not installed")
        self.service = self.start_scripted_service()
        self.start_application(self.service)
        self.writer = Writer(self.desktop)
        self.addCleanup(self.writer.close)
        reader = ScreenReader(self.desktop)
        self.addCleanup(reader.close)
        # On a busy machine Writer reports its focus long after it has opened its document.
        wait_for(lambda: has_focused_paragraph(reader), "a focused paragraph", 30)

    def test_every_emoji_behind_a_text_that_waits_arrives(self):
        writer = self.writer
        process = int(self.desktop.run(["xdotool", "getwindowpid", writer.target.window]))
        stream = self.dictate(self.service, "Here 😀.")
        self.wait_for_text(writer, "Here 😀.")
        os.kill(process, signal.SIGSTOP)
        self.addCleanup(os.kill, process, signal.SIGCONT)
        for piece in ("One.", "Two 👍🏽.", "Three 👨‍👩‍👧‍👦.", "Four."):
            stream.say(piece)
        time.sleep(BUSY_SECONDS)
        os.kill(process, signal.SIGCONT)
        self.wait_for_text(writer, "Here 😀. One. Two 👍🏽. Three 👨‍👩‍👧‍👦. Four.")
        # The caret stands behind the text.
        stream.say("Five.")
        self.wait_for_text(writer, "Here 😀. One. Two 👍🏽. Three 👨‍👩‍👧‍👦. Four. Five.")

    def test_a_paragraph_over_three_pages_has_every_emoji(self):
        self.dictate_three_pages(self.dictate(self.service, "Here."), "Here.")

    def test_a_long_dictation_over_three_pages_has_every_emoji(self):
        self.keyboard.toggle()
        self.addCleanup(self.keyboard.toggle)
        self.dictate_three_pages(self.service.stream(1), "")

    def test_the_caret_is_followed_into_another_paragraph(self):
        self.keyboard.toggle()
        self.addCleanup(self.keyboard.toggle)
        stream = self.service.stream(1)
        stream.say("One 😀.")
        self.wait_for_text(self.writer, "One 😀.")
        self.keyboard.press("Return")
        self.wait_for_text(self.writer, "One 😀.\n")
        stream.say("Two 👍🏽.")
        self.wait_for_text(self.writer, "One 😀.\n Two 👍🏽.")

    def dictate_three_pages(self, stream, text):
        """A page has about 3,900 characters. Short pieces come where pages end, each of which begins
        with the caret somewhere else."""
        half = "The quick brown fox jumps over the lazy dog. " * 42
        for pieces in ([half, half, "Here 😀.", *["Fox 👨‍👩‍👧‍👦."] * 24], [half, half, *["Dog 👍🏽."] * 24],
                       [half, half * 3, "The end 🙂."]):
            for piece in pieces:
                stream.say(piece)
                text += (" " if text else "") + piece
            self.wait_for_text(self.writer, text)

    def wait_for_text(self, writer, text):
        try:
            wait_for(lambda: writer.text == text, "the text", 30)
        except TimeoutError:
            self.assertEqual(writer.text, text)


if __name__ == "__main__":
    unittest.main()
