# SPDX-License-Identifier: MIT

"""The application under measurement, with a scripted speech service."""

import contextlib
import time

from application import VERSION, Application, write_settings
from desktop import BUS_CONFIG, accepts_connections, wait_for
from scripted_service import ScriptedService, make_certificate, transcript
from windows import wait_for_window

LAUNCHED = ("TarvikDictate: mic status 3 ", "TarvikDictate: accessibility trusted → ")
# The application waits this long for the service after the end of the audio, less a margin.
TIME_AFTER_END = 1.2


def start_blind_bus(desktop):
    """Starts a session bus from which accessibility cannot be reached; returns its address."""
    socket = desktop.folder / "runtime" / "blind-bus"
    config = desktop.folder / "blind-bus.conf"
    no_services = desktop.folder / "no-services"
    no_services.mkdir(exist_ok=True)
    config.write_text(BUS_CONFIG.format(socket=socket, services=no_services))
    bus = desktop.spawn(["dbus-daemon", f"--config-file={config}", "--nofork", "--nopidfile"])
    wait_for(lambda: accepts_connections(socket), "the second session bus", process=bus)
    address = f"unix:path={socket}"
    return address


class Dictation:
    """The application, launched and without open windows. A context manager."""

    def __init__(self, desktop, keyboard, binaries, on_miss, is_blind=False):
        """`on_miss` is called after a press of a hotkey that began no recording. The target may have
        got the key."""
        self._desktop = desktop
        self._keyboard = keyboard
        self._binaries = binaries
        self._on_miss = on_miss
        self._is_blind = is_blind
        self._stack = contextlib.ExitStack()
        # Presses of a hotkey that began no recording.
        self.missed_presses = 0

    def __enter__(self):
        with contextlib.ExitStack() as stack:
            key, authority = make_certificate(self._desktop.folder / "certificates")
            self._service = ScriptedService(key, authority)
            stack.callback(self._service.close)
            self._service.closes_at_end = False
            write_settings(self._desktop.environment, {
                "deepgramApiKey": "a-key", "deepgramHost": self._service.host,
                "lastWelcomeShownForVersion": VERSION})
            environment = {"SSL_CERT_FILE": str(authority)}
            if self._is_blind:
                environment["DBUS_SESSION_BUS_ADDRESS"] = start_blind_bus(self._desktop)
            self._application = Application(self._desktop, self._binaries, environment, LAUNCHED)
            stack.callback(self._application.close)
            wait_for_window(self._desktop).close()
            self._stack = stack.pop_all()
        return self

    def __exit__(self, *_):
        self._keyboard.release()
        self._stack.close()

    @property
    def log(self):
        return self._application.log.lines

    @contextlib.contextmanager
    def held(self):
        """A recording with the hold hotkey down. Yields the function that sends a piece."""
        with self._recording(self._keyboard.hold, self._keyboard.release) as stream:
            yield stream

    @contextlib.contextmanager
    def toggled(self):
        """A recording with no key down."""
        with self._recording(self._keyboard.toggle, self._keyboard.toggle) as stream:
            yield stream

    @contextlib.contextmanager
    def after_release(self):
        """A recording that has ended. The service may still send for `TIME_AFTER_END` seconds."""
        with self._recording(self._keyboard.hold, self._keyboard.release, is_ended=True) as stream:
            yield stream

    @contextlib.contextmanager
    def _recording(self, start, stop, is_ended=False):
        seen = len(self._application.log)
        number = len(self._service.streams) + 1
        self._press_until_it_records(start, seen)
        try:
            stream = RecordingStream(self._service.stream(number))
            stream.wait_for_audio()
        finally:
            if is_ended:
                self._stop(stop, seen)
        if is_ended:
            stream.deadline = time.monotonic() + TIME_AFTER_END
        try:
            yield stream
        finally:
            if not is_ended:
                self._stop(stop, seen)
            stream.close()


    def _press_until_it_records(self, start, seen):
        """Presses the hotkey. After typed keys the window manager grabs the combination again, and a
        press that comes before the application's new grab opens the window manager's menu."""
        for is_last in (False, False, True):
            start()
            try:
                self._application.log.wait_for("startRecording", timeout=1, since=seen)
                return
            except AssertionError:
                self._keyboard.release()
                self._keyboard.press("Escape")
                if is_last:
                    raise
                self.missed_presses += 1
                self._on_miss()

    def _stop(self, stop, seen):
        """Ends the recording. A press of the hotkey may be missed at the end as well."""
        stop()
        try:
            self._application.log.wait_for("stopRecording", timeout=1, since=seen)
        except AssertionError:
            self.missed_presses += 1
            stop()
        self._application.log.wait_for("audio.stop", since=seen)


class RecordingStream:
    """The service's end of one recording."""

    def __init__(self, stream):
        self._stream = stream
        # After this time the application may no longer listen; None while the recording runs.
        self.deadline = None

    def wait_for_audio(self):
        wait_for(lambda: self._stream.audio, "sound from the application")

    @property
    def is_late(self):
        return self.deadline is not None and time.monotonic() > self.deadline

    def say(self, text):
        """Sends a final transcript; returns the time right before, in nanoseconds."""
        message = transcript(text)
        begin = time.monotonic_ns()
        self._stream.send(message)
        return begin

    def say_all(self, texts):
        """Sends several final transcripts; returns the time right before the first one."""
        begin = time.monotonic_ns()
        for text in texts:
            self.say(text)
        return begin

    def close(self):
        self._stream.close()
