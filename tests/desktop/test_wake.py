#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Sleep and wake of the machine."""

import unittest

from desktop import wait_for
from dictation_test import DictationTest
from mock_logind import MockLogind

WOKE = "system woke — resetting subsystems"


class Wake(DictationTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.logind = MockLogind(cls.desktop)
        cls.addClassCleanup(cls.logind.close)

    def setUp(self):
        self.service = self.start_scripted_service()
        self.application = self.start_application(
            self.service, settings={"totalDictationSeconds": 7}, environment=self.logind.environment)
        self.target = self.start_target("gtk3")

    def sleep_and_wake(self):
        self.logind.sleep_and_wake()
        self.application.log.wait_for(WOKE)

    def check_the_next_recording(self):
        self.dictate(self.service, "Awake")
        self.target.wait_for_text("Awake")
        self.keyboard.release()
        self.tray.wait_for_icon(recording=False)

    def test_the_hotkeys_work_after_it(self):
        self.sleep_and_wake()
        wait_for(lambda: self.application.log.count("hold-to-talk registered") == 2,
                 "hotkeys registered anew")
        self.check_the_next_recording()
        self.assertEqual(self.application.log.count(WOKE), 1)

    def test_a_recording_is_abandoned(self):
        self.keyboard.toggle()
        stream = self.service.stream()
        self.tray.wait_for_icon(recording=True)
        wait_for(lambda: len(stream.audio) > 2 * 16000 * 1.2, "more than a second of sound")
        self.sleep_and_wake()
        self.tray.wait_for_icon(recording=False)
        wait_for(lambda: not self.desktop.is_microphone_open(), "a closed microphone")
        wait_for(lambda: stream.is_audio_ended, "the end of the stream")
        self.assertEqual(self.application.log.count("stopRecording"), 0)
        self.check_the_next_recording()
        # The recording after the wake was shorter than a second, so it added nothing either.
        self.application.close()
        self.assertIn("totalDictationSeconds=7", self.settings_file.read_text())

    def test_it_works_repeatedly(self):
        for count in range(1, 6):
            self.logind.sleep_and_wake()
            wait_for(lambda: self.application.log.count(WOKE) == count, f"awakening {count}")
        self.check_the_next_recording()


if __name__ == "__main__":
    unittest.main()
