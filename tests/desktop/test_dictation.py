#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Real speech, recognised by the local service and inserted into a text editor."""

import unittest

from dictation_test import DictationTest
from timing import ATTEMPTS

FIRST = "the quick brown fox jumps over the lazy dog"
SECOND = "thank you for the letter"
CLOSED = "The service closed the connection (1000)"
# In seconds. Longer than the pause that ends an utterance.
PAUSE = 1.2


class Dictation(DictationTest):
    def setUp(self):
        self.service = self.start_local_service()
        self.application = self.start_application(self.service)

    def check_pieces(self, text, count):
        """The service ends each piece with a full stop; one space separates it from the next."""
        self.assertEqual(len(text.split(". ")), count, text)
        self.assertEqual(text, " ".join(text.split()))

    def test_two_sentences_while_the_keys_are_held(self):
        # A connection that the service does not close in time is given up. A busy machine may not
        # have recognised everything by then.
        for _ in range(ATTEMPTS):
            target = self.start_target("gtk3")
            if CLOSED in self.dictate_two_sentences():
                break
            target.close()
        self.wait_until_heard(target, FIRST, SECOND)
        self.check_pieces(target.text, 2)

    def dictate_two_sentences(self):
        """Returns the line in the log about the end of the connection."""
        log, seen = self.application.log, len(self.application.log)
        self.hold()
        log.wait_for("startRecording", since=seen)
        self.tray.wait_for_icon(recording=True)
        self.wait_until_listening()
        self.microphone.speak(FIRST)
        self.microphone.pause(PAUSE)
        self.microphone.speak(SECOND)
        self.microphone.wait_until_silent()
        # The keys go up before the second sentence has arrived.
        self.keyboard.release()
        self.tray.wait_for_icon(recording=False)
        return log.wait_for("Deepgram error: ", since=seen)

    def test_long_form_dictation_is_switched_on_and_off(self):
        target = self.start_target("gtk3")
        self.keyboard.toggle()
        self.application.log.wait_for("startRecording (session=1)")
        self.tray.wait_for_icon(recording=True)
        self.wait_until_listening()
        self.microphone.speak(FIRST)
        # After the end of a recording a busy machine may not recognise the rest in time.
        self.wait_until_heard(target, FIRST)
        self.assertEqual(self.application.log.count("stopRecording"), 0)
        self.keyboard.toggle()
        self.application.log.wait_for("stopRecording (session=1)")
        self.application.log.wait_for("audio.stop (session=1)")

    def test_holding_the_long_form_keys_toggles_once(self):
        # The X server repeats a key that is held for more than 0.66 s.
        self.keyboard.toggle(seconds=1.5)
        self.keyboard.toggle()
        self.application.log.wait_for("stopRecording (session=1)")
        self.assertEqual(self.application.log.count("startRecording"), 1)

    def test_a_second_recording_within_the_delay_keeps_the_microphone(self):
        target = self.start_target("gtk3")
        self.hold()
        self.application.log.wait_for("startRecording (session=1)")
        self.keyboard.hold_again()
        self.application.log.wait_for("startRecording (session=2)")
        self.application.log.wait_for("deferred-stop SKIPPED — session 1 superseded by 2")
        self.wait_until_listening()
        self.microphone.speak(FIRST)
        self.wait_until_heard(target, FIRST)
        self.keyboard.release()
        self.application.log.wait_for("audio.stop (session=2)")
        self.assertEqual(self.application.log.count("audio.stop (session=1)"), 0)


if __name__ == "__main__":
    unittest.main()
