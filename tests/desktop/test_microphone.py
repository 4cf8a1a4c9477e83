#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Microphones that change during a recording. The loudspeakers must never be recorded."""

import array
import contextlib
import math
import unittest

from desktop import wait_for
from dictation_test import DictationTest
from microphone import SAMPLE_BYTES, Microphone, peak

REBUILT = "audio configuration changed — rebuilding engine"
SPEAKER_LOUDNESS = 30000
VOICE_LOUDNESS = 6000
# A peak above this is the voice and not the noise of the room.
VOICE_LEVEL = 2000
# A peak above this is the loudspeakers and not the voice.
LOUDSPEAKER_LEVEL = 12000
RATE = 16000
# Seconds of sound that make a recording of the loudspeakers certain.
AUDIBLE_SECONDS = 0.5


def tone(rate, seconds, loudness, frequency=440.0):
    step = 2 * math.pi * frequency / rate
    return array.array(
        "h", (int(loudness * math.sin(i * step)) for i in range(int(rate * seconds)))).tobytes()


class Microphones(DictationTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.music = cls.desktop.folder / "music.raw"
        cls.music.write_bytes(tone(RATE, 120, SPEAKER_LOUDNESS))

    def setUp(self):
        self.service = self.start_scripted_service()
        self.application = self.start_application(self.service)
        self.play_music()
        self.hold()
        self.stream = self.service.stream()
        self.addCleanup(self.check_that_no_loudspeaker_was_heard)
        self.check_the_voice_is_heard(self.microphone)

    def play_music(self):
        player = self.desktop.spawn(
            ["pacat", "--raw", "--format=s16le", f"--rate={RATE}", "--channels=1", self.music])
        self.addCleanup(self.desktop.end, player)
        wait_for(lambda: "pacat" in self.desktop.run(["pactl", "list", "sink-inputs"]),
                 "the music", process=player)

    def check_that_no_loudspeaker_was_heard(self):
        for stream in self.service.streams:
            self.assertLess(peak(stream.audio), LOUDSPEAKER_LEVEL, "the loudspeakers were recorded")

    def check_the_voice_is_heard(self, microphone):
        """Plays the voice until the service gets it: sound before the microphone opens is lost."""
        heard_before = len(self.stream.audio)
        voice = tone(microphone.rate, 0.2, VOICE_LOUDNESS)

        def heard():
            if microphone.is_silent:
                microphone.play(voice)
            return peak(self.stream.audio[heard_before:]) > VOICE_LEVEL
        wait_for(heard, "the voice", timeout=10)

    @contextlib.contextmanager
    def expect_change(self):
        """Waits on exit until the application has noticed the change of its microphone."""
        changes = self.application.log.count(REBUILT)
        yield
        wait_for(lambda: self.application.log.count(REBUILT) > changes, "the change")

    def let_the_music_be_heard(self):
        """Waits until a recorder of the loudspeakers has received enough of the music."""
        record = self.desktop.folder / "loudspeakers.raw"
        with open(record, "wb") as output:
            recorder = self.desktop.spawn(
                ["parec", "--device=@DEFAULT_MONITOR@", "--raw", "--format=s16le", f"--rate={RATE}",
                 "--channels=1", "--latency-msec=50"], stdout=output)
        last = int(AUDIBLE_SECONDS * RATE) * SAMPLE_BYTES
        wait_for(lambda: peak(record.read_bytes()[:-last]) > LOUDSPEAKER_LEVEL, "the loudspeakers",
                 process=recorder)
        self.desktop.end(recorder)

    def unplug(self, name="vmic"):
        modules = self.desktop.run(["pactl", "list", "short", "modules"]).splitlines()
        number = next(line.split()[0] for line in modules if f"source_name={name} " in line)
        self.desktop.run(["pactl", "unload-module", number])

    def unplug_the_only_one(self):
        self.unplug()
        self.microphone.pull_out()

    def plug_back(self):
        self.desktop.plug_microphone()
        self.microphone.plug_in()

    def test_unplugged_and_plugged_in_again(self):
        with self.expect_change():
            self.unplug_the_only_one()
        self.let_the_music_be_heard()
        self.plug_back()
        self.check_the_voice_is_heard(self.microphone)
        self.keyboard.release()
        self.application.log.wait_for("audio.stop (session=1)")

    def test_suspended_and_resumed(self):
        for is_suspended in ("1", "0"):
            with self.expect_change():
                self.desktop.run(["pactl", "suspend-source", "vmic", is_suspended])
        self.check_the_voice_is_heard(self.microphone)

    def test_replaced_by_one_with_another_rate(self):
        self.assertEqual(self.stream.query["sample_rate"], "16000")
        self.desktop.plug_microphone("better", rate=48000, channels=2)
        self.addCleanup(self.desktop.run, ["pactl", "set-default-source", "vmic"])
        self.addCleanup(self.unplug, "better")
        better = Microphone(self.desktop.fifo("better"), rate=48000, channels=2)
        self.addCleanup(better.pull_out)
        self.application.log.wait_for(REBUILT)
        self.check_the_voice_is_heard(better)
        self.keyboard.release()
        self.application.log.wait_for("audio.stop (session=1)")
        self.keyboard.hold()
        self.stream = self.service.stream(2)
        self.assertEqual(self.stream.query["sample_rate"], "48000")
        self.check_the_voice_is_heard(better)

    def test_the_sound_server_is_killed_and_comes_back(self):
        self.desktop.sound_server.kill()
        self.desktop.sound_server.wait()
        self.microphone.pull_out()
        self.application.log.wait_for(REBUILT)
        self.desktop.start_sound_server(plugs_microphone=False)
        self.play_music()
        self.let_the_music_be_heard()
        self.plug_back()
        self.check_the_voice_is_heard(self.microphone)

    def test_without_any_microphone_the_recording_is_silent(self):
        self.unplug_the_only_one()
        self.application.log.wait_for(REBUILT)
        self.keyboard.release()
        self.application.log.wait_for("audio.stop (session=1)")
        log_length = len(self.application.log)
        self.keyboard.hold()
        self.service.stream(2)
        self.application.log.wait_for("AudioCapture: ", since=log_length)
        self.let_the_music_be_heard()
        self.assertEqual(self.service.streams[1].audio, b"")
        self.plug_back()


if __name__ == "__main__":
    unittest.main()
