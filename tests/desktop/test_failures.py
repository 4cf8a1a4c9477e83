#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The application with missing, refused, broken or nonsensical input."""

import json
import os
import pathlib
import re
import signal
import time
import unittest

from application import VERSION
from desktop import wait_for
from dictation_test import DictationTest
from display_loss import DisplayLossTests
from scripted_service import make_certificate, transcript
from timing import check_within
from windows import wait_for_window

DEFERRED = "audio.stop (session=1)"
ERROR = "Deepgram error: "
SEND_ERROR = ERROR + "A message could not be sent: "
SILENT = "does not answer; its text will be typed"
# In seconds: how long a write to a hanging or dying target may take, and the spread of a quiet machine.
MAX_WRITE_TIME = 0.5
TOLERANCE = 0.1


def inheritable_descriptors(pid):
    """What a process would hand down to a program besides its standard streams."""
    found = []
    for entry in pathlib.Path(f"/proc/{pid}/fdinfo").iterdir():
        flags = int(re.search(r"^flags:\s*([0-7]+)$", entry.read_text(), re.MULTILINE)[1], 8)
        if int(entry.name) > 2 and not flags & os.O_CLOEXEC:
            found.append(os.readlink(f"/proc/{pid}/fd/{entry.name}"))
    return found


class MissingParts(DictationTest):
    def test_without_a_key_nothing_is_recorded_and_the_key_is_asked_for(self):
        service = self.start_scripted_service()
        application = self.start_application(service, settings={"deepgramApiKey": ""})
        self.hold()
        wait_for_window(self.desktop).wait_until_active()
        self.keyboard.release()
        self.keyboard.type("typed-key")
        self.keyboard.press("Return")
        wait_for(lambda: "deepgramApiKey=typed-key" in self.settings_file.read_text(),
                 "the stored key")
        self.assertEqual(application.log.count("startRecording"), 0)
        self.assertEqual(service.streams, [])
        self.assertFalse(self.tray.shows_recording)
        self.hold()
        self.assertEqual(service.stream().protocols.replace(" ", ""), "token,typed-key")

    def test_a_key_of_several_lines_is_refused_with_a_clear_error(self):
        service = self.start_scripted_service()
        application = self.start_application(
            service, settings={"deepgramApiKey": r'"a-key\r\nX-Other: 1"'})
        self.hold()
        self.assertIn("Sec-WebSocket-Protocol has a line break", application.log.wait_for(ERROR))
        self.assertEqual(service.streams, [])
        self.keyboard.release()
        application.log.wait_for(DEFERRED)
        self.assertEqual(application.log.count("X-Other"), 0)

    def test_a_key_beyond_every_header_is_refused_with_one_error(self):
        service = self.start_scripted_service()
        application = self.start_application(service, settings={"deepgramApiKey": "k" * 70_000})
        self.hold()
        self.assertIn("Sec-WebSocket-Protocol is too long", application.log.wait_for(ERROR))
        self.keyboard.release()
        application.log.wait_for(DEFERRED)
        self.assertEqual(application.log.count(ERROR), 1)
        self.assertEqual(service.streams, [])

    def test_a_host_that_is_none_is_named_without_its_credentials(self):
        service = self.start_scripted_service()
        application = self.start_application(
            service, settings={"deepgramHost": '"user:secret@' + service.host + '/v1"'})
        self.hold()
        application.log.wait_for(f'"…@{service.host}/v1" is not a host to stream to')
        self.keyboard.release()
        application.log.wait_for(DEFERRED)
        self.assertEqual(application.log.count("secret"), 0)
        self.assertEqual(service.streams, [])

    def test_a_list_of_hosts_is_no_reason_to_send_the_key_elsewhere(self):
        application = self.start_application(settings={"deepgramHost": "localhost:1, localhost:2"})
        self.hold()
        application.log.wait_for("is not a host to stream to")
        self.keyboard.release()
        application.log.wait_for(DEFERRED)
        self.assertEqual(application.log.count(ERROR), 0)

    def test_a_stored_value_of_the_wrong_type_reads_as_absent(self):
        service = self.start_scripted_service()
        application = self.start_application(
            service, closes_setup=False,
            settings={"totalDictationSeconds": "many",
                      "lastWelcomeShownForVersion": "@Variant(xyz)"})
        # The application does not store a version that it has read.
        wait_for(lambda: f"lastWelcomeShownForVersion={VERSION}" in self.settings_file.read_text(),
                 "the stored version")
        wait_for_window(self.desktop).close()
        self.hold()
        service.stream().say("For a while")
        time_of_start = time.monotonic()
        wait_for(lambda: time.monotonic() - time_of_start > 1.1, "a second of usage")
        self.keyboard.release()
        application.log.wait_for(DEFERRED)
        wait_for(lambda: re.search("^totalDictationSeconds=[12]$", self.settings_file.read_text(),
                                   re.MULTILINE), "the seconds of this recording alone")

    def test_a_settings_file_that_cannot_be_written_stays_whole(self):
        service = self.start_scripted_service()
        application = self.start_application(service, settings={"lastWelcomeShownForVersion": "0"})
        wait_for(lambda: "loginItemAutoConfigured=true" in self.settings_file.read_text(),
                 "the first settings")
        before = self.settings_file.read_bytes()
        # Even root cannot write below a file.
        folder = self.settings_file.parent
        aside = folder.with_name("aside")
        folder.rename(aside)
        folder.write_text("in the way")
        try:
            self.hold()
            application.log.wait_for("startRecording")
            service.stream()
            time_of_start = time.monotonic()
            wait_for(lambda: time.monotonic() - time_of_start > 1.1, "a second of usage")
            self.keyboard.release()
            application.log.wait_for("settings cannot be saved")
        finally:
            folder.unlink()
            aside.rename(folder)
        self.assertEqual(self.settings_file.read_bytes(), before)


