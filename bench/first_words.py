# SPDX-License-Identifier: MIT

"""Measures how much of a dictation's beginning is lost.

That is the time from the press of the hotkey to the recording of the first sample that the service gets.
Each sample of the microphone tells when it was recorded. All times are those of CLOCK_MONOTONIC.
"""

import contextlib
import pathlib
import tempfile
import time

from clock_microphone import ClockMicrophone
from delayed_network import SERVICE_ADDRESS, DelayedNetwork
from desktop import Desktop, wait_for
from measurements import STOPPED, start_application
from samples import sample_until_settled
from scripted_service import ScriptedService, make_certificate
from xtest import XTest

# A microphone of its own beside that of the desktop, at the rate of common hardware.
MICROPHONE = "clock"
RATE = 48000
LOOPBACK = "127.0.0.1"
NAME = "speech.test"
SYSTEM_AUTHORITIES = pathlib.Path("/etc/ssl/certs/ca-certificates.crt")


class Press:
    """Presses the hotkey of the application, one recording a call. Returns the milliseconds from the
    press to the first sample that the service got."""

    def __init__(self, desktop, start_application, service, microphone):
        self._start_application = start_application
        self._application = start_application()
        self._service = service
        self._microphone = microphone
        self._keys = XTest(desktop.environment["DISPLAY"])

    @property
    def port(self):
        """The port of the service."""
        return self._service.port

    def close(self):
        self._application.close()

    def restart_application(self):
        self._application.close()
        self._application = self._start_application()

    def __call__(self):
        seen = len(self._application.log)
        number = len(self._service.streams) + 1
        self._keys.press("Alt_L")
        pressed = time.monotonic()
        self._keys.press("space")
        stream = self._service.stream(number)
        wait_for(lambda: stream.audio, "sound at the service")
        self._keys.release("space")
        self._keys.release("Alt_L")
        self._application.log.wait_for(STOPPED, since=seen)
        wait_for(lambda: stream.is_closed, "the end of the connection")
        first = int.from_bytes(stream.audio[:2], "little", signed=True)
        recorded = self._microphone.recording_time(first, stream.first_audio_time)
        # The sound server delivers a few milliseconds late, and the application takes sound from just
        # before the open socket for new sound. That sound does not count.
        return (max(recorded, stream.request_time) - pressed) * 1000


@contextlib.contextmanager
def ready_to_press(binaries, network=None, host=None):
    """Runs the application, a service and a microphone. Without a network the service is on loopback.
    `host` is a name of the service's host, or None for its address."""
    address = SERVICE_ADDRESS if network else LOOPBACK
    with contextlib.ExitStack() as stack:
        desktop = stack.enter_context(Desktop(wm=True, a11y=True, audio=True))
        key, certificate = make_certificate(desktop.folder / "certificates", host or NAME, address)
        # The application reads as many authorities as it does on a user's desktop.
        authorities = desktop.folder / "authorities.pem"
        authorities.write_bytes(SYSTEM_AUTHORITIES.read_bytes() + certificate.read_bytes())
        service = ScriptedService(key, certificate, network.listener() if network else None)
        stack.callback(service.close)
        desktop.plug_microphone(MICROPHONE, RATE)
        microphone = ClockMicrophone(desktop, desktop.fifo(MICROPHONE), RATE)
        stack.callback(microphone.close)
        press = Press(desktop, lambda: start_application(
            desktop, binaries, f"{host or address}:{service.port}", authorities,
            network.client_command() if network else ()), service, microphone)
        stack.callback(press.close)
        yield press


def on_loopback(binaries):
    """Samples in milliseconds."""
    with ready_to_press(binaries) as press:
        press()
        return sample_until_settled(press)


def first_recording(binaries):
    """Samples in milliseconds, each of the first recording of a process."""
    with ready_to_press(binaries) as press:
        def once():
            press.restart_application()
            return press()
        return sample_until_settled(once)


def over_network(binaries, round_trip, host=None):
    """Samples in milliseconds with a round trip in seconds to the service, and the milliseconds that a
    TCP connection takes there."""
    with (tempfile.TemporaryDirectory() as folder,
          DelayedNetwork(pathlib.Path(folder), round_trip) as network,
          ready_to_press(binaries, network, host) as press):
        press()
        return sample_until_settled(press), network.connection_time(press.port) * 1000
