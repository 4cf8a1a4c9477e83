#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The beginning of a recording: nothing is recorded before the socket is open, and all of it after."""

import time
import unittest

from clock_microphone import ClockMicrophone
from desktop import wait_for
from dictation_test import DictationTest

MICROPHONE = "clock"
RATE = 48000
# How long the service takes to open the socket, in seconds.
ANSWER_DELAY = 0.5
# A busy machine delivers sound late, and the application takes late sound for new sound.
MAX_DELIVERY_TIME = 0.2
# Far above what the application needs on loopback. bench/run measures the time.
MAX_LOST_TIME = 1.0


class FirstWords(DictationTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.desktop.plug_microphone(MICROPHONE, RATE)
        cls.clock = ClockMicrophone(cls.desktop, cls.desktop.fifo(MICROPHONE), RATE)
        cls.addClassCleanup(cls.clock.close)

    def setUp(self):
        self.service = self.start_scripted_service()
        self.application = self.start_application(self.service)
        self.application.log.wait_for(f"microphone {MICROPHONE}, {RATE} Hz")

    def record(self):
        """Makes a short recording. Returns its connection, and the times of the press and of the first
        sample, in monotonic seconds."""
        seen = len(self.application.log)
        number = len(self.service.streams) + 1
        pressed = time.monotonic()
        self.hold()
        stream = self.service.stream(number)
        wait_for(lambda: stream.audio, "sound at the service")
        self.keyboard.release()
        self.application.log.wait_for("audio.stop", since=seen)
        wait_for(lambda: stream.is_closed, "the end of the connection")
        first = int.from_bytes(stream.audio[:2], "little", signed=True)
        return stream, pressed, self.clock.recording_time(first, stream.first_audio_time)

    def test_the_first_sample_is_recorded_soon_after_the_press(self):
        for _ in range(3):
            _, pressed, recorded = self.record()
            self.assertLess(recorded - pressed, MAX_LOST_TIME)

    def test_nothing_is_recorded_before_the_socket_is_open(self):
        self.service.answer_delay = ANSWER_DELAY
        for _ in range(3):
            stream, _, recorded = self.record()
            self.assertGreater(recorded, stream.request_time + ANSWER_DELAY - MAX_DELIVERY_TIME)

    def has_stream(self):
        """Whether a stream of the microphone exists, corked or not."""
        return bool(self.desktop.run(["pactl", "list", "short", "source-outputs"]))

    def test_nothing_of_the_microphone_is_open_after_a_recording(self):
        self.record()
        wait_for(lambda: not self.has_stream(), "a closed microphone")

    def test_a_recording_without_a_connection_closes_the_microphone(self):
        self.service.refusal = (503, "no")
        self.hold()
        self.application.log.wait_for("Deepgram error: ")
        wait_for(self.has_stream, "a corked stream", timeout=4)
        self.assertFalse(self.desktop.is_microphone_open())
        wait_for(lambda: not self.has_stream(), "a closed microphone", timeout=7)

    def test_later_recordings_resume_the_session(self):
        resumed = []
        for _ in range(3):
            stream, _, _ = self.record()
            resumed.append(stream.is_resumed)
        self.assertEqual(resumed, [False, True, True])


if __name__ == "__main__":
    unittest.main()
