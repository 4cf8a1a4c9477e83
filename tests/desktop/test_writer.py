#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Emoji in LibreOffice Writer while Writer is busy. Writer drops emoji that are typed."""

import os
import signal
import time
import unittest

from desktop import wait_for
from dictation_test import DictationTest
from matrix.writer import Writer

# Longer than one write is waited for, and shorter than a busy program is waited for.
BUSY_SECONDS = 1.5


class BusyWriter(DictationTest):
    def test_every_emoji_behind_a_text_that_waits_arrives(self):
        if missing := Writer.missing():
            self.skipTest(f"{missing} is not installed")
        service = self.start_scripted_service()
        self.start_application(service)
        writer = Writer(self.desktop)
        self.addCleanup(writer.close)
        process = int(self.desktop.run(["xdotool", "getwindowpid", writer.target.window]))
        stream = self.dictate(service, "Here 😀.")
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

    def wait_for_text(self, writer, text):
        try:
            wait_for(lambda: writer.text == text, "the text", 30)
        except TimeoutError:
            self.assertEqual(writer.text, text)


if __name__ == "__main__":
    unittest.main()
