#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A recording without a word ends by itself. In a file of its own, because it takes half a minute."""

import socket
import unittest

from dictation_test import DictationTest
from scripted_service import make_certificate

ERROR = "Deepgram error: "


class Unreachable:
    """A service whose port nobody listens on."""

    def __init__(self, authority):
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            self.host = f"localhost:{probe.getsockname()[1]}"
        self.authority = authority


class Silence(DictationTest):
    def test_an_unreachable_service_is_logged_and_silence_ends_the_recording(self):
        _, certificate = make_certificate(self.desktop.folder / "certificates")
        application = self.start_application(Unreachable(certificate))
        self.keyboard.toggle()
        application.log.wait_for(ERROR)
        self.tray.wait_for_icon(recording=True)
        application.log.wait_for("Deepgram WS open timeout (5s) — connect failed", timeout=8)
        self.assertTrue(self.tray.shows_recording)
        application.log.wait_for("auto-stop (silence 3", timeout=45)
        application.log.wait_for("stopRecording (session=1)")
        self.tray.wait_for_icon(recording=False)
        application.log.wait_for("audio.stop (session=1)")
        self.assertEqual(application.log.count(ERROR), 1)


if __name__ == "__main__":
    unittest.main()