class Descriptors(DictationTest):
    def test_a_started_program_would_inherit_nothing_of_a_recording(self):
        service = self.start_scripted_service()
        application = self.start_application(service)
        self.hold()
        service.stream()
        self.wait_until_listening()
        self.assertEqual(inheritable_descriptors(application.pid), [])


class BadService(DictationTest):
    def begin(self, service):
        self.application = self.start_application(service)
        self.target = self.start_target("gtk3")
        self.hold()

    def check_an_error_and_a_clean_stop(self, part):
        line = self.application.log.wait_for(ERROR)
        self.assertIn(part, line)
        self.tray.wait_for_icon(recording=True)
        self.keyboard.release()
        self.tray.wait_for_icon(recording=False)
        self.application.log.wait_for(DEFERRED)

    def check_one_error_and_a_clean_stop(self, part):
        self.check_an_error_and_a_clean_stop(part)
        self.assertEqual(self.application.log.count(ERROR), 1)

    def check_a_lost_connection(self, service):
        """Checks the log after the loss of an open connection: one error for the loss, and one for
        each chunk that could not be sent. No new connection before the next recording."""
        self.application.log.wait_for(SEND_ERROR)
        self.check_an_error_and_a_clean_stop("")
        log = self.application.log
        self.assertEqual(log.count(ERROR) - log.count(SEND_ERROR), 1)
        self.assertEqual(len(service.streams), 1)
        self.check_the_next_recording(service)

    def check_the_next_recording(self, service):
        self.dictate(service, "Works again")
        self.target.wait_for_text("Works again")

    def test_messages_that_make_no_sense_are_dropped(self):
        service = self.start_scripted_service()
        self.begin(service)
        stream = service.stream()
        stream.say("One")
        for message in (
            "no json", "", "[]", "null", '"text"', "{", transcript("cut")[:-5],
            b"\xff\xfe\x00 not text", transcript("bad \udcff").encode("utf-8", "surrogateescape"),
            "[" * 1000 + "]" * 1000, '{"a":' * 1000 + "1" + "}" * 1000,
            json.dumps({"is_final": True, "channel": {"alternatives": []}}),
            json.dumps({"is_final": True, "channel": {"alternatives": [{"transcript": 5}]}}),
            json.dumps({"is_final": True, "channel": {"alternatives": [{"transcript": ""}]}}),
            json.dumps({"padding": "x" * (16 * 1024 * 1024 - 100)}),
            "x" * (16 * 1024 * 1024),
        ):
            stream.send(message)
        stream.say("two")
        self.target.wait_for_text("One two", timeout=15)
        self.assertEqual(self.application.log.count(ERROR), 0)
        wait_for(lambda: self.application.log.count("bytes that is longer than") == 2,
                 "a line for each of the two long messages")

    def test_a_certificate_that_does_not_verify_ends_the_connection(self):
        service = self.start_scripted_service()
        _, service.authority = make_certificate(self.desktop.folder / "other-certificates")
        self.begin(service)
        self.check_one_error_and_a_clean_stop("certificate")
        self.assertEqual(service.streams, [])

    def test_a_certificate_for_another_host_ends_the_connection(self):
        service = self.start_scripted_service("elsewhere.example")
        self.begin(service)
        self.check_one_error_and_a_clean_stop("certificate")
        self.assertEqual(service.streams, [])

    def test_a_refused_upgrade_is_logged_with_status_and_body(self):
        service = self.start_scripted_service()
        service.refusal = (401, '{"err_msg":"Invalid credentials."}')
        self.begin(service)
        self.check_one_error_and_a_clean_stop("Invalid credentials.")
        self.assertIn("401", self.application.log.wait_for(ERROR))
        wait_for(lambda: "refuses the API key" in self.tray.tool_tip, "the tool tip")
        service.refusal = None
        self.check_the_next_recording(service)
        self.assertNotIn("API key", self.tray.tool_tip)

    def test_a_reset_connection_is_survived(self):
        service = self.start_scripted_service()
        self.begin(service)
        service.stream().reset()
        self.check_a_lost_connection(service)

    def test_a_frame_that_breaks_the_protocol_is_survived(self):
        service = self.start_scripted_service()
        self.begin(service)
        service.stream().send_bytes(b"\xff" * 64)
        self.check_a_lost_connection(service)


