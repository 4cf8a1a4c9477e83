# SPDX-License-Identifier: MIT

"""Tests of what happens to the application when its display ends."""

import time

from application import VERSION, Application, write_settings
from desktop import wait_for
from dictation_test import BINARIES

ENDED = ("stopRecording (session=1)", "audio.stop (session=1)")


class DisplayLossTests:
    """A class beside it is a DictationTest with start_display(), which starts one display more and returns
    its process and the variables of its programs."""

    def start_on(self, variables, service):
        """Starts an application that ends with its display."""
        self.settings_file = write_settings(self.desktop.environment, {
            "deepgramApiKey": "a-key", "deepgramHost": service.host,
            "lastWelcomeShownForVersion": VERSION})
        application = Application(self.desktop, BINARIES,
                                  variables | {"SSL_CERT_FILE": str(service.authority)})
        self.addCleanup(application.close)
        return application

    def toggle_by_bus(self):
        self.desktop.run([
            "gdbus", "call", "--session", "--dest", "com.tarvik.dictate",
            "--object-path", "/com/tarvik/dictate",
            "--method", "org.freedesktop.Application.ActivateAction", "toggle", "[]", "{}"])

    def check_end(self, application):
        self.assertEqual(application.process.wait(10), 1)
        application.log.read_to_end()
        self.assertEqual(application.log.count("the display is gone"), 1,
                         "\n".join(application.log.lines))

    def check_that_a_recording_is_closed(self, end):
        service = self.start_scripted_service()
        display, variables = self.start_display()
        application = self.start_on(variables, service)
        self.toggle_by_bus()
        application.log.wait_for("startRecording")
        begin = time.monotonic()
        stream = service.stream()
        wait_for(lambda: stream.audio, "the first sound")
        wait_for(lambda: time.monotonic() - begin > 1.1, "a second of usage")
        end(display)
        self.check_end(application)
        wait_for(lambda: stream.is_audio_ended, "the end of the audio")
        for line in ENDED:
            self.assertEqual(application.log.count(line), 1, line)
        self.assertRegex(self.settings_file.read_text(), r"(?m)^totalDictationSeconds=[1-9]")
        return service

    def test_a_recording_is_closed_and_counted_when_the_display_ends(self):
        service = self.check_that_a_recording_is_closed(lambda display: display.terminate())
        # The next session of the user starts it again.
        self.start_application(service)
        target = self.start_target()
        self.hold()
        service.stream(2).say("Again.")
        target.wait_for_text("Again.")

    def test_without_a_recording_it_ends_at_once_when_the_display_ends(self):
        display, variables = self.start_display()
        application = self.start_on(variables, self.start_scripted_service())
        display.terminate()
        self.check_end(application)
