# SPDX-License-Identifier: MIT

"""Feeds a virtual microphone: noise, and speech when a test asks for it."""

import array
import os
import pathlib
import random
import select
import subprocess
import tempfile
import threading
import time

from desktop import wait_for

INTERVAL = 0.02
SAMPLE_BYTES = 2
# A pipe takes a block of this size completely or not at all. The sound server crashes on half a
# frame.
BLOCK_BYTES = select.PIPE_BUF
VOICE = "slt"


def spoken(text, rate=16000):
    """A synthesised sentence: mono samples, signed 16-bit little-endian."""
    with tempfile.TemporaryDirectory() as folder:
        wave = pathlib.Path(folder) / "speech.wav"
        subprocess.run(["flite", "-voice", VOICE, "-t", text, "-o", wave], check=True)
        return subprocess.run(
            ["sox", wave, "-t", "raw", "-r", str(rate), "-c", "1", "-e", "signed", "-b", "16", "-"],
            check=True, capture_output=True,
        ).stdout


def quiet_noise(rate, seconds=1.0):
    """The noise of a good microphone in a quiet room."""
    generator = random.Random(1)
    return array.array("h", (generator.randint(-6, 6) for _ in range(int(rate * seconds)))).tobytes()


def peak(samples):
    """The largest amplitude in signed 16-bit samples, 0 to 32768."""
    values = array.array("h", samples[: len(samples) // SAMPLE_BYTES * SAMPLE_BYTES])
    return max((abs(value) for value in values), default=0)


class Microphone:
    """Feeds a microphone of the sound server in real time, as a real one does."""

    def __init__(self, fifo, rate=16000, channels=1):
        self.rate = rate
        self._fifo = fifo
        self._channels = channels
        self._noise = self._on_all_channels(quiet_noise(rate))
        self._speech = bytearray()
        self._lock = threading.Lock()
        self.plug_in()

    def plug_in(self):
        """Begins to feed the sound server's pipe, which must exist."""
        self._ended = threading.Event()
        self._thread = threading.Thread(target=self._feed, daemon=True)
        self._thread.start()

    def pull_out(self):
        """Stops feeding the pipe."""
        self._ended.set()
        self._thread.join()

    def speak(self, text):
        """Queues a sentence after everything that is still to be played; does not wait."""
        self.play(spoken(text, self.rate))

    def play(self, samples):
        """Queues mono samples at this microphone's rate."""
        with self._lock:
            self._speech += self._on_all_channels(samples)

    def pause(self, seconds):
        """Queues a pause."""
        self.play(quiet_noise(self.rate, seconds))

    @property
    def is_silent(self):
        """Whether everything queued has been played."""
        return not self._speech

    def wait_until_silent(self, timeout=60.0):
        wait_for(lambda: self.is_silent, "the end of the speech", timeout)

    def _on_all_channels(self, samples):
        return b"".join(samples[i:i + SAMPLE_BYTES] * self._channels
                        for i in range(0, len(samples), SAMPLE_BYTES))

    def _feed(self):
        pipe = os.open(self._fifo, os.O_RDWR | os.O_NONBLOCK)
        start = time.monotonic()
        delivered = 0
        while not self._ended.wait(INTERVAL):
            due = int((time.monotonic() - start) * self.rate)
            sound = self._next((due - delivered) * SAMPLE_BYTES * self._channels)
            delivered = due
            try:
                for first in range(0, len(sound), BLOCK_BYTES):
                    os.write(pipe, sound[first:first + BLOCK_BYTES])
            except BlockingIOError:
                pass  # The source is suspended: sound that nobody reads is lost.
        os.close(pipe)

    def _next(self, size):
        with self._lock:
            sound = bytes(self._speech[:size])
            del self._speech[:size]
        rest = size - len(sound)
        return sound + (self._noise * (rest // len(self._noise) + 1))[:rest]