class BadTargets(DictationTest):
    def setUp(self):
        self.service = self.start_scripted_service()
        self.application = self.start_application(self.service)
        self.usual = self.usual_time_for_a_piece()

    def time_for_a_piece(self, stream, meanwhile=lambda: None):
        """Has the service send a piece and releases the key; returns the seconds until the release
        has been handled. The main thread handles the piece first, then the release."""
        wait_for(lambda: stream.audio, "sound from the application")
        stopped = f"stopRecording (session={len(self.service.streams)})"
        begin = time.monotonic()
        stream.say("A piece")
        stream.wait_until_read()
        meanwhile()
        self.keyboard.release()
        self.application.log.wait_for(stopped)
        duration = time.monotonic() - begin
        self.application.log.wait_for(stopped.replace("stopRecording", "audio.stop"))
        return duration

    def usual_time_for_a_piece(self):
        healthy = self.start_target("gtk3", title="healthy")
        self.hold()
        duration = self.time_for_a_piece(self.service.stream())
        healthy.wait_for_text("A piece")
        return duration

    def check_another_target(self):
        other = self.start_target("gtk3", title="other")
        self.dictate(self.service, "Normal")
        other.wait_for_text("Normal")

    def start_recording(self):
        """Presses the hotkey; returns the connection."""
        number = len(self.service.streams) + 1
        self.hold()
        return self.service.stream(number)

    def test_a_target_that_hangs_holds_nothing_up(self):
        def attempt():
            hanging = self.start_target("gtk3", title="hanging")
            stream = self.start_recording()
            os.kill(hanging.process.pid, signal.SIGSTOP)
            self.addCleanup(os.kill, hanging.process.pid, signal.SIGCONT)
            return self.time_for_a_piece(stream)

        check_within(self.usual + MAX_WRITE_TIME + TOLERANCE, attempt)
        self.application.log.wait_for(SILENT)

        # The hanging target is still in front. Typed text reaches it once it continues.
        reports = self.application.log.count(SILENT)
        check_within(self.usual + TOLERANCE,
                     lambda: self.time_for_a_piece(self.start_recording()))
        self.assertEqual(self.application.log.count(SILENT), reports)
        self.check_another_target()

    def test_a_target_that_is_dead_holds_nothing_up(self):
        def attempt():
            dying = self.start_target("gtk3", title="dying")
            stream = self.start_recording()
            os.kill(dying.process.pid, signal.SIGKILL)
            dying.process.wait()
            return self.time_for_a_piece(stream)

        check_within(self.usual + MAX_WRITE_TIME + TOLERANCE, attempt)
        self.check_another_target()

    def test_a_target_that_dies_over_a_piece_holds_nothing_up(self):
        def attempt():
            dying = self.start_target("gtk3", title="dying")
            stream = self.start_recording()
            # The insertion waits for the target until the target is killed.
            os.kill(dying.process.pid, signal.SIGSTOP)
            return self.time_for_a_piece(
                stream, meanwhile=lambda: os.kill(dying.process.pid, signal.SIGKILL))

        check_within(self.usual + MAX_WRITE_TIME + TOLERANCE, attempt)
        self.check_another_target()


class XServerLoss(DisplayLossTests, DictationTest):
    def start_display(self):
        server, display = self.desktop.start_x_server()
        return server, {"DISPLAY": display}


if __name__ == "__main__":
    unittest.main()
